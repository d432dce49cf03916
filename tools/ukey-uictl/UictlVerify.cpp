#include "UictlCommand.h"

bool UictlVerifyOption(const std::string& strName, const std::string& strValue, tagBlkUiParam* pReq,
                       std::string* pstrError) {
    uint32_t u4Offset = 0;
    if (strName == "--min") {
        u4Offset = UI_OFS_VERIFY_MIN_LEN;
    } else if (strName == "--max") {
        u4Offset = UI_OFS_VERIFY_MAX_LEN;
    } else if (strName == "--kind") {
        u4Offset = UI_OFS_VERIFY_PIN_KIND;
    } else {
        *pstrError = "unknown option " + strName;
        return false;
    }
    uint32_t u4Value = 0;
    if (!UictlParseU32(strValue, &u4Value)) {
        *pstrError = "bad value \"" + strValue + "\" for " + strName;
        return false;
    }
    NyUiParamSetU4(pReq, u4Offset, u4Value);
    return true;
}
