// The built-in configuration image: its size and composition, the shipped texts after
// expansion, and the agreement of the three language variants of every text.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "NyConfigImage.h"
#include "config/NyCfg.h"
#include "config/NyCfgId.h"
#include "config/NyCfgIds.h"
#include "config/NyCfgLang.h"
#include "crypto/NyHash.h"
#include "runtime/NyResult.h"

namespace {

class NyConfigImage : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(NyCfgInit(::NyConfigImage(), NyConfigImageLength(), &m_hCfg), NY_OK);
        uint32_t u4Count = 0;
        ASSERT_EQ(NyCfgListIds(::NyConfigImage(), NyConfigImageLength(), nullptr, &u4Count), NY_OK);
        m_vIds.resize(u4Count);
        ASSERT_EQ(NyCfgListIds(::NyConfigImage(), NyConfigImageLength(), m_vIds.data(), &u4Count),
                  NY_OK);
    }
    void TearDown() override { NyCfgRelease(m_hCfg); }

    std::string Expanded(uint32_t u4Id, unsigned int u4LanguageCode) {
        EXPECT_EQ(NyCfgSetLangId(m_hCfg, u4LanguageCode), NY_OK);
        char sz[1024] = {};
        unsigned int u4Length = sizeof(sz);
        EXPECT_EQ(NyCfgGetString(m_hCfg, u4Id, sz, &u4Length), NY_OK)
            << std::hex << u4Id << " language " << u4LanguageCode;
        return sz;
    }
    // The stored variant (language index 0, 1 or 2) of a text, references unexpanded.
    std::string Raw(uint32_t u4Id, uint8_t u1Variant) {
        m_hCfg->u1Lang = u1Variant;
        char sz[2048] = {};
        unsigned int u4Length = sizeof(sz) - 1;
        EXPECT_EQ(NyCfgGetValue(m_hCfg, u4Id, reinterpret_cast<unsigned char*>(sz), &u4Length),
                  NY_OK)
            << std::hex << u4Id << " variant " << int(u1Variant);
        return sz;
    }
    std::vector<uint32_t> TextIds() const {
        std::vector<uint32_t> v;
        for (uint32_t u4Id : m_vIds) {
            if (NyCfgIdType(u4Id) == NY_CFG_TYPE_TEXT) {
                v.push_back(u4Id);
            }
        }
        return v;
    }

    BlkCfgHandleTag* m_hCfg = nullptr;
    std::vector<uint32_t> m_vIds;
};

// The printf conversions of a text, in order ("%d", "%08x", ...).
std::vector<std::string> Placeholders(const std::string& strText) {
    std::vector<std::string> v;
    for (size_t i = strText.find('%'); i != std::string::npos; i = strText.find('%', i)) {
        size_t end = strText.find_first_not_of("-+ #0123456789.", i + 1);
        end = end == std::string::npos ? strText.size() : end + 1;
        v.push_back(strText.substr(i, end - i));
        i = end;
    }
    return v;
}

// The "$(0x...)" references of a text, in order.
std::vector<std::string> References(const std::string& strText) {
    std::vector<std::string> v;
    for (size_t i = strText.find("$(0x"); i != std::string::npos; i = strText.find("$(0x", i + 1)) {
        v.push_back(strText.substr(i, strText.find(')', i) + 1 - i));
    }
    return v;
}

std::string Sha256Hex(const std::string& str) {
    uint8_t au1Digest[32] = {};
    EXPECT_EQ(NyHashData(NY_HASH_SHA256, reinterpret_cast<const uint8_t*>(str.data()),
                         uint32_t(str.size()), au1Digest),
              32u);
    char sz[65] = {};
    for (int i = 0; i < 32; ++i) {
        snprintf(sz + 2 * i, 3, "%02x", au1Digest[i]);
    }
    return sz;
}

TEST_F(NyConfigImage, PrefixStatesTheSizeAndEntriesArePerGroupAndTypeAsShipped) {
    EXPECT_EQ(NyConfigImageLength(), 33896u);
    EXPECT_EQ(std::vector<int>(g_pu1ConfigProjHarbourline, g_pu1ConfigProjHarbourline + 4),
              (std::vector<int>{0x00, 0x00, 0x84, 0x68}));
    std::map<std::pair<uint32_t, uint32_t>, int> mCounts;
    for (uint32_t u4Id : m_vIds) {
        ++mCounts[{NyCfgIdGroup(u4Id), NyCfgIdType(u4Id)}];
    }
    const std::map<std::pair<uint32_t, uint32_t>, int> mExpected = {
        {{0, 1}, 72}, {{0, 2}, 8}, {{0, 4}, 2},   {{0, 0}, 3}, {{1, 1}, 5}, {{1, 2}, 26},
        {{1, 4}, 34}, {{1, 0}, 1}, {{2, 1}, 171}, {{2, 2}, 5}, {{2, 3}, 1}, {{2, 4}, 2}};
    EXPECT_EQ(mCounts, mExpected);
    EXPECT_EQ(m_vIds.size(), 330u);
}

// Every text as users read it, in all three languages: the digest was taken when each shipped
// text had been checked against the product's list; a few are spelled out as a readable guard.
TEST_F(NyConfigImage, ShippedTextsReadAsListed) {
    std::string strAll;
    for (uint32_t u4Id : TextIds()) {
        for (unsigned int u4Language : {NY_LANG_EN, NY_LANG_ZH_CN, NY_LANG_ZH_TW}) {
            strAll += std::to_string(u4Id) + "=" + Expanded(u4Id, u4Language) + "\n";
        }
    }
    EXPECT_EQ(Sha256Hex(strAll),
              "96c8f52ebc4ff9a723ec3bc0975a5f2fc8419abdbba4610e3efdd27dd0e71687");
    const struct {
        uint32_t u4Id;
        const char* szEn;
        const char* szZh;
    } aSamples[] = {{0x00010043, "Your PIN is wrong,you have %d chance(s) left to retry, continue?",
                     "您的UKey密码输入有误，还有 %d 次机会，请核对后重新输入，是否继续重试？"}};
    for (const auto& t : aSamples) {
        EXPECT_EQ(Expanded(t.u4Id, NY_LANG_EN), t.szEn) << std::hex << t.u4Id;
        EXPECT_EQ(Expanded(t.u4Id, NY_LANG_ZH_CN), t.szZh) << std::hex << t.u4Id;
    }
}

TEST_F(NyConfigImage, SettingsReadByTheServer) {
    const std::pair<uint32_t, unsigned int> aSettings[] = {
        {0x00020010, 6}, {0x00020011, 16}, {0x00220005, 1}, {0x00220008, 1},
        {0x00020013, 6}, {0x00020014, 16}, {0x00020016, 6}, {0x00020017, 16}};
    for (const auto& s : aSettings) {
        unsigned int u4Value = 0;
        EXPECT_EQ(NyCfgGetU4(m_hCfg, s.first, &u4Value), NY_OK) << std::hex << s.first;
        EXPECT_EQ(u4Value, s.second) << std::hex << s.first;
    }
    unsigned int u4Length = 64;
    char sz[64];
    EXPECT_EQ(NyCfgGetString(m_hCfg, 0x00020010, sz, &u4Length), NY_ERR_INVALID_ARGUMENT);
}

// Every text has its three variants, with the same placeholders, Traditional Chinese the
// references of Simplified, and every text expands fully in every language.
TEST_F(NyConfigImage, VariantsAgreeAndExpandFully) {
    size_t cPlaceholders = 0;
    for (uint32_t u4Id : TextIds()) {
        std::string strZh = Raw(u4Id, NY_CFG_VARIANT_ZH_CN);
        std::vector<std::string> vZh = Placeholders(strZh);
        cPlaceholders += vZh.size();
        EXPECT_EQ(Placeholders(Raw(u4Id, NY_CFG_VARIANT_EN)), vZh) << std::hex << u4Id;
        std::string strTw = Raw(u4Id, NY_CFG_VARIANT_ZH_TW);
        EXPECT_EQ(Placeholders(strTw), vZh) << std::hex << u4Id;
        EXPECT_EQ(References(strTw), References(strZh)) << std::hex << u4Id;
        for (unsigned int u4Language : {NY_LANG_ZH_CN, NY_LANG_EN, NY_LANG_ZH_TW}) {
            std::string strText = Expanded(u4Id, u4Language);
            EXPECT_EQ(strText.find("$("), std::string::npos) << std::hex << u4Id;
            EXPECT_FALSE(strText.empty()) << std::hex << u4Id;
        }
    }
    EXPECT_EQ(cPlaceholders, 12u) << "every %d and 0x%08x of the texts";
    EXPECT_EQ(Expanded(0x0001000A, NY_LANG_EN), "Harbourline Online Banking");
    EXPECT_EQ(Expanded(0x00010009, NY_LANG_EN), "Harbourline Online Banking");
    EXPECT_EQ(Expanded(0x0021006C, NY_LANG_EN), "Message");
    EXPECT_EQ(Expanded(0x0021006C, NY_LANG_ZH_CN), "UKey提示信息-OVA ");
}

}  // namespace
