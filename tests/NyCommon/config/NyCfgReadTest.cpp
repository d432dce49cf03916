// Typed reads, the size-query contract, type mismatches and languages.
#include <gtest/gtest.h>

#include <utility>

#include "CfgTestImage.h"
#include "config/NyCfgLang.h"
#include "runtime/NyResult.h"
#include "support/NyTestLogCapture.h"

namespace {

class NyCfgRead : public ::testing::Test {
protected:
    static CCfgTestImage Image() {
        CCfgTestImage image;
        image.U1(0x00020010, 6)
            .U2(0x00030011, 0xFFFE)
            .U4(0x00040012, 0xFFFFFFFF)
            .Entry(0x00000013, {1, 2, 3})
            .Variants(0x00010002, {{1, "zh"}, {0, "en"}, {2, "tw"}});
        return image;
    }
    CCfgTestHandle m_handle{Image()};
};

TEST_F(NyCfgRead, SizeQueryContractOfGetValue) {
    unsigned char au1[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    unsigned int u4Length = 0;
    EXPECT_EQ(NyCfgGetValue(m_handle.Get(), 0x00020010, au1, &u4Length), NY_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(u4Length, 1u);
    EXPECT_EQ(au1[0], 0xEE);
    u4Length = 0;
    EXPECT_EQ(NyCfgGetValue(m_handle.Get(), 0x00020010, nullptr, &u4Length), NY_OK);
    EXPECT_EQ(u4Length, 1u);
    u4Length = 2;
    EXPECT_EQ(NyCfgGetValue(m_handle.Get(), 0x00000013, au1, &u4Length), NY_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(u4Length, 3u);
    u4Length = 3;
    EXPECT_EQ(NyCfgGetValue(m_handle.Get(), 0x00000013, au1, &u4Length), NY_OK);
    EXPECT_EQ(u4Length, 3u);
    EXPECT_EQ(au1[2], 3);
    EXPECT_EQ(au1[3], 0xEE) << "nothing beyond the value is written";
    EXPECT_EQ(NyCfgGetValue(m_handle.Get(), 0x00000013, au1, nullptr), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NyCfgGetValue(nullptr, 0x00000013, au1, &u4Length), NY_ERR_INVALID_ARGUMENT);
}

// Numbers widen to their type; bits outside group, type and item are ignored; a read of the
// same slot under another type copies but fails.
TEST_F(NyCfgRead, NumbersWidenToTheirTypeAndTypeMismatchCopiesButFails) {
    unsigned int u4Value = 0;
    EXPECT_EQ(NyCfgGetU4(m_handle.Get(), 0xFF02F010, &u4Value), NY_OK);
    EXPECT_EQ(u4Value, 6u);
    EXPECT_EQ(NyCfgGetU4(m_handle.Get(), 0x00030011, &u4Value), NY_OK);
    EXPECT_EQ(u4Value, 0xFFFEu);
    EXPECT_EQ(NyCfgGetU4(m_handle.Get(), 0x00040012, &u4Value), NY_OK);
    EXPECT_EQ(u4Value, 0xFFFFFFFFu);
    unsigned short u2Value = 0;
    EXPECT_EQ(NyCfgGetU2(m_handle.Get(), 0x00030011, &u2Value), NY_OK);
    EXPECT_EQ(u2Value, 0xFFFE);
    unsigned char u1Value = 0;
    EXPECT_EQ(NyCfgGetU1(m_handle.Get(), 0x00020010, &u1Value), NY_OK);
    EXPECT_EQ(u1Value, 6);
    unsigned char au1[4] = {};
    unsigned int u4Length = sizeof(au1);
    EXPECT_EQ(NyCfgGetValue(m_handle.Get(), 0x00040010, au1, &u4Length), NY_ERR_BAD_ARGUMENT);
    EXPECT_EQ(u4Length, 1u);
    EXPECT_EQ(au1[0], 6);
    EXPECT_EQ(NyCfgGetU4(m_handle.Get(), 0x00040010, &u4Value), NY_ERR_BAD_ARGUMENT);
}

// A handle starts in the system language (Simplified Chinese here) and switches: codes 0, 1
// and 2 select their variants, any other code English.
TEST_F(NyCfgRead, HandleStartsInTheSystemLanguageAndSwitches) {
    unsigned int u4Code = 99;
    EXPECT_EQ(NyOsGetLanguage(&u4Code), NY_OK);
    EXPECT_EQ(u4Code, 0u);
    EXPECT_EQ(NyOsGetLanguage(nullptr), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NyCfgSetLangId(nullptr, 1), NY_ERR_INVALID_ARGUMENT);
    BlkCfgHandleTag* hCfg = nullptr;
    CCfgTestImage image = Image();
    ASSERT_EQ(NyCfgInit(image.Data().data(), image.Size(), &hCfg), NY_OK);
    EXPECT_EQ(hCfg->u1Lang, 1);
    const std::pair<unsigned int, const char*> aCases[] = {
        {0, "zh"}, {1, "en"}, {2, "tw"}, {3, "en"}, {7, "en"}, {0xFFFFFFFF, "en"}};
    for (const auto& c : aCases) {
        ASSERT_EQ(NyCfgSetLangId(hCfg, c.first), NY_OK);
        char sz[8] = {};
        unsigned int u4Length = sizeof(sz);
        ASSERT_EQ(NyCfgGetValue(hCfg, 0x00010002, reinterpret_cast<unsigned char*>(sz), &u4Length),
                  NY_OK);
        EXPECT_STREQ(sz, c.second) << c.first;
    }
    NyCfgRelease(hCfg);
}

}  // namespace
