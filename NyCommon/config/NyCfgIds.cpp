#include "config/NyCfgIds.h"

#include "config/NyCfgId.h"
#include "config/NyCfgParse.h"
#include "runtime/NyResult.h"

namespace {

// Counts the entries and stores up to u4Capacity ids; false when the headers do not tile the
// image exactly.
bool CfgWalkIds(const unsigned char* pu1Image, uint32_t u4Length, uint32_t* pu4Ids,
                uint32_t u4Capacity, uint32_t* pu4Count) {
    uint64_t u8Offset = 0;
    uint32_t u4Count = 0;
    while (u8Offset < u4Length) {
        if (u4Length - u8Offset <= NY_CFG_ENTRY_HEADER_SIZE) {
            return false;
        }
        const unsigned char* pu1Entry = pu1Image + u8Offset;
        uint64_t u8Size = uint64_t(NyCfgReadU32(pu1Entry + 4)) + NY_CFG_ENTRY_HEADER_SIZE;
        if (u8Size > u4Length - u8Offset) {
            return false;
        }
        if (pu4Ids != nullptr && u4Count < u4Capacity) {
            pu4Ids[u4Count] = NyCfgReadU32(pu1Entry);
        }
        ++u4Count;
        u8Offset += u8Size;
    }
    *pu4Count = u4Count;
    return true;
}

}  // namespace

uint32_t NyCfgListIds(const unsigned char* pu1Image, uint32_t u4Length, uint32_t* pu4Ids,
                      uint32_t* pu4Count) {
    if (pu4Count == nullptr || (pu1Image == nullptr && u4Length != 0)) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    uint32_t u4Capacity = *pu4Count;
    uint32_t u4Found = 0;
    if (!CfgWalkIds(pu1Image, u4Length, pu4Ids, u4Capacity, &u4Found)) {
        return NY_ERR_BAD_ARGUMENT;
    }
    *pu4Count = u4Found;
    return pu4Ids != nullptr && u4Capacity < u4Found ? NY_ERR_BUFFER_TOO_SMALL : NY_OK;
}
