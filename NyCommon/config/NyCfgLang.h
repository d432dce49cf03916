// Languages. Product/OS language codes (0 Simplified Chinese, 1 English, 2 Traditional
// Chinese) and the variant indexes stored in the image (0 English, 1 Simplified Chinese,
// 2 Traditional Chinese) are two numberings, kept apart on purpose.
#pragma once

#include <cstdint>

constexpr uint32_t NY_LANG_ZH_CN = 0;
constexpr uint32_t NY_LANG_EN = 1;
constexpr uint32_t NY_LANG_ZH_TW = 2;

// Maps a language code to its variant index; unknown codes give English. Always succeeds.
uint32_t NyLang2CfgLang(unsigned int u4LanguageCode, unsigned char* pu1VariantIndex);
// The product's language, fixed to Simplified Chinese: the system locale is not consulted.
// NY_ERR_INVALID_ARGUMENT for a null output.
uint32_t NyOsGetLanguage(unsigned int* pu4LanguageCode);
