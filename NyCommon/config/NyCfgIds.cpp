#include "config/NyCfgIds.h"

#include "config/NyCfgId.h"
#include "config/NyCfgParse.h"
#include "config/NyCfgRecords.h"
#include "runtime/NyResult.h"

uint32_t NyCfgListIds(const unsigned char* pu1Image, uint32_t u4Length, uint32_t* pu4Ids,
                      uint32_t* pu4Count) {
    if (pu4Count == nullptr || (pu1Image == nullptr && u4Length != 0)) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    uint32_t u4Capacity = *pu4Count;
    uint32_t u4Found = 0;
    auto CountEntry = [&](const unsigned char* pu1Entry, uint32_t) {
        if (pu4Ids != nullptr && u4Found < u4Capacity) {
            pu4Ids[u4Found] = NyCfgReadU32(pu1Entry);
        }
        ++u4Found;
        return true;
    };
    if (!CfgWalkRecords(pu1Image, u4Length, NY_CFG_ENTRY_HEADER_SIZE, 4, CountEntry)) {
        return NY_ERR_BAD_ARGUMENT;
    }
    *pu4Count = u4Found;
    return pu4Ids != nullptr && u4Capacity < u4Found ? NY_ERR_BUFFER_TOO_SMALL : NY_OK;
}
