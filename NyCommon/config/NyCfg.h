// Configuration handle over a parsed image: typed reads by configuration id and localized
// strings with their "$(0x........)" references expanded.
//
// Getters follow the size-query contract: a null output asks for the size, a capacity below
// the size fails with NY_ERR_BUFFER_TOO_SMALL and reports the size. Every failure is logged
// as "u4Result = %08X" at level 2. After NyCfgInit the tree is read-only: reads may run
// concurrently; only the language byte changes (unsynchronised).
#pragma once

#include <cstdint>

#include "config/NyCfgTree.h"

struct BlkCfgHandleTag {
    BlkCfgTreeTag* pTree;
    uint8_t u1Lang;  // variant index used for string reads
};

// Parses the image (not its length prefix) and sets the language from the system.
// NY_ERR_INVALID_ARGUMENT for a null image or out; NY_ERR_BAD_ARGUMENT for a malformed image.
// *ppHandle is null on any failure.
uint32_t NyCfgInit(const unsigned char* pu1Image, unsigned int u4Length,
                   BlkCfgHandleTag** ppHandle);
// Destroys the tree and the handle; null is accepted. Returns 0.
uint32_t NyCfgRelease(BlkCfgHandleTag* hCfg);

// Raw value of any type. Strings are read in the handle's language. When the stored type
// differs from the id's type the bytes are copied but NY_ERR_BAD_ARGUMENT is returned.
// NY_ERR_NOT_FOUND for unknown ids, NY_ERR_INVALID_ARGUMENT for a null handle or length.
uint32_t NyCfgGetValue(BlkCfgHandleTag* hCfg, unsigned int u4Id, unsigned char* pu1Out,
                       unsigned int* pu4Length);
// Numbers. The id's type must fit the getter (U4: 2, 3 or 4; U2: 3; U1: 2) and the output
// must be non-null, else NY_ERR_INVALID_ARGUMENT before any lookup. U4 zero-extends.
uint32_t NyCfgGetU4(BlkCfgHandleTag* hCfg, unsigned int u4Id, unsigned int* pu4Out);
uint32_t NyCfgGetU2(BlkCfgHandleTag* hCfg, unsigned int u4Id, unsigned short* pu2Out);
uint32_t NyCfgGetU1(BlkCfgHandleTag* hCfg, unsigned int u4Id, unsigned char* pu1Out);

// Text of a type-1 id in the handle's language with references expanded (up to five nested
// levels), NUL-terminated. *pu4Length counts the NUL: a null szOut asks for it, a smaller
// capacity fails with NY_ERR_BUFFER_TOO_SMALL and reports it.
uint32_t NyCfgGetString(BlkCfgHandleTag* hCfg, unsigned int u4Id, char* szOut,
                        unsigned int* pu4Length);

// Selects the string variant from a product/OS language code (NyLang2CfgLang).
uint32_t NyCfgSetLangId(BlkCfgHandleTag* hCfg, unsigned int u4LanguageCode);
