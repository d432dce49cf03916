#include "config/NyCfgParse.h"

#include "config/NyCfgId.h"
#include "runtime/NyResult.h"

namespace {

// A header of u4HeaderSize bytes whose length field sits at u4LengthOffset, and the value it
// announces, must both fit in the u4Remaining bytes at pu1.
bool CfgRecordFits(const unsigned char* pu1, uint64_t u8Remaining, uint32_t u4HeaderSize,
                   uint32_t u4LengthOffset) {
    uint64_t u8Length = NyCfgReadU32(pu1 + u4LengthOffset);
    return u8Length + u4HeaderSize <= u8Remaining;
}

uint32_t CfgParseEntry(BlkCfgTreeTag* pTree, const unsigned char* pu1Entry) {
    uint32_t u4Id = NyCfgReadU32(pu1Entry);
    uint32_t u4Length = NyCfgReadU32(pu1Entry + 4);
    const unsigned char* pu1Value = pu1Entry + NY_CFG_ENTRY_HEADER_SIZE;
    if (NyCfgIdType(u4Id) == NY_CFG_TYPE_TEXT) {
        return CfgParseString(pTree, u4Id, pu1Value, u4Length);
    }
    return CfgTreeAddValue(pTree, NyCfgIdGroup(u4Id), NyCfgIdItem(u4Id), 0, NyCfgIdType(u4Id),
                           pu1Value, u4Length);
}

uint32_t CfgParseEntries(BlkCfgTreeTag* pTree, const unsigned char* pu1Image, uint32_t u4Length) {
    if (u4Length <= NY_CFG_ENTRY_HEADER_SIZE) {
        return NY_ERR_BAD_ARGUMENT;
    }
    const unsigned char* pu1 = pu1Image;
    uint64_t u8Remaining = u4Length;
    if (!CfgRecordFits(pu1, u8Remaining, NY_CFG_ENTRY_HEADER_SIZE, 4)) {
        return NY_ERR_BAD_ARGUMENT;
    }
    for (;;) {
        if (CfgParseEntry(pTree, pu1) != NY_OK) {
            return NY_ERR_BAD_ARGUMENT;
        }
        uint32_t u4Step = NY_CFG_ENTRY_HEADER_SIZE + NyCfgReadU32(pu1 + 4);
        u8Remaining -= u4Step;
        pu1 += u4Step;
        if (u8Remaining <= NY_CFG_ENTRY_HEADER_SIZE) {
            break;
        }
        if (!CfgRecordFits(pu1, u8Remaining, NY_CFG_ENTRY_HEADER_SIZE, 4)) {
            return NY_ERR_BAD_ARGUMENT;
        }
    }
    return u8Remaining == 0 ? NY_OK : NY_ERR_BAD_ARGUMENT;
}

}  // namespace

uint32_t CfgParseString(BlkCfgTreeTag* pTree, uint32_t u4Id, const unsigned char* pu1Data,
                        uint32_t u4Length) {
    if (u4Length == 0) {
        return NY_OK;
    }
    if (pu1Data == nullptr || u4Length <= NY_CFG_VARIANT_HEADER_SIZE) {
        return NY_ERR_BAD_ARGUMENT;
    }
    const unsigned char* pu1 = pu1Data;
    uint64_t u8Remaining = u4Length;
    if (!CfgRecordFits(pu1, u8Remaining, NY_CFG_VARIANT_HEADER_SIZE, 1)) {
        return NY_ERR_BAD_ARGUMENT;
    }
    for (;;) {
        uint32_t u4TextLength = NyCfgReadU32(pu1 + 1);
        if (CfgTreeAddValue(pTree, NyCfgIdGroup(u4Id), NyCfgIdItem(u4Id), pu1[0], NY_CFG_TYPE_TEXT,
                            pu1 + NY_CFG_VARIANT_HEADER_SIZE, u4TextLength) != NY_OK) {
            return NY_ERR_BAD_ARGUMENT;
        }
        u8Remaining -= uint64_t(u4TextLength) + NY_CFG_VARIANT_HEADER_SIZE;
        pu1 += uint64_t(u4TextLength) + NY_CFG_VARIANT_HEADER_SIZE;
        if (u8Remaining <= NY_CFG_VARIANT_HEADER_SIZE) {
            break;
        }
        if (!CfgRecordFits(pu1, u8Remaining, NY_CFG_VARIANT_HEADER_SIZE, 1)) {
            return NY_ERR_BAD_ARGUMENT;
        }
    }
    return u8Remaining == 0 ? NY_OK : NY_ERR_BAD_ARGUMENT;
}

uint32_t CfgTreeParse(const unsigned char* pu1Image, uint32_t u4Length, BlkCfgTreeTag** ppTree) {
    if (ppTree == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    *ppTree = nullptr;
    BlkCfgTreeTag* pTree = nullptr;
    uint32_t u4Result = CfgTreeCreate(&pTree);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    if (u4Length != 0 &&
        (pu1Image == nullptr || CfgParseEntries(pTree, pu1Image, u4Length) != NY_OK)) {
        CfgTreeDestroy(pTree);
        return NY_ERR_BAD_ARGUMENT;
    }
    *ppTree = pTree;
    return NY_OK;
}
