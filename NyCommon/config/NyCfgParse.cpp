#include "config/NyCfgParse.h"

#include "config/NyCfgId.h"
#include "config/NyCfgRecords.h"
#include "runtime/NyResult.h"

namespace {

uint32_t CfgParseEntry(BlkCfgTreeTag* pTree, const unsigned char* pu1Entry, uint32_t u4Length) {
    uint32_t u4Id = NyCfgReadU32(pu1Entry);
    const unsigned char* pu1Value = pu1Entry + NY_CFG_ENTRY_HEADER_SIZE;
    if (NyCfgIdType(u4Id) == NY_CFG_TYPE_TEXT) {
        return CfgParseString(pTree, u4Id, pu1Value, u4Length);
    }
    return CfgTreeAddValue(pTree, NyCfgIdGroup(u4Id), NyCfgIdItem(u4Id), 0, NyCfgIdType(u4Id),
                           pu1Value, u4Length);
}

}  // namespace

uint32_t CfgParseString(BlkCfgTreeTag* pTree, uint32_t u4Id, const unsigned char* pu1Data,
                        uint32_t u4Length) {
    if (pu1Data == nullptr && u4Length != 0) {
        return NY_ERR_BAD_ARGUMENT;
    }
    auto AddVariant = [&](const unsigned char* pu1Variant, uint32_t u4TextLength) {
        return CfgTreeAddValue(pTree, NyCfgIdGroup(u4Id), NyCfgIdItem(u4Id), pu1Variant[0],
                               NY_CFG_TYPE_TEXT, pu1Variant + NY_CFG_VARIANT_HEADER_SIZE,
                               u4TextLength) == NY_OK;
    };
    return CfgWalkRecords(pu1Data, u4Length, NY_CFG_VARIANT_HEADER_SIZE, 1, AddVariant)
               ? NY_OK
               : NY_ERR_BAD_ARGUMENT;
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
    auto AddEntry = [pTree](const unsigned char* pu1Entry, uint32_t u4ValueLength) {
        return CfgParseEntry(pTree, pu1Entry, u4ValueLength) == NY_OK;
    };
    if ((pu1Image == nullptr && u4Length != 0) ||
        !CfgWalkRecords(pu1Image, u4Length, NY_CFG_ENTRY_HEADER_SIZE, 4, AddEntry)) {
        CfgTreeDestroy(pTree);
        return NY_ERR_BAD_ARGUMENT;
    }
    *ppTree = pTree;
    return NY_OK;
}
