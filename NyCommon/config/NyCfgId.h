// Configuration ids and the bounds of the configuration tree.
// An id is 32-bit: group in bits 23-20, type in bits 19-16, item in bits 11-0; the other bits
// are ignored by every lookup. The type is part of the id but not of the storage key
// (group, item, variant), so two ids that differ only in type name the same slot.
#pragma once

#include <cstdint>

// Value types carried in an id.
constexpr uint32_t NY_CFG_TYPE_RAW = 0;
constexpr uint32_t NY_CFG_TYPE_TEXT = 1;  // localized string, one variant per language
constexpr uint32_t NY_CFG_TYPE_U1 = 2;
constexpr uint32_t NY_CFG_TYPE_U2 = 3;
constexpr uint32_t NY_CFG_TYPE_U4 = 4;

// Slots of the tree: groups 0-7, items 0-4095, variants 0-63.
constexpr uint32_t NY_CFG_GROUP_COUNT = 8;
constexpr uint32_t NY_CFG_ITEM_COUNT = 4096;
constexpr uint32_t NY_CFG_VARIANT_COUNT = 64;

// Variant (language) index of a string variant in the image.
constexpr uint8_t NY_CFG_VARIANT_EN = 0;
constexpr uint8_t NY_CFG_VARIANT_ZH_CN = 1;
constexpr uint8_t NY_CFG_VARIANT_ZH_TW = 2;

inline uint32_t NyCfgIdGroup(uint32_t u4Id) {
    return (u4Id >> 20) & 0xF;
}
inline uint32_t NyCfgIdType(uint32_t u4Id) {
    return (u4Id >> 16) & 0xF;
}
inline uint32_t NyCfgIdItem(uint32_t u4Id) {
    return u4Id & 0xFFF;
}
inline uint32_t NyCfgMakeId(uint32_t u4Group, uint32_t u4Type, uint32_t u4Item) {
    return ((u4Group & 0xF) << 20) | ((u4Type & 0xF) << 16) | (u4Item & 0xFFF);
}

// Little-endian reads of unaligned image fields.
inline uint32_t NyCfgReadU32(const unsigned char* pu1) {
    return uint32_t(pu1[0]) | uint32_t(pu1[1]) << 8 | uint32_t(pu1[2]) << 16 |
           uint32_t(pu1[3]) << 24;
}
inline uint16_t NyCfgReadU16(const unsigned char* pu1) {
    return uint16_t(pu1[0] | pu1[1] << 8);
}
