#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <cstring>
#include <string>

#include "NyLogViewFormat.h"
#include "NyLogViewText.h"
#include "log/NyLogTime.h"

namespace {

// Runs the test in a fixed time zone (this program's other tests do not depend on one).
class NyLogViewFormat : public ::testing::Test {
protected:
    void SetUp() override { UseZone("UTC0"); }
    static void UseZone(const char* szTz) {
        setenv("TZ", szTz, 1);
        tzset();
    }
};

// 2026-11-23 08:36:18.123456 UTC.
constexpr uint64_t cg_u8Stamp = NyLogTimeFromUnix(1795422978ULL, 123456ULL);

tagBlkLogItem MakeItem(uint32_t u4Level, const char* szSource, const char* szMessage) {
    tagBlkLogItem item;
    memset(&item, 0, sizeof(item));
    item.u4Level = u4Level;
    item.u8Time = cg_u8Stamp;
    item.u4Pid = 4321;
    item.u4Tid = 4322;
    item.u4Line = 77;
    strcpy(item.szSource, szSource);
    strcpy(item.szMessage, szMessage);
    return item;
}

TEST_F(NyLogViewFormat, TimeIsLocalWithMillisecondsAndAMissingOneIsADash) {
    EXPECT_EQ("2026-11-23 08:36:18.123", NyLogViewFormatTime(cg_u8Stamp, false));
    EXPECT_EQ("2026-11-23T08:36:18.123+00:00", NyLogViewFormatTime(cg_u8Stamp, true));
    EXPECT_EQ("-", NyLogViewFormatTime(0, false));
    EXPECT_EQ("1970-01-01 00:00:00.000", NyLogViewFormatTime(1, false));
    UseZone("CST-8");
    EXPECT_EQ("2026-11-23 16:36:18.123", NyLogViewFormatTime(cg_u8Stamp, false));
    EXPECT_EQ("2026-11-23T16:36:18.123+08:00", NyLogViewFormatTime(cg_u8Stamp, true));
    UseZone("NST+3:30");
    EXPECT_EQ("2026-11-23T05:06:18.123-03:30", NyLogViewFormatTime(cg_u8Stamp, true));
}

TEST_F(NyLogViewFormat, TextLineShowsEveryFieldInOrderOnOneLine) {
    const std::string strHead = "2026-11-23 08:36:18.123 ";
    const std::string strIds = " [4321:4322] source/GUIverify.cpp:77 ";
    EXPECT_EQ(strHead + "TRACE" + strIds + "start UI server!",
              NyLogViewFormatText(MakeItem(LOG_TRACE, "source/GUIverify.cpp", "start UI server!")));
    EXPECT_EQ(strHead + "INFO" + strIds + "a\\r\\nb\\n",
              NyLogViewFormatText(MakeItem(LOG_INFO, "source/GUIverify.cpp", "a\r\nb\n")));
    EXPECT_EQ(strHead + "9" + strIds + "x",
              NyLogViewFormatText(MakeItem(9, "source/GUIverify.cpp", "x")));
}

TEST_F(NyLogViewFormat, JsonLineCarriesEveryFieldEscaped) {
    tagBlkLogItem item = MakeItem(LOG_ERROR, "source/a\\b.cpp", "say \"hi\"\n\tand\x01 stop");
    EXPECT_EQ(
        "{\"time\":\"2026-11-23T08:36:18.123+00:00\",\"time100ns\":" + std::to_string(cg_u8Stamp) +
            ",\"level\":3,\"levelName\":\"ERROR\",\"pid\":4321,\"tid\":4322,"
            "\"source\":\"source/a\\\\b.cpp\",\"line\":77,"
            "\"message\":\"say \\\"hi\\\"\\n\\tand\\u0001 stop\"}",
        NyLogViewFormatJson(item));
}

TEST_F(NyLogViewFormat, UnterminatedFieldsEndAtTheirSize) {
    tagBlkLogItem item = MakeItem(LOG_INFO, "", "");
    memset(item.szSource, 'S', sizeof(item.szSource));
    memset(item.szMessage, 'M', sizeof(item.szMessage));
    std::string strLine = NyLogViewFormatText(item);
    EXPECT_NE(std::string::npos, strLine.find(std::string(sizeof(item.szSource), 'S') + ":77 "));
    EXPECT_EQ(sizeof(item.szMessage), strLine.size() - strLine.rfind(' ') - 1);
}

TEST(NyLogViewText, MessagesBecomeUtf8AndJsonStringsAreEscaped) {
    const struct {
        std::string strIn;
        std::string strOut;
    } aUtf8[] = {
        {"u4Result = E0600007", "u4Result = E0600007"},
        {"\xE4\xB8\xAD\xE6\x96\x87 PIN", "\xE4\xB8\xAD\xE6\x96\x87 PIN"},  // UTF-8 kept
        {"\xD6\xD0\xCE\xC4 PIN", "\xE4\xB8\xAD\xE6\x96\x87 PIN"},          // GB18030 converted
        {"a\xFF\xFF", "a\xEF\xBF\xBD\xEF\xBF\xBD"},                        // neither: replaced
        {std::string("ab\0cd", 5), "ab"},
    };
    for (const auto& c : aUtf8) {
        EXPECT_EQ(c.strOut, NyLogViewToUtf8(c.strIn.data(), c.strIn.size())) << c.strIn;
    }
    const struct {
        std::string strIn;
        std::string strOut;
    } aJson[] = {
        {"a\"b\\c", "\"a\\\"b\\\\c\""},
        {"\r\n\t", "\"\\r\\n\\t\""},
        {std::string("\x01\x1F\x7F", 3), "\"\\u0001\\u001f\\u007f\""},
    };
    for (const auto& c : aJson) {
        EXPECT_EQ(c.strOut, NyLogViewJsonString(c.strIn)) << c.strIn;
    }
}

}  // namespace
