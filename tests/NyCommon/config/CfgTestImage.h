// Builds configuration images entry by entry for tests, and owns handles opened over them.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "config/NyCfg.h"

class CCfgTestImage {
public:
    // An entry with any id and any value bytes (the length field is the value's size).
    CCfgTestImage& Entry(uint32_t u4Id, const std::vector<uint8_t>& vValue);
    // An entry whose length field says u4Length whatever follows.
    CCfgTestImage& Header(uint32_t u4Id, uint32_t u4Length);
    CCfgTestImage& U1(uint32_t u4Id, uint8_t u1Value) { return Entry(u4Id, Le(u1Value, 1)); }
    CCfgTestImage& U2(uint32_t u4Id, uint16_t u2Value) { return Entry(u4Id, Le(u2Value, 2)); }
    CCfgTestImage& U4(uint32_t u4Id, uint32_t u4Value) { return Entry(u4Id, Le(u4Value, 4)); }
    // A string with English and Simplified Chinese variants (stored with their NUL).
    CCfgTestImage& Text(uint32_t u4Id, const std::string& strEn, const std::string& strZh) {
        return Variants(u4Id, {{1, strZh}, {0, strEn}});
    }
    // A string with one variant per (language index, text); the NUL is added.
    CCfgTestImage& Variants(uint32_t u4Id,
                            const std::vector<std::pair<uint8_t, std::string>>& vVariants);
    CCfgTestImage& Bytes(const std::vector<uint8_t>& vBytes);

    const std::vector<uint8_t>& Data() const { return m_vData; }
    uint32_t Size() const { return static_cast<uint32_t>(m_vData.size()); }

    static std::vector<uint8_t> VariantBytes(uint8_t u1Language, const std::string& strText);
    // The cb low bytes of a value, least significant first.
    static std::vector<uint8_t> Le(uint32_t u4Value, int cb);

private:
    std::vector<uint8_t> m_vData;
};

// A handle over an image, released with the object. Language code 1 (English) unless set.
class CCfgTestHandle {
public:
    explicit CCfgTestHandle(const CCfgTestImage& image, unsigned int u4LanguageCode = 1);
    ~CCfgTestHandle() { NyCfgRelease(m_hCfg); }
    CCfgTestHandle(const CCfgTestHandle&) = delete;
    CCfgTestHandle& operator=(const CCfgTestHandle&) = delete;

    BlkCfgHandleTag* Get() const { return m_hCfg; }
    uint32_t InitResult() const { return m_u4InitResult; }
    // NyCfgGetString through a buffer of u4Capacity bytes; the text is valid on success.
    uint32_t GetString(uint32_t u4Id, std::string* pstrText, unsigned int u4Capacity = 4096);

private:
    BlkCfgHandleTag* m_hCfg = nullptr;
    uint32_t m_u4InitResult = 0;
};
