#include "UictlCommand.h"

namespace {

const BlkUictlFieldOptionTag s_aLabelFields[] = {
    {"--pin-min", UI_OFS_LABEL_PIN_MIN_LEN},
    {"--pin-max", UI_OFS_LABEL_PIN_MAX_LEN},
    {"--name-min", UI_OFS_LABEL_NAME_MIN_LEN},
    {"--name-max", UI_OFS_LABEL_NAME_MAX_LEN},
};

}  // namespace

bool UictlLabelOption(const std::string& strName, const std::string& strValue, tagBlkUiParam* pReq,
                      std::string* pstrError) {
    return UictlApplyFieldOption(s_aLabelFields, sizeof(s_aLabelFields) / sizeof(s_aLabelFields[0]),
                                 strName, strValue, pReq, pstrError);
}
