#include "CfgTestImage.h"

namespace {

void AppendU32(std::vector<uint8_t>* pv, uint32_t u4Value) {
    for (int i = 0; i < 4; ++i) {
        pv->push_back(static_cast<uint8_t>(u4Value >> (8 * i)));
    }
}

}  // namespace

CCfgTestImage& CCfgTestImage::Header(uint32_t u4Id, uint32_t u4Length) {
    AppendU32(&m_vData, u4Id);
    AppendU32(&m_vData, u4Length);
    return *this;
}

CCfgTestImage& CCfgTestImage::Entry(uint32_t u4Id, const std::vector<uint8_t>& vValue) {
    Header(u4Id, static_cast<uint32_t>(vValue.size()));
    return Bytes(vValue);
}

CCfgTestImage& CCfgTestImage::Bytes(const std::vector<uint8_t>& vBytes) {
    m_vData.insert(m_vData.end(), vBytes.begin(), vBytes.end());
    return *this;
}

CCfgTestImage& CCfgTestImage::U1(uint32_t u4Id, uint8_t u1Value) {
    return Entry(u4Id, {u1Value});
}

CCfgTestImage& CCfgTestImage::U2(uint32_t u4Id, uint16_t u2Value) {
    return Entry(u4Id, {uint8_t(u2Value), uint8_t(u2Value >> 8)});
}

CCfgTestImage& CCfgTestImage::U4(uint32_t u4Id, uint32_t u4Value) {
    std::vector<uint8_t> vValue;
    AppendU32(&vValue, u4Value);
    return Entry(u4Id, vValue);
}

std::vector<uint8_t> CCfgTestImage::VariantBytes(uint8_t u1Language, const std::string& strText) {
    std::vector<uint8_t> v{u1Language};
    AppendU32(&v, static_cast<uint32_t>(strText.size() + 1));
    v.insert(v.end(), strText.begin(), strText.end());
    v.push_back(0);
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

CCfgTestImage& CCfgTestImage::Text(uint32_t u4Id, const std::string& strEn,
                                   const std::string& strZh) {
    return Variants(u4Id, {{1, strZh}, {0, strEn}});
}

CCfgTestHandle::CCfgTestHandle(const CCfgTestImage& image, unsigned int u4LanguageCode) {
    static const unsigned char u1Empty = 0;
    const unsigned char* pu1 = image.Size() != 0 ? image.Data().data() : &u1Empty;
    m_u4InitResult = NyCfgInit(pu1, image.Size(), &m_hCfg);
    if (m_hCfg != nullptr) {
        NyCfgSetLangId(m_hCfg, u4LanguageCode);
    }
}

CCfgTestHandle::~CCfgTestHandle() {
    NyCfgRelease(m_hCfg);
}

uint32_t CCfgTestHandle::GetString(uint32_t u4Id, std::string* pstrText, unsigned int u4Capacity) {
    std::vector<char> vBuffer(u4Capacity);
    unsigned int u4Length = u4Capacity;
    uint32_t u4Result = NyCfgGetString(m_hCfg, u4Id, vBuffer.data(), &u4Length);
    pstrText->assign(u4Result == 0 ? vBuffer.data() : "");
    return u4Result;
}
