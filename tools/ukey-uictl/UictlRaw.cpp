#include "UictlCommand.h"

bool UictlRawOption(const std::string& strName, const std::string& strValue, tagBlkUiParam* pReq,
                    std::string* pstrError) {
    uint32_t u4Value = 0;
    uint32_t u4Offset = 0;
    if (strName == "--cmd" && UictlParseU32(strValue, &u4Value)) {
        pReq->enUiCmdType = u4Value;
    } else if (strName == "--mode" && UictlParseU32(strValue, &u4Value)) {
        pReq->u4Mode = u4Value;
    } else if (strName == "--u32" && UictlParseOffsetValue(strValue, &u4Offset, &u4Value)) {
        if (u4Offset > NY_UI_PARAM_SIZE - 4) {
            *pstrError = "offset " + std::to_string(u4Offset) + " lies outside the 4096-byte block";
            return false;
        }
        NyUiParamSetU4(pReq, u4Offset, u4Value);
    } else if (strName == "--cmd" || strName == "--mode" || strName == "--u32") {
        *pstrError = "bad value \"" + strValue + "\" for " + strName;
        return false;
    } else {
        *pstrError = NY_UICTL_UNKNOWN_OPTION + strName;
        return false;
    }
    return true;
}
