// Parser of the configuration image: a sequence of entries (id u32, length u32, value), all
// little-endian and unaligned, nothing before the first entry and nothing after the last. A
// string value is itself a sequence of variants (language u8, length u32, text with its NUL).
#pragma once

#include <cstdint>

#include "config/NyCfgTree.h"

constexpr uint32_t NY_CFG_ENTRY_HEADER_SIZE = 8;
constexpr uint32_t NY_CFG_VARIANT_HEADER_SIZE = 5;

// Builds a tree from a whole image. Length 0 gives an empty tree. Any malformed entry, a
// duplicate slot or stray bytes after the last entry fail the whole parse with
// NY_ERR_BAD_ARGUMENT and a null tree: nothing partial is kept.
uint32_t CfgTreeParse(const unsigned char* pu1Image, uint32_t u4Length, BlkCfgTreeTag** ppTree);
// Adds the variants of one string value under the group and item of u4Id. A value of length
// 0 has no variants; anything malformed is NY_ERR_BAD_ARGUMENT.
uint32_t CfgParseString(BlkCfgTreeTag* pTree, uint32_t u4Id, const unsigned char* pu1Data,
                        uint32_t u4Length);
