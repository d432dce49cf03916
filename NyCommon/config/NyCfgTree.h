// The configuration tree: three levels of lazily allocated fixed arrays keyed by
// (group, item, variant). Lookup is three indexings; a slot is written once.
#pragma once

#include <cstdint>

struct BlkCfgLeafTag {
    uint32_t u4Type;
    uint32_t u4Length;        // value length, without the NUL appended to the copy
    unsigned char* pu1Value;  // owned copy plus one NUL byte; null while the leaf is empty
};

struct BlkCfgItemTag {
    uint32_t u4Count;  // 0 or NY_CFG_VARIANT_COUNT
    BlkCfgLeafTag* pLeaves;
};

struct BlkCfgGroupTag {
    uint32_t u4Count;  // 0 or NY_CFG_ITEM_COUNT
    BlkCfgItemTag* pItems;
};

struct BlkCfgTreeTag {
    uint32_t u4Count;  // 0 while empty, NY_CFG_GROUP_COUNT once a value was added
    BlkCfgGroupTag* pGroups;
};

// Allocates an empty root. NY_ERR_INVALID_ARGUMENT for a null out, NY_ERR_OUT_OF_MEMORY.
uint32_t CfgTreeCreate(BlkCfgTreeTag** ppTree);
// Frees every value copy, every array and the root; null is accepted.
void CfgTreeDestroy(BlkCfgTreeTag* pTree);
// Stores a copy of the value. NY_ERR_INVALID_ARGUMENT for an index out of bounds or a slot
// that already holds a value (never overwritten), NY_ERR_OUT_OF_MEMORY.
uint32_t CfgTreeAddValue(BlkCfgTreeTag* pTree, uint32_t u4Group, uint32_t u4Item,
                         uint32_t u4Variant, uint32_t u4Type, const unsigned char* pu1Data,
                         uint32_t u4Length);
// NY_ERR_NOT_FOUND for an empty or absent slot; otherwise sets *pu4Type and copies the value
// under the size-query contract (NyCfgCopyOut).
uint32_t CfgTreeGetValue(const BlkCfgTreeTag* pTree, uint32_t u4Group, uint32_t u4Item,
                         uint32_t u4Variant, uint32_t* pu4Type, unsigned char* pu1Out,
                         uint32_t* pu4Length);

// The size-query contract of every configuration getter: a null pu1Out asks for the size;
// a capacity (*pu4Length) below u4Size fails with NY_ERR_BUFFER_TOO_SMALL; otherwise copies.
// *pu4Length is u4Size afterwards in all three cases.
uint32_t NyCfgCopyOut(const unsigned char* pu1Value, uint32_t u4Size, unsigned char* pu1Out,
                      uint32_t* pu4Length);
