// The server's accessor over a configuration image: localized texts with their references
// expanded, and numeric settings. Every UI request and every PIN validation makes its own.
//
// Usage: CConfig cfg(NyConfigImage(), NyConfigImageLength()); cfg.GetProductLanguage(&u4Lang);
// cfg.SetLanguage(u4Lang); then reads.
#pragma once

#include "config/NyCfg.h"

class CConfig {
public:
    // Parses the image; a malformed image leaves the object empty and every read then fails
    // with NY_ERR_INVALID_ARGUMENT.
    CConfig(const unsigned char* pu1Image, unsigned int u4Length);
    ~CConfig();
    CConfig(const CConfig&) = delete;
    CConfig& operator=(const CConfig&) = delete;

    // The product's language code: always 0 (Simplified Chinese). Returns 0.
    unsigned int GetProductLanguage(unsigned int* pu4LanguageCode);
    unsigned int SetLanguage(unsigned int u4LanguageCode);

    // The expanded text into szBuffer of u4Size bytes; NyCfgGetString's result code.
    unsigned int GetString(unsigned int u4Id, char* szBuffer, unsigned int u4Size);
    // The expanded text in a 1024-byte buffer shared by the whole process, valid only until
    // the next such call from any CConfig (copy it at once; not for concurrent use), or
    // szDefault itself on any failure.
    const char* GetString(unsigned int u4Id, const char* szDefault);

    unsigned int GetU4(unsigned int u4Id, unsigned int* pu4Value) const;
    // The value, or u4Default on any failure. Pass the default as unsigned (0u): a plain 0
    // would also match the pointer overload.
    unsigned int GetU4(unsigned int u4Id, unsigned int u4Default) const;

private:
    BlkCfgHandleTag* m_hCfg = nullptr;
};
