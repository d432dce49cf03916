#include "UictlCommand.h"

namespace {

const BlkUictlFieldOptionTag s_aNewPinFields[] = {
    {"--min", UI_OFS_VERIFY_MIN_LEN},
    {"--max", UI_OFS_VERIFY_MAX_LEN},
    {"--kind", UI_OFS_VERIFY_PIN_KIND},
};

}  // namespace

bool UictlNewPinOption(const std::string& strName, const std::string& strValue, tagBlkUiParam* pReq,
                       std::string* pstrError) {
    return UictlApplyFieldOption(s_aNewPinFields,
                                 sizeof(s_aNewPinFields) / sizeof(s_aNewPinFields[0]), strName,
                                 strValue, pReq, pstrError);
}
