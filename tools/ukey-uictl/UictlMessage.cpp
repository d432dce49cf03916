#include "UictlCommand.h"

namespace {

// Payload of the message command: the message id (as a rule a result code) and its parameter.
constexpr uint32_t UICTL_MESSAGE_ID_OFFSET = 312;
constexpr uint32_t UICTL_MESSAGE_PARAM_OFFSET = 316;

// Message ids are result codes, written in hexadecimal with or without "0x".
bool ParseHex(const std::string& strText, uint32_t* pu4Value) {
    bool bPrefixed = strText.size() > 2 &&
                     (strText.compare(0, 2, "0x") == 0 || strText.compare(0, 2, "0X") == 0);
    return UictlParseU32(bPrefixed ? strText : "0x" + strText, pu4Value);
}

}  // namespace

bool UictlMessageOption(const std::string& strName, const std::string& strValue,
                        tagBlkUiParam* pReq, std::string* pstrError) {
    uint32_t u4Value = 0;
    if (strName == "--id" && ParseHex(strValue, &u4Value)) {
        NyUiParamSetU4(pReq, UICTL_MESSAGE_ID_OFFSET, u4Value);
    } else if (strName == "--param" && UictlParseU32(strValue, &u4Value)) {
        NyUiParamSetU4(pReq, UICTL_MESSAGE_PARAM_OFFSET, u4Value);
    } else if (strName == "--id" || strName == "--param") {
        *pstrError = "bad value \"" + strValue + "\" for " + strName;
        return false;
    } else {
        *pstrError = "unknown option " + strName;
        return false;
    }
    return true;
}
