#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <cstring>
#include <string>

#include "NyLogViewFormat.h"
#include "NyLogViewText.h"
#include "log/NyLogTime.h"

namespace {

// Runs the test in a fixed time zone and puts the process's own back afterwards.
class NyLogViewFormat : public ::testing::Test {
protected:
    void SetUp() override {
        const char* szTz = getenv("TZ");
        m_bHadTz = szTz != nullptr;
        m_strTz = m_bHadTz ? szTz : "";
        UseZone("UTC0");
    }
    void TearDown() override {
        if (m_bHadTz) {
            setenv("TZ", m_strTz.c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }
    static void UseZone(const char* szTz) {
        setenv("TZ", szTz, 1);
        tzset();
    }

private:
    bool m_bHadTz = false;
    std::string m_strTz;
};

// 2026-11-23 08:36:18.123456 UTC.
constexpr uint64_t cg_u8Stamp = NyLogTimeFromUnix(1795422978ULL, 123456ULL);

tagBlkLogItem MakeItem(uint32_t u4Level, const char* szSource, const char* szMessage) {
    tagBlkLogItem item;
    memset(&item, 0, sizeof(item));
    item.u4Level = u4Level;
    item.u8Time = cg_u8Stamp;
    item.u8TimeCopy = cg_u8Stamp;
    item.u4Pid = 4321;
    item.u4Tid = 4322;
    item.u4Line = 77;
    strcpy(item.szSource, szSource);
    strcpy(item.szMessage, szMessage);
    return item;
}

}  // namespace

TEST_F(NyLogViewFormat, TimeIsLocalWithMilliseconds) {
    EXPECT_EQ(NyLogViewFormatTime(cg_u8Stamp, false), "2026-11-23 08:36:18.123");
    EXPECT_EQ(NyLogViewFormatTime(cg_u8Stamp, true), "2026-11-23T08:36:18.123+00:00");
    UseZone("CST-8");
    EXPECT_EQ(NyLogViewFormatTime(cg_u8Stamp, false), "2026-11-23 16:36:18.123");
    EXPECT_EQ(NyLogViewFormatTime(cg_u8Stamp, true), "2026-11-23T16:36:18.123+08:00");
    UseZone("NST+3:30");
    EXPECT_EQ(NyLogViewFormatTime(cg_u8Stamp, true), "2026-11-23T05:06:18.123-03:30");
    UseZone("UTC0");
    EXPECT_EQ(NyLogViewFormatTime(0, false), "1970-01-01 00:00:00.000");
}

TEST_F(NyLogViewFormat, TextLineShowsEveryFieldInOrder) {
    const struct {
        uint32_t u4Level;
        const char* szExpected;
    } aCases[] = {
        {LOG_TRACE,
         "2026-11-23 08:36:18.123 TRACE [4321:4322] source/GUIverify.cpp:77 start UI server!"},
        {LOG_INFO,
         "2026-11-23 08:36:18.123 INFO [4321:4322] source/GUIverify.cpp:77 start UI server!"},
        {LOG_ERROR,
         "2026-11-23 08:36:18.123 ERROR [4321:4322] source/GUIverify.cpp:77 start UI server!"},
        {9, "2026-11-23 08:36:18.123 9 [4321:4322] source/GUIverify.cpp:77 start UI server!"},
    };
    for (const auto& c : aCases) {
        tagBlkLogItem item = MakeItem(c.u4Level, "source/GUIverify.cpp", "start UI server!");
        EXPECT_EQ(NyLogViewFormatText(item), c.szExpected);
    }
}

TEST_F(NyLogViewFormat, JsonLineCarriesEveryFieldEscaped) {
    tagBlkLogItem item = MakeItem(LOG_ERROR, "source/a\\b.cpp", "say \"hi\"\n\tand\x01 stop");
    EXPECT_EQ(
        NyLogViewFormatJson(item),
        "{\"time\":\"2026-11-23T08:36:18.123+00:00\",\"time100ns\":" + std::to_string(cg_u8Stamp) +
            ",\"level\":3,\"levelName\":\"ERROR\",\"pid\":4321,\"tid\":4322,"
            "\"source\":\"source/a\\\\b.cpp\",\"line\":77,"
            "\"message\":\"say \\\"hi\\\"\\n\\tand\\u0001 stop\"}");
}

TEST_F(NyLogViewFormat, UnterminatedFieldsEndAtTheirSize) {
    tagBlkLogItem item = MakeItem(LOG_INFO, "", "");
    memset(item.szSource, 'S', sizeof(item.szSource));
    memset(item.szMessage, 'M', sizeof(item.szMessage));
    std::string strLine = NyLogViewFormatText(item);
    EXPECT_NE(strLine.find(std::string(sizeof(item.szSource), 'S') + ":77 "), std::string::npos);
    EXPECT_EQ(strLine.size() - strLine.rfind(' ') - 1, sizeof(item.szMessage));
}

TEST(NyLogViewText, MessagesBecomeUtf8) {
    const struct {
        const char* szCase;
        std::string strIn;
        std::string strOut;
    } aCases[] = {
        {"ASCII", "u4Result = E0600007", "u4Result = E0600007"},
        {"UTF-8 kept", "\xE4\xB8\xAD\xE6\x96\x87 PIN", "\xE4\xB8\xAD\xE6\x96\x87 PIN"},
        {"GB18030 converted", "\xD6\xD0\xCE\xC4 PIN", "\xE4\xB8\xAD\xE6\x96\x87 PIN"},
        {"neither: replaced", "a\xFF\xFF", "a\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"cut at NUL", std::string("ab\0cd", 5), "ab"},
    };
    for (const auto& c : aCases) {
        EXPECT_EQ(NyLogViewToUtf8(c.strIn.data(), c.strIn.size()), c.strOut) << c.szCase;
    }
}

TEST(NyLogViewText, JsonStringsEscapeQuotesBackslashesAndControls) {
    const struct {
        std::string strIn;
        std::string strOut;
    } aCases[] = {
        {"plain", "\"plain\""},
        {"a\"b\\c", "\"a\\\"b\\\\c\""},
        {"\r\n\t", "\"\\r\\n\\t\""},
        {std::string("\x01\x1F\x7F", 3), "\"\\u0001\\u001f\\u007f\""},
        {"\xE4\xB8\xAD", "\"\xE4\xB8\xAD\""},
    };
    for (const auto& c : aCases) {
        EXPECT_EQ(NyLogViewJsonString(c.strIn), c.strOut) << c.strIn;
    }
}
