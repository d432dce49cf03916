#include "config/NyCfgLang.h"

#include "config/NyCfgId.h"
#include "runtime/NyResult.h"

uint32_t NyLang2CfgLang(unsigned int u4LanguageCode, unsigned char* pu1VariantIndex) {
    uint8_t u1Variant = NY_CFG_VARIANT_EN;
    if (u4LanguageCode == NY_LANG_ZH_CN) {
        u1Variant = NY_CFG_VARIANT_ZH_CN;
    } else if (u4LanguageCode == NY_LANG_ZH_TW) {
        u1Variant = NY_CFG_VARIANT_ZH_TW;
    }
    if (pu1VariantIndex != nullptr) {
        *pu1VariantIndex = u1Variant;
    }
    return NY_OK;
}

uint32_t NyOsGetLanguage(unsigned int* pu4LanguageCode) {
    if (pu4LanguageCode == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    *pu4LanguageCode = NY_LANG_ZH_CN;
    return NY_OK;
}
