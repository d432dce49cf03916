#include "CConfig.h"

#include "config/NyCfgLang.h"
#include "runtime/NyResult.h"

namespace {
constexpr unsigned int NY_CFG_SHARED_TEXT_SIZE = 1024;
}

CConfig::CConfig(const unsigned char* pu1Image, unsigned int u4Length) {
    NyCfgInit(pu1Image, u4Length, &m_hCfg);
}

CConfig::~CConfig() {
    if (m_hCfg != nullptr) {
        NyCfgRelease(m_hCfg);
    }
}

unsigned int CConfig::GetProductLanguage(unsigned int* pu4LanguageCode) {
    if (pu4LanguageCode == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    *pu4LanguageCode = NY_LANG_ZH_CN;
    return NY_OK;
}

unsigned int CConfig::SetLanguage(unsigned int u4LanguageCode) {
    return NyCfgSetLangId(m_hCfg, u4LanguageCode);
}

unsigned int CConfig::GetString(unsigned int u4Id, char* szBuffer, unsigned int u4Size) {
    return NyCfgGetString(m_hCfg, u4Id, szBuffer, &u4Size);
}

const char* CConfig::GetString(unsigned int u4Id, const char* szDefault) {
    static char szValue[NY_CFG_SHARED_TEXT_SIZE];
    unsigned int u4Size = sizeof(szValue);
    if (NyCfgGetString(m_hCfg, u4Id, szValue, &u4Size) != NY_OK) {
        return szDefault;
    }
    return szValue;
}

unsigned int CConfig::GetU4(unsigned int u4Id, unsigned int* pu4Value) const {
    return NyCfgGetU4(m_hCfg, u4Id, pu4Value);
}

unsigned int CConfig::GetU4(unsigned int u4Id, unsigned int u4Default) const {
    unsigned int u4Value = 0;
    return NyCfgGetU4(m_hCfg, u4Id, &u4Value) == NY_OK ? u4Value : u4Default;
}
