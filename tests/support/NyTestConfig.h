// A configuration accessor over the product image or a variant of it, in the product language,
// for suites that link the server's classes (CConfig). Header-only: the support library itself
// does not link the server.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "CConfig.h"
#include "NyConfigImage.h"
#include "config/NyCfgLang.h"
#include "support/NyTestCfgImage.h"

class CNyTestConfig {
public:
    // The product image itself.
    CNyTestConfig() : CNyTestConfig(std::vector<uint8_t>(NyConfigImage(), ImageEnd())) {}
    explicit CNyTestConfig(std::vector<uint8_t> vImage)
        : m_vImage(std::move(vImage)), m_cfg(m_vImage.data(), unsigned(m_vImage.size())) {
        m_cfg.SetLanguage(NY_LANG_ZH_CN);
    }
    CNyTestConfig(const CNyTestConfig&) = delete;
    CNyTestConfig& operator=(const CNyTestConfig&) = delete;

    // The product image with the number u4Id set to u4Value, or without the entry u4Id.
    static std::vector<uint8_t> With(uint32_t u4Id, uint32_t u4Value) {
        return NyTestCfgImageWithNumber(NyConfigImage(), NyConfigImageLength(), u4Id, u4Value);
    }
    static std::vector<uint8_t> Without(uint32_t u4Id) {
        return NyTestCfgImageWithout(NyConfigImage(), NyConfigImageLength(), u4Id);
    }

    CConfig* Get() { return &m_cfg; }

private:
    static const uint8_t* ImageEnd() { return NyConfigImage() + NyConfigImageLength(); }
    std::vector<uint8_t> m_vImage;  // the accessor keeps no copy of it
    CConfig m_cfg;
};
