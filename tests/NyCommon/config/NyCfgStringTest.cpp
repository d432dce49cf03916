// Localized strings: reference expansion over up to five passes, its deliberate overflow
// behaviour, and the size contract of NyCfgGetString.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "CfgTestImage.h"
#include "runtime/NyResult.h"
#include "support/NyTestLogCapture.h"

namespace {

std::string RefTo(uint32_t u4Id) {
    char sz[16];
    snprintf(sz, sizeof(sz), "$(0x%08X)", u4Id);
    return sz;
}

// Texts under test are stored at 0x00010050 (English variant) by SetText.
constexpr uint32_t TEXT_ID = 0x00010050;

class NyCfgString : public ::testing::Test {
protected:
    CCfgTestImage BaseImage() const {
        CCfgTestImage image;
        image.Text(0x00010008, "Online", "在线")
            .Text(0x0001000A, "$(0x00010008)", "$(0x00010008)")
            .Variants(0x0001000B, {{1, "只有中文"}})
            .U1(0x00020010, 6)
            .U2(0x00030021, 0xFFFF)
            .U4(0x00040020, 0xFFFFFFFF)
            .U4(0x00040022, 0x80000000)
            .Entry(0x00000000, {'R', 'A', 'W'})
            .Text(0x00010011, std::string(1100, 'L'), "long");
        return image;
    }
    // Expands strText stored as the English variant of TEXT_ID.
    uint32_t Expand(const std::string& strText, std::string* pstrOut,
                    unsigned int u4LanguageCode = 1) {
        CCfgTestImage image = BaseImage();
        image.Text(TEXT_ID, strText, "zh:" + strText);
        CCfgTestHandle handle(image, u4LanguageCode);
        EXPECT_EQ(handle.InitResult(), NY_OK);
        return handle.GetString(TEXT_ID, pstrOut);
    }
};

// Every case expands its text in language code 1 unless it names another; texts stay as they
// are where a reference is not complete.
TEST_F(NyCfgString, ReferencesAreReplacedByTextsAndNumbersWithinTheScratchBuffer) {
    const std::string strUnknownMm = "$(0x00010008)mm$(0x00010999)";
    const struct {
        std::string strText;
        std::string strExpected;
        uint32_t u4Result = NY_OK;
        unsigned int u4Language = 1;
    } aCases[] = {
        {"plain text", "plain text"},
        {"", ""},
        {"$(0x00010008)", "Online"},
        {"<$(0x0001000A)>", "<Online>"},  // a reference to a reference: second pass
        {"$(0x0001000a)", "Online"},      // lower-case digits
        {"$(0xFF00010008)", "Online"},    // more than eight digits: the last eight count
        {"$(0x00010008)$(0x00010008)", "OnlineOnline"},
        {"n=$(0x00020010),$(0x00030021),$(0x00040020),$(0x00040022)", "n=6,65535,-1,-2147483648"},
        {"x$(0xZZ)y", "x$(0xZZ)y"},  // not hexadecimal: stays
        {"$(0x0001000G)$(0x00010008)", "$(0x0001000G)Online"},
        {"abc$(0x00010008", "abc$(0x00010008"},    // never closed: stays
        {"$(0x00010008)$(0x)", "Online$(0xRAW)"},  // raw value bytes follow "$(0x"
        {"a$(0x)b", "a$(0x)b"},  // ...but a pass without a substitution keeps its input
        {"$(0x", "$(0x"},
        // The language selects the variant of every level.
        {"$(0x0001000A)", "Online", NY_OK, 7},
        {"$(0x0001000A)", "zh:在线", NY_OK, 0},
        // An unknown reference reserves the whole scratch buffer: alone in a short text its 1023
        // zero bytes never fit; after a resolvable one the overflowing pass is not reported and
        // the text ends after the first replacement.
        {"x$(0x00010999)", "", NY_ERR_BUFFER_TOO_SMALL},
        {"a$(0x00010008)b$(0x00010999)c", "aOnline"},
        // With room for the zero bytes the text ends with the "$(0x" of the unknown reference.
        {"$(0x00010008)m$(0x00010999)" + std::string(1100, 't'), "Onlinem$(0x"},
        // Exactly 1023 bytes: a 518-byte text has a 1036-byte work buffer, which takes "Online",
        // "mm$(0x", the zero bytes and a NUL; a 517-byte text has 1034 bytes, which do not.
        {strUnknownMm + std::string(490, 't'), "Onlinemm$(0x"},
        {strUnknownMm + std::string(489, 't'), "Online"},
        // A variant missing in the current language counts as unknown.
        {"x$(0x0001000B)", "", NY_ERR_BUFFER_TOO_SMALL},
    };
    CNyTestLogCapture capture;
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.strText.substr(0, 60));
        std::string strOut;
        EXPECT_EQ(Expand(c.strText, &strOut, c.u4Language), c.u4Result);
        EXPECT_EQ(strOut, c.strExpected);
    }
    // Expansion failures are not logged as results; only the failed lookups are.
    std::vector<std::string> vInfo = capture.MessagesAt(2);
    EXPECT_EQ(std::count(vInfo.begin(), vInfo.end(), "u4Result = E0600005"), 0);
    EXPECT_GT(std::count(vInfo.begin(), vInfo.end(), "u4Result = E0600008"), 0);
}

TEST_F(NyCfgString, FiveNestedLevelsResolveAndTheSixthStaysLiteral) {
    CCfgTestImage image = BaseImage();
    for (uint32_t u4Level = 0; u4Level < 7; ++u4Level) {
        std::string strText = std::to_string(u4Level);
        if (u4Level < 6) {
            strText += RefTo(0x00010100 + u4Level + 1);
        }
        image.Text(0x00010100 + u4Level, strText, strText);
    }
    CCfgTestHandle handle(image);
    std::string strOut;
    ASSERT_EQ(handle.GetString(0x00010101, &strOut), NY_OK);
    EXPECT_EQ(strOut, "123456") << "five references below the top: all resolved";
    ASSERT_EQ(handle.GetString(0x00010100, &strOut), NY_OK);
    EXPECT_EQ(strOut, "012345$(0x00010106)");
}

// A chain of texts each holding two references to the next; the last holds strLeaf.
CCfgTestImage DoublingChain(uint32_t u4FirstId, uint32_t u4Levels, const std::string& strLeaf) {
    CCfgTestImage image;
    for (uint32_t i = 0; i < u4Levels; ++i) {
        std::string strRef = RefTo(u4FirstId + i + 1);
        image.Text(u4FirstId + i, strRef + strRef, strRef + strRef);
    }
    image.Text(u4FirstId + u4Levels, strLeaf, strLeaf);
    return image;
}

TEST_F(NyCfgString, OverflowIsReportedOnlyByTheFifthPassAndOversizedTextsFail) {
    // 32 copies of 40 bytes in the fifth pass exceed the 1024-byte work buffer.
    CCfgTestHandle fifth(DoublingChain(0x00010300, 5, std::string(40, 'x')));
    std::string strOut;
    EXPECT_EQ(fifth.GetString(0x00010300, &strOut), NY_ERR_BUFFER_TOO_SMALL);
    // 16 copies of 70 bytes overflow the fourth pass: not reported, the fifth pass runs
    // over the 14 copies that fitted.
    CCfgTestHandle fourth(DoublingChain(0x00010400, 4, std::string(70, 'y')));
    ASSERT_EQ(fourth.GetString(0x00010400, &strOut), NY_OK);
    EXPECT_EQ(strOut, std::string(14 * 70, 'y'));
    // A referenced text that does not fit the 1024-byte scratch buffer.
    EXPECT_EQ(Expand("<$(0x00010011)>", &strOut), NY_ERR_BUFFER_TOO_SMALL);
    // Raw texts up to 2047 bytes with their NUL are read; longer ones are not.
    EXPECT_EQ(Expand(std::string(2046, 'a'), &strOut), NY_OK);
    EXPECT_EQ(strOut.size(), 2046u);
    EXPECT_EQ(Expand(std::string(2047, 'a'), &strOut), NY_ERR_BUFFER_TOO_SMALL);
}

TEST_F(NyCfgString, SizeContractCountsTheNul) {
    CCfgTestImage image = BaseImage();
    image.Text(TEXT_ID, "<$(0x00010008)>", "");
    CCfgTestHandle handle(image);
    unsigned int u4Length = 0;
    EXPECT_EQ(NyCfgGetString(handle.Get(), TEXT_ID, nullptr, &u4Length), NY_OK);
    EXPECT_EQ(u4Length, 9u);
    char sz[16];
    memset(sz, 0x55, sizeof(sz));
    u4Length = 8;
    EXPECT_EQ(NyCfgGetString(handle.Get(), TEXT_ID, sz, &u4Length), NY_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(u4Length, 9u);
    EXPECT_EQ(sz[0], 0x55) << "nothing written on failure";
    u4Length = 9;
    EXPECT_EQ(NyCfgGetString(handle.Get(), TEXT_ID, sz, &u4Length), NY_OK);
    EXPECT_STREQ(sz, "<Online>");
    EXPECT_EQ(u4Length, 9u);
    EXPECT_EQ(NyCfgGetString(handle.Get(), TEXT_ID, sz, nullptr), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NyCfgGetString(nullptr, TEXT_ID, sz, &u4Length), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NyCfgGetString(handle.Get(), 0x00020010, sz, &u4Length), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NyCfgGetString(handle.Get(), 0x00010999, sz, &u4Length), NY_ERR_NOT_FOUND);
    EXPECT_EQ(NyCfgGetString(handle.Get(), 0x00010000, sz, &u4Length), NY_ERR_BAD_ARGUMENT)
        << "slot of the raw entry read as text";
    ASSERT_EQ(NyCfgSetLangId(handle.Get(), 0), NY_OK);
    u4Length = sizeof(sz);
    EXPECT_EQ(NyCfgGetString(handle.Get(), TEXT_ID, sz, &u4Length), NY_OK);
    EXPECT_STREQ(sz, "");
    EXPECT_EQ(u4Length, 1u);
}

}  // namespace
