#include "UictlCommand.h"

namespace {

// Payload of the message command: the message id (as a rule a result code, given in
// hexadecimal) and its parameter.
constexpr uint32_t UICTL_MESSAGE_ID_OFFSET = 312;
constexpr uint32_t UICTL_MESSAGE_PARAM_OFFSET = 316;

const BlkUictlFieldOptionTag s_aMessageFields[] = {
    {"--param", UICTL_MESSAGE_PARAM_OFFSET},
};

}  // namespace

bool UictlMessageOption(const std::string& strName, const std::string& strValue,
                        tagBlkUiParam* pReq, std::string* pstrError) {
    if (strName != "--message-id") {
        return UictlApplyFieldOption(s_aMessageFields,
                                     sizeof(s_aMessageFields) / sizeof(s_aMessageFields[0]),
                                     strName, strValue, pReq, pstrError);
    }
    uint32_t u4MsgId = 0;
    if (!UictlParseHex32(strValue, &u4MsgId)) {
        *pstrError = "bad value \"" + strValue + "\" for " + strName;
        return false;
    }
    NyUiParamSetU4(pReq, UICTL_MESSAGE_ID_OFFSET, u4MsgId);
    return true;
}
