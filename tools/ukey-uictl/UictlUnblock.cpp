#include "UictlCommand.h"

namespace {

const BlkUictlFieldOptionTag s_aUnblockFields[] = {
    {"--min", UI_OFS_UNBLOCK_MIN_LEN},
    {"--max", UI_OFS_UNBLOCK_MAX_LEN},
};

}  // namespace

bool UictlUnblockOption(const std::string& strName, const std::string& strValue,
                        tagBlkUiParam* pReq, std::string* pstrError) {
    return UictlApplyFieldOption(s_aUnblockFields,
                                 sizeof(s_aUnblockFields) / sizeof(s_aUnblockFields[0]), strName,
                                 strValue, pReq, pstrError);
}
