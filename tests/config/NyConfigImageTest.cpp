// The built-in configuration image: its size and composition, the shipped texts after
// expansion, and the agreement of the three language variants of every text.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "CfgShippedTexts.h"
#include "NyConfigImage.h"
#include "config/NyCfg.h"
#include "config/NyCfgId.h"
#include "config/NyCfgIds.h"
#include "config/NyCfgLang.h"
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

TEST_F(NyConfigImage, PrefixStatesTheSizeAndEntriesArePerGroupAndTypeAsShipped) {
    EXPECT_EQ(NyConfigImageLength(), 33896u);
    EXPECT_EQ(g_pu1ConfigProjHarbourline[0], 0x00);
    EXPECT_EQ(g_pu1ConfigProjHarbourline[1], 0x00);
    EXPECT_EQ(g_pu1ConfigProjHarbourline[2], 0x84);
    EXPECT_EQ(g_pu1ConfigProjHarbourline[3], 0x68);
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

TEST_F(NyConfigImage, ShippedTextsReadAsListedInEnglishAndSimplifiedChinese) {
    for (size_t i = 0; i < g_cCfgShippedTexts; ++i) {
        const CfgShippedText& t = g_aCfgShippedTexts[i];
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
}

TEST_F(NyConfigImage, EveryTextHasThreeVariantsStoredSimplifiedEnglishTraditional) {
    const unsigned char* pu1 = ::NyConfigImage();
    const unsigned char* pu1End = pu1 + NyConfigImageLength();
    int cTexts = 0;
    while (pu1 < pu1End) {
        uint32_t u4Id = NyCfgReadU32(pu1);
        uint32_t u4Length = NyCfgReadU32(pu1 + 4);
        if (NyCfgIdType(u4Id) == NY_CFG_TYPE_TEXT) {
            ++cTexts;
            std::vector<int> vOrder;
            for (uint32_t u4Offset = 0; u4Offset < u4Length;
                 u4Offset += 5 + NyCfgReadU32(pu1 + 8 + u4Offset + 1)) {
                vOrder.push_back(pu1[8 + u4Offset]);
                const unsigned char* pu1Text = pu1 + 8 + u4Offset + 5;
                uint32_t u4TextLength = NyCfgReadU32(pu1 + 8 + u4Offset + 1);
                EXPECT_EQ(pu1Text[u4TextLength - 1], 0) << std::hex << u4Id << " ends in NUL";
            }
            EXPECT_EQ(vOrder, (std::vector<int>{1, 0, 2})) << std::hex << u4Id;
        }
        pu1 += 8 + u4Length;
    }
    EXPECT_EQ(cTexts, 72 + 5 + 171);
}

TEST_F(NyConfigImage, VariantsCarryTheSamePlaceholders) {
    size_t cPlaceholders = 0;
    for (uint32_t u4Id : TextIds()) {
        std::vector<std::string> vZh = Placeholders(Raw(u4Id, NY_CFG_VARIANT_ZH_CN));
        cPlaceholders += vZh.size();
        EXPECT_EQ(Placeholders(Raw(u4Id, NY_CFG_VARIANT_EN)), vZh) << std::hex << u4Id;
        EXPECT_EQ(Placeholders(Raw(u4Id, NY_CFG_VARIANT_ZH_TW)), vZh) << std::hex << u4Id;
    }
    EXPECT_EQ(cPlaceholders, 12u) << "every %d and 0x%08x of the texts";
}

TEST_F(NyConfigImage, TraditionalChineseCarriesTheReferencesOfSimplifiedChinese) {
    for (uint32_t u4Id : TextIds()) {
        EXPECT_EQ(References(Raw(u4Id, NY_CFG_VARIANT_ZH_TW)),
                  References(Raw(u4Id, NY_CFG_VARIANT_ZH_CN)))
            << std::hex << u4Id;
    }
}

TEST_F(NyConfigImage, EveryTextExpandsFullyInEveryLanguageWithinADialogBuffer) {
    for (uint32_t u4Id : TextIds()) {
        for (unsigned int u4Language : {NY_LANG_ZH_CN, NY_LANG_EN, NY_LANG_ZH_TW}) {
            std::string strText = Expanded(u4Id, u4Language);
            EXPECT_EQ(strText.find("$("), std::string::npos) << std::hex << u4Id;
            EXPECT_FALSE(strText.empty()) << std::hex << u4Id;
        }
    }
}

TEST_F(NyConfigImage, NestedReferencesOfTheImage) {
    EXPECT_EQ(Expanded(0x0001000A, NY_LANG_EN), Expanded(0x00010009, NY_LANG_EN));
    EXPECT_EQ(Expanded(0x0001000A, NY_LANG_EN), "Harbourline Online Banking");
    EXPECT_EQ(Expanded(0x0021006C, NY_LANG_EN), "Message");
    EXPECT_EQ(Expanded(0x0021006C, NY_LANG_ZH_CN), "UKey提示信息-OVA ");
    unsigned int u4Length = 64;
    char sz[64];
    EXPECT_EQ(NyCfgGetString(m_hCfg, 0x00020010, sz, &u4Length), NY_ERR_INVALID_ARGUMENT);
}

}  // namespace
