#include "CfgTestImage.h"

std::vector<uint8_t> CCfgTestImage::Le(uint32_t u4Value, int cb) {
    std::vector<uint8_t> v;
    for (int i = 0; i < cb; ++i) {
        v.push_back(static_cast<uint8_t>(u4Value >> (8 * i)));
    }
    return v;
}

CCfgTestImage& CCfgTestImage::Header(uint32_t u4Id, uint32_t u4Length) {
    return Bytes(Le(u4Id, 4)).Bytes(Le(u4Length, 4));
}

CCfgTestImage& CCfgTestImage::Entry(uint32_t u4Id, const std::vector<uint8_t>& vValue) {
    return Header(u4Id, static_cast<uint32_t>(vValue.size())).Bytes(vValue);
}

CCfgTestImage& CCfgTestImage::Bytes(const std::vector<uint8_t>& vBytes) {
    m_vData.insert(m_vData.end(), vBytes.begin(), vBytes.end());
    return *this;
}

std::vector<uint8_t> CCfgTestImage::VariantBytes(uint8_t u1Language, const std::string& strText) {
    std::vector<uint8_t> v = Le(static_cast<uint32_t>(strText.size() + 1), 4);
    v.insert(v.begin(), u1Language);
    v.insert(v.end(), strText.c_str(), strText.c_str() + strText.size() + 1);
    return v;
}

CCfgTestImage& CCfgTestImage::Variants(
    uint32_t u4Id, const std::vector<std::pair<uint8_t, std::string>>& vVariants) {
    std::vector<uint8_t> vValue;
    for (const auto& variant : vVariants) {
        std::vector<uint8_t> v = VariantBytes(variant.first, variant.second);
        vValue.insert(vValue.end(), v.begin(), v.end());
    }
    return Entry(u4Id, vValue);
}

CCfgTestHandle::CCfgTestHandle(const CCfgTestImage& image, unsigned int u4LanguageCode) {
    static const unsigned char u1Empty = 0;
    const unsigned char* pu1 = image.Size() != 0 ? image.Data().data() : &u1Empty;
    m_u4InitResult = NyCfgInit(pu1, image.Size(), &m_hCfg);
    if (m_hCfg != nullptr) {
        NyCfgSetLangId(m_hCfg, u4LanguageCode);
    }
}

uint32_t CCfgTestHandle::GetString(uint32_t u4Id, std::string* pstrText, unsigned int u4Capacity) {
    std::vector<char> vBuffer(u4Capacity);
    unsigned int u4Length = u4Capacity;
    uint32_t u4Result = NyCfgGetString(m_hCfg, u4Id, vBuffer.data(), &u4Length);
    pstrText->assign(u4Result == 0 ? vBuffer.data() : "");
    return u4Result;
}
