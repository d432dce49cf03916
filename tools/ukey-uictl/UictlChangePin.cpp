#include "UictlCommand.h"

namespace {

const BlkUictlFieldOptionTag s_aChangePinFields[] = {
    {"--kind", UI_OFS_CHANGE_PIN_KIND},
    {"--min", UI_OFS_CHANGE_MIN_LEN},
    {"--max", UI_OFS_CHANGE_MAX_LEN},
};

}  // namespace

bool UictlChangePinOption(const std::string& strName, const std::string& strValue,
                          tagBlkUiParam* pReq, std::string* pstrError) {
    if (strName == "--compulsory") {
        pReq->enUiCmdType = UI_CMD_CHANGE_PIN_FORCED;
        return true;
    }
    return UictlApplyFieldOption(s_aChangePinFields,
                                 sizeof(s_aChangePinFields) / sizeof(s_aChangePinFields[0]),
                                 strName, strValue, pReq, pstrError);
}
