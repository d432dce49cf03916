#include "config/NyCfgTree.h"

#include <new>

#include "config/NyCfgId.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"

namespace {

// Returns the array behind *ppArray, allocating u4Count zeroed elements on first use.
template <typename T>
T* CfgEnsureArray(T** ppArray, uint32_t* pu4Count, uint32_t u4Count) {
    if (*ppArray == nullptr) {
        *ppArray = new (std::nothrow) T[u4Count]();
        if (*ppArray == nullptr) {
            return nullptr;
        }
        *pu4Count = u4Count;
    }
    return *ppArray;
}

void CfgItemDestroy(BlkCfgItemTag* pItem) {
    for (uint32_t i = 0; pItem->pLeaves != nullptr && i < pItem->u4Count; ++i) {
        delete[] pItem->pLeaves[i].pu1Value;
    }
    delete[] pItem->pLeaves;
}

void CfgGroupDestroy(BlkCfgGroupTag* pGroup) {
    for (uint32_t i = 0; pGroup->pItems != nullptr && i < pGroup->u4Count; ++i) {
        CfgItemDestroy(&pGroup->pItems[i]);
    }
    delete[] pGroup->pItems;
}

// The leaf for (group, item, variant), creating the arrays on the way; null with the reason in
// *pu4Result when an index is out of bounds or memory runs out.
BlkCfgLeafTag* CfgTreeLeafForWrite(BlkCfgTreeTag* pTree, uint32_t u4Group, uint32_t u4Item,
                                   uint32_t u4Variant, uint32_t* pu4Result) {
    *pu4Result = NY_ERR_OUT_OF_MEMORY;
    if (!CfgEnsureArray(&pTree->pGroups, &pTree->u4Count, NY_CFG_GROUP_COUNT)) {
        return nullptr;
    }
    *pu4Result = NY_ERR_INVALID_ARGUMENT;
    if (u4Group >= pTree->u4Count) {
        return nullptr;
    }
    BlkCfgGroupTag* pGroup = &pTree->pGroups[u4Group];
    *pu4Result = NY_ERR_OUT_OF_MEMORY;
    if (!CfgEnsureArray(&pGroup->pItems, &pGroup->u4Count, NY_CFG_ITEM_COUNT)) {
        return nullptr;
    }
    *pu4Result = NY_ERR_INVALID_ARGUMENT;
    if (u4Item >= pGroup->u4Count) {
        return nullptr;
    }
    BlkCfgItemTag* pItem = &pGroup->pItems[u4Item];
    *pu4Result = NY_ERR_OUT_OF_MEMORY;
    if (!CfgEnsureArray(&pItem->pLeaves, &pItem->u4Count, NY_CFG_VARIANT_COUNT)) {
        return nullptr;
    }
    *pu4Result = NY_ERR_INVALID_ARGUMENT;
    if (u4Variant >= pItem->u4Count) {
        return nullptr;
    }
    *pu4Result = NY_OK;
    return &pItem->pLeaves[u4Variant];
}

// The filled leaf for (group, item, variant), or null.
const BlkCfgLeafTag* CfgTreeLeafForRead(const BlkCfgTreeTag* pTree, uint32_t u4Group,
                                        uint32_t u4Item, uint32_t u4Variant) {
    if (pTree == nullptr || pTree->pGroups == nullptr || u4Group >= pTree->u4Count) {
        return nullptr;
    }
    const BlkCfgGroupTag* pGroup = &pTree->pGroups[u4Group];
    if (pGroup->pItems == nullptr || u4Item >= pGroup->u4Count) {
        return nullptr;
    }
    const BlkCfgItemTag* pItem = &pGroup->pItems[u4Item];
    if (pItem->pLeaves == nullptr || u4Variant >= pItem->u4Count) {
        return nullptr;
    }
    const BlkCfgLeafTag* pLeaf = &pItem->pLeaves[u4Variant];
    return pLeaf->pu1Value != nullptr ? pLeaf : nullptr;
}

}  // namespace

uint32_t CfgTreeCreate(BlkCfgTreeTag** ppTree) {
    if (ppTree == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    *ppTree = new (std::nothrow) BlkCfgTreeTag();
    return *ppTree != nullptr ? NY_OK : NY_ERR_OUT_OF_MEMORY;
}

void CfgTreeDestroy(BlkCfgTreeTag* pTree) {
    if (pTree == nullptr) {
        return;
    }
    for (uint32_t i = 0; pTree->pGroups != nullptr && i < pTree->u4Count; ++i) {
        CfgGroupDestroy(&pTree->pGroups[i]);
    }
    delete[] pTree->pGroups;
    delete pTree;
}

uint32_t CfgTreeAddValue(BlkCfgTreeTag* pTree, uint32_t u4Group, uint32_t u4Item,
                         uint32_t u4Variant, uint32_t u4Type, const unsigned char* pu1Data,
                         uint32_t u4Length) {
    if (pTree == nullptr || (pu1Data == nullptr && u4Length != 0)) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    uint32_t u4Result = NY_OK;
    BlkCfgLeafTag* pLeaf = CfgTreeLeafForWrite(pTree, u4Group, u4Item, u4Variant, &u4Result);
    if (pLeaf == nullptr) {
        return u4Result;
    }
    if (pLeaf->pu1Value != nullptr || pLeaf->u4Length != 0) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    unsigned char* pu1Copy = new (std::nothrow) unsigned char[size_t(u4Length) + 1];
    if (pu1Copy == nullptr) {
        return NY_ERR_OUT_OF_MEMORY;
    }
    if (u4Length != 0) {
        NyMemCpy(pu1Copy, u4Length, pu1Data, u4Length);
    }
    pu1Copy[u4Length] = 0;
    pLeaf->u4Type = u4Type;
    pLeaf->u4Length = u4Length;
    pLeaf->pu1Value = pu1Copy;
    return NY_OK;
}

uint32_t CfgTreeGetValue(const BlkCfgTreeTag* pTree, uint32_t u4Group, uint32_t u4Item,
                         uint32_t u4Variant, uint32_t* pu4Type, unsigned char* pu1Out,
                         uint32_t* pu4Length) {
    if (pu4Length == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    const BlkCfgLeafTag* pLeaf = CfgTreeLeafForRead(pTree, u4Group, u4Item, u4Variant);
    if (pLeaf == nullptr) {
        return NY_ERR_NOT_FOUND;
    }
    if (pu4Type != nullptr) {
        *pu4Type = pLeaf->u4Type;
    }
    return NyCfgCopyOut(pLeaf->pu1Value, pLeaf->u4Length, pu1Out, pu4Length);
}

uint32_t NyCfgCopyOut(const unsigned char* pu1Value, uint32_t u4Size, unsigned char* pu1Out,
                      uint32_t* pu4Length) {
    if (pu4Length == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    uint32_t u4Capacity = *pu4Length;
    *pu4Length = u4Size;
    if (pu1Out == nullptr) {
        return NY_OK;
    }
    if (u4Capacity < u4Size) {
        return NY_ERR_BUFFER_TOO_SMALL;
    }
    if (u4Size != 0) {
        NyMemCpy(pu1Out, u4Capacity, pu1Value, u4Size);
    }
    return NY_OK;
}
