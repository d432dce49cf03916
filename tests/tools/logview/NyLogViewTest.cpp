// ukey-logview in-process: its options and filters, and how it renders records.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <cstring>
#include <string>

#include "NyLogViewFormat.h"
#include "NyLogViewOptions.h"
#include "NyLogViewText.h"
#include "log/NyLogTime.h"
#include "runtime/NyResult.h"
#include "support/NyTestRun.h"

// 2026-11-23 08:36:18.123456 UTC.
constexpr uint64_t NY_LOG_VIEW_TEST_STAMP = NyLogTimeFromUnix(1795422978ULL, 123456ULL);

// A record of pid 4321, thread 4322, line 77, logged at NY_LOG_VIEW_TEST_STAMP.
tagBlkLogItem NyLogViewTestItem(uint32_t u4Level, const char* szSource, const char* szMessage) {
    tagBlkLogItem item;
    memset(&item, 0, sizeof(item));
    item.u4Level = u4Level;
    item.u8Time = NY_LOG_VIEW_TEST_STAMP;
    item.u4Pid = 4321;
    item.u4Tid = 4322;
    item.u4Line = 77;
    strcpy(item.szSource, szSource);
    strcpy(item.szMessage, szMessage);
    return item;
}

namespace {

void UseZone(const char* szTz) {
    setenv("TZ", szTz, 1);
    tzset();
}

TEST(NyLogViewFormat, TimeIsLocalWithMillisecondsAndAMissingOneIsADash) {
    UseZone("UTC0");
    EXPECT_EQ("2026-11-23 08:36:18.123", NyLogViewFormatTime(NY_LOG_VIEW_TEST_STAMP, false));
    EXPECT_EQ("2026-11-23T08:36:18.123+00:00", NyLogViewFormatTime(NY_LOG_VIEW_TEST_STAMP, true));
    EXPECT_EQ("-", NyLogViewFormatTime(0, false));
    EXPECT_EQ("1970-01-01 00:00:00.000", NyLogViewFormatTime(1, false));
    UseZone("CST-8");
    EXPECT_EQ("2026-11-23 16:36:18.123", NyLogViewFormatTime(NY_LOG_VIEW_TEST_STAMP, false));
    EXPECT_EQ("2026-11-23T16:36:18.123+08:00", NyLogViewFormatTime(NY_LOG_VIEW_TEST_STAMP, true));
    UseZone("NST+3:30");
    EXPECT_EQ("2026-11-23T05:06:18.123-03:30", NyLogViewFormatTime(NY_LOG_VIEW_TEST_STAMP, true));
}

TEST(NyLogViewFormat, TextAndJsonLinesShowEveryFieldEscapedOnOneLine) {
    UseZone("UTC0");
    auto Text = [](uint32_t u4Level, const char* szMessage) {
        return NyLogViewFormatText(NyLogViewTestItem(u4Level, "source/GUIverify.cpp", szMessage));
    };
    const std::string strIds = " [4321:4322] source/GUIverify.cpp:77 ";
    EXPECT_EQ("2026-11-23 08:36:18.123 TRACE" + strIds + "start UI server!",
              Text(LOG_TRACE, "start UI server!"));
    EXPECT_EQ("2026-11-23 08:36:18.123 INFO" + strIds + "a\\r\\nb\\n", Text(LOG_INFO, "a\r\nb\n"));
    EXPECT_EQ("2026-11-23 08:36:18.123 9" + strIds + "x", Text(9, "x"));
    tagBlkLogItem item =
        NyLogViewTestItem(LOG_ERROR, "source/a\\b.cpp", "say \"hi\"\r\n\tand\x01\x1F\x7F stop");
    EXPECT_EQ("{\"time\":\"2026-11-23T08:36:18.123+00:00\",\"time100ns\":" +
                  std::to_string(NY_LOG_VIEW_TEST_STAMP) +
                  ",\"level\":3,\"levelName\":\"ERROR\",\"pid\":4321,\"tid\":4322,"
                  "\"source\":\"source/a\\\\b.cpp\",\"line\":77,"
                  "\"message\":\"say \\\"hi\\\"\\r\\n\\tand\\u0001\\u001f\\u007f stop\"}",
              NyLogViewFormatJson(item));
    // Fields without their terminator end at their size.
    memset(item.szSource, 'S', sizeof(item.szSource));
    memset(item.szMessage, 'M', sizeof(item.szMessage));
    std::string strLine = NyLogViewFormatText(item);
    EXPECT_NE(std::string::npos, strLine.find(std::string(sizeof(item.szSource), 'S') + ":77 "));
    EXPECT_EQ(sizeof(item.szMessage), strLine.size() - strLine.rfind(' ') - 1);
}

TEST(NyLogViewText, MessagesBecomeUtf8) {
    const std::pair<std::string, std::string> aUtf8[] = {
        {"u4Result = E0600007", "u4Result = E0600007"},
        {"\xE4\xB8\xAD\xE6\x96\x87 PIN", "\xE4\xB8\xAD\xE6\x96\x87 PIN"},  // UTF-8 kept
        {"\xD6\xD0\xCE\xC4 PIN", "\xE4\xB8\xAD\xE6\x96\x87 PIN"},          // GB18030 converted
        {"a\xFF\xFF", "a\xEF\xBF\xBD\xEF\xBF\xBD"},                        // neither: replaced
        {std::string("ab\0cd", 5), "ab"},
    };
    for (const auto& c : aUtf8) {
        EXPECT_EQ(c.second, NyLogViewToUtf8(c.first.data(), c.first.size())) << c.first;
    }
}

// What a command line sets: "follow json create peek level pids queue capacity", then which of
// the records (TRACE, 100) (INFO, 100) (ERROR, 200) (9, 200) (ERROR, 300) it shows; or its error.
std::string Parse(const std::vector<std::string>& vArgs) {
    CNyTestArgv argv(vArgs);
    BlkLogViewOptionsTag opts;
    std::string strError;
    if (NyLogViewParseOptions(argv.Argc(), argv.Argv(), opts, strError) != NY_OK) {
        return strError;
    }
    std::string strSeen = std::to_string(opts.bFollow) + std::to_string(opts.bJson) +
                          std::to_string(opts.bCreate) + std::to_string(NyLogViewPeeks(opts)) +
                          " " + std::to_string(opts.u4MinLevel) + " ";
    for (uint32_t u4Pid : opts.vPids) {
        strSeen += std::to_string(u4Pid) + ",";
    }
    strSeen += " " + opts.strQueue + " " + std::to_string(opts.u4Capacity) + " ";
    const uint32_t aau4Items[][2] = {
        {LOG_TRACE, 100}, {LOG_INFO, 100}, {LOG_ERROR, 200}, {9, 200}, {LOG_ERROR, 300}};
    for (const auto& au4 : aau4Items) {
        tagBlkLogItem item = {};
        item.u4Level = au4[0];
        item.u4Pid = au4[1];
        strSeen += NyLogViewAccepts(opts, item) ? "1" : "0";
    }
    return strSeen;
}

TEST(NyLogViewOptions, ValuesAreStoredFiltersPeekUnlessToldToTakeAndBadValuesAreRefused) {
    const std::pair<std::vector<std::string>, std::string> aCases[] = {
        {{}, "0000 0  /NyShmLog-4b1a 32768 11111"},
        {{"-f", "-j", "--level=Error", "-p", "12", "--pid=34", "-q", "/Q", "--capacity=64",
          "--create"},
         "1111 3 12,34, /Q 64 00000"},
        {{"--peek", "-l", "7"}, "0001 7  /NyShmLog-4b1a 32768 00010"},
        {{"-l", "info", "--take", "-p", "100", "-p", "200"},
         "0000 2 100,200, /NyShmLog-4b1a 32768 01110"},
        {{"-l", "-1"}, "option --level needs trace, info, error or a number"},
        {{"-p", "0"}, "option --pid needs a process id"},
        {{"-p", "12x"}, "option --pid needs a process id"},
        {{"-p", "4294967296"}, "option --pid needs a process id"},
        {{"-c", "48"}, "option --capacity needs a power of two, at least 4"},
        {{"-c", "2"}, "option --capacity needs a power of two, at least 4"},
        {{"-q", "NoSlash"}, "option --queue needs a name of the form /NAME"},
        {{"-q", "/a/b"}, "option --queue needs a name of the form /NAME"},
        {{"-q", "/"}, "option --queue needs a name of the form /NAME"},
        {{"stray"}, "unexpected argument 'stray'"},
        {{"--peek", "--take"}, "--peek and --take exclude each other"},
        {{"--create"}, "--create needs --queue"},
    };
    for (const auto& c : aCases) {
        EXPECT_EQ(c.second, Parse(c.first));
    }
}

}  // namespace
