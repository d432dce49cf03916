// The built-in configuration image: its size and composition, the shipped texts
// after expansion, and the agreement of the three language variants of every
// text.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <string>
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
        uint32_t u4Count = uint32_t(m_vIds.size());
        ASSERT_EQ(NyCfgListIds(::NyConfigImage(), NyConfigImageLength(), m_vIds.data(), &u4Count),
                  NY_OK);
        m_vIds.resize(u4Count);
    }
    void TearDown() override { NyCfgRelease(m_hCfg); }

    // A text expanded in language code u4Code, or as stored in variant u4Code (0, 1 or 2).
    std::string Text(uint32_t u4Id, unsigned int u4Code, bool bStored = false) {
        char sz[2048] = {};
        unsigned int u4Length = sizeof(sz) - 1;
        m_hCfg->u1Lang = uint8_t(u4Code);
        EXPECT_TRUE(bStored || NyCfgSetLangId(m_hCfg, u4Code) == NY_OK);
        uint32_t u4Result =
            bStored ? NyCfgGetValue(m_hCfg, u4Id, reinterpret_cast<unsigned char*>(sz), &u4Length)
                    : NyCfgGetString(m_hCfg, u4Id, sz, &u4Length);
        EXPECT_EQ(u4Result, NY_OK) << std::hex << u4Id << " language " << u4Code;
        return sz;
    }

    BlkCfgHandleTag* m_hCfg = nullptr;
    std::vector<uint32_t> m_vIds = std::vector<uint32_t>(1024);
};

// The printf conversions ("%d", "%08x", ...) of a text, or its "$(0x...)" references, in order.
std::vector<std::string> Matches(const std::string& strText, bool bReferences) {
    const char* szStart = bReferences ? "$(0x" : "%";
    std::vector<std::string> v;
    for (size_t i = strText.find(szStart); i != std::string::npos;) {
        size_t end = bReferences ? strText.find(')', i)
                                 : strText.find_first_not_of("-+ #0123456789.", i + 1);
        v.push_back(strText.substr(i, end == std::string::npos ? end : end + 1 - i));
        i = strText.find(szStart, bReferences || end == std::string::npos ? i + 1 : end + 1);
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

TEST_F(NyConfigImage, SizeEntriesPerGroupAndTypeAndServerSettingsAsShipped) {
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

// Every text has its three variants, with the same placeholders, Traditional
// Chinese the references of Simplified, and expands fully in every language to
// what users read: the digest was taken when each shipped text had been checked
// against the product's list; a few are spelled out as a readable guard.
TEST_F(NyConfigImage, VariantsAgreeAndExpandToTheShippedTexts) {
    std::string strAll;
    size_t cPlaceholders = 0;
    for (uint32_t u4Id : m_vIds) {
        if (NyCfgIdType(u4Id) != NY_CFG_TYPE_TEXT) {
            continue;
        }
        SCOPED_TRACE(::testing::Message());
        std::string strZh = Text(u4Id, NY_CFG_VARIANT_ZH_CN, true);
        std::string strTw = Text(u4Id, NY_CFG_VARIANT_ZH_TW, true);
        std::vector<std::string> vZh = Matches(strZh, false);
        cPlaceholders += vZh.size();
        EXPECT_EQ(Matches(Text(u4Id, NY_CFG_VARIANT_EN, true), false), vZh);
        EXPECT_EQ(Matches(strTw, false), vZh);
        EXPECT_EQ(Matches(strTw, true), Matches(strZh, true));
        for (unsigned int u4Language : {NY_LANG_EN, NY_LANG_ZH_CN, NY_LANG_ZH_TW}) {
            std::string strText = Text(u4Id, u4Language);
            EXPECT_EQ(strText.find("$("), std::string::npos);
            EXPECT_FALSE(strText.empty());
            strAll += std::to_string(u4Id) + "=" + strText + "\n";
        }
    }
    EXPECT_EQ(cPlaceholders, 12u) << "every %d and 0x%08x of the texts";
    EXPECT_EQ(Sha256Hex(strAll),
              "96c8f52ebc4ff9a723ec3bc0975a5f2fc8419abdbba4610e3efdd27dd0e71687");
    EXPECT_EQ(Text(0x00010043, NY_LANG_ZH_CN),
              "您的UKey密码输入有误，还有 %d 次机会，请核对后重新输入，是否继续重试？");
    EXPECT_EQ(Text(0x0001000A, NY_LANG_EN), "Harbourline Online Banking");
    EXPECT_EQ(Text(0x0021006C, NY_LANG_ZH_CN), "UKey提示信息-OVA ");
}

}  // namespace
