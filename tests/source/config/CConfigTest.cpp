// CConfig over the built-in image, used the way the UI service and the PIN validator use it.
#include <gtest/gtest.h>

#include "CConfig.h"
#include "NyConfigImage.h"
#include "config/NyCfgLang.h"
#include "runtime/NyResult.h"

namespace {

// Construct, ask for the product language, set it: what every UI request does.
class CConfigBuiltIn : public ::testing::Test {
protected:
    void SetUp() override {
        unsigned int u4Language = 99;
        ASSERT_EQ(m_cfg.GetProductLanguage(&u4Language), NY_OK);
        ASSERT_EQ(u4Language, NY_LANG_ZH_CN);
        ASSERT_EQ(m_cfg.SetLanguage(u4Language), NY_OK);
    }
    CConfig m_cfg{NyConfigImage(), NyConfigImageLength()};
};

TEST_F(CConfigBuiltIn, TextsInTheProductLanguageAndNumbersWithAndWithoutDefaults) {
    char sz[512];
    ASSERT_EQ(m_cfg.GetString(0x0021007E, sz, sizeof(sz)), NY_OK);
    EXPECT_STREQ(sz, "请输入UKey密码（6-16字符）");
    ASSERT_EQ(m_cfg.SetLanguage(NY_LANG_EN), NY_OK);
    ASSERT_EQ(m_cfg.GetString(0x0021007E, sz, sizeof(sz)), NY_OK);
    EXPECT_STREQ(sz, "Please input UKey PIN (6-16 chars)");
    EXPECT_EQ(m_cfg.GetString(0x0021007E, sz, 10), NY_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(m_cfg.GetString(0x00020010, sz, sizeof(sz)), NY_ERR_INVALID_ARGUMENT);
    unsigned int u4Value = 0;
    EXPECT_EQ(m_cfg.GetU4(0x00020010, &u4Value), NY_OK);
    EXPECT_EQ(u4Value, 6u);
    EXPECT_EQ(m_cfg.GetU4(0x00220008, 0u), 1u);
    EXPECT_EQ(m_cfg.GetU4(0x00220999, 7u), 7u);
    EXPECT_EQ(m_cfg.GetU4(0x00010003, 7u), 7u) << "a text is not a number";
    EXPECT_EQ(m_cfg.GetU4(0x00010003, &u4Value), NY_ERR_INVALID_ARGUMENT);
}

TEST_F(CConfigBuiltIn, DefaultedGetStringSharesOneBufferAndFallsBackToTheCallersText) {
    const char* szDefault = "fallback";
    EXPECT_EQ(m_cfg.GetString(0x00010999, szDefault), szDefault) << "the caller's pointer itself";
    EXPECT_EQ(m_cfg.GetString(0x00020010, szDefault), szDefault);
    const char* szFirst = m_cfg.GetString(0x00210011, szDefault);
    EXPECT_STREQ(szFirst, "确定");
    CConfig other(NyConfigImage(), NyConfigImageLength());
    other.SetLanguage(NY_LANG_EN);
    EXPECT_EQ(other.GetString(0x00210012, szDefault), szFirst) << "one buffer for the process";
    EXPECT_STREQ(szFirst, "Cancel");
}

TEST(CConfig, MalformedImageLeavesAnEmptyAccessor) {
    const unsigned char au1Bad[5] = {1, 0, 0, 0, 0};
    CConfig cfg(au1Bad, sizeof(au1Bad));
    char sz[64] = "";
    unsigned int u4Value = 5;
    EXPECT_EQ(cfg.SetLanguage(NY_LANG_EN), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(cfg.GetString(0x00210011, sz, sizeof(sz)), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(cfg.GetU4(0x00020010, &u4Value), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(cfg.GetU4(0x00020010, 9u), 9u);
    EXPECT_EQ(cfg.GetString(0x00210011, sz), sz);
    EXPECT_EQ(cfg.GetProductLanguage(&u4Value), NY_OK);
    EXPECT_EQ(u4Value, 0u);
}

}  // namespace
