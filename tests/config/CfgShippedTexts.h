// The product texts the server shows, as they must read after expansion, in English and in
// Simplified Chinese.
#pragma once

#include <cstddef>
#include <cstdint>

struct CfgShippedText {
    uint32_t u4Id;
    const char* szEn;
    const char* szZh;
};

extern const CfgShippedText g_aCfgShippedTexts[];
extern const size_t g_cCfgShippedTexts;
