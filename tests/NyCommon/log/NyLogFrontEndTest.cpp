#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "log/NyLog.h"
#include "log/NyLogTime.h"
#include "os/NyOs.h"
#include "runtime/NyResult.h"
#include "support/NyTestLogCapture.h"

namespace {

std::string HexOf(const std::vector<uint8_t>& vData, size_t uBegin, size_t uEnd) {
    static const char s_szDigits[] = "0123456789ABCDEF";
    std::string strHex;
    for (size_t i = uBegin; i < uEnd; ++i) {
        strHex += s_szDigits[vData[i] >> 4];
        strHex += s_szDigits[vData[i] & 15];
    }
    return strHex;
}

}  // namespace

TEST(NyLogFrontEnd, RecordCarriesLevelLineIdsAndEqualTimeStamps) {
    CNyTestLogCapture capture;
    uint64_t u8Before = NyLogTimeNow();
    NyLogEx(7, "source/GUIverify.cpp", 321, "value %d of %s", 42, "x");
    uint64_t u8After = NyLogTimeNow();

    std::vector<tagBlkLogItem> vItems = capture.Items();
    ASSERT_EQ(vItems.size(), 1u);
    const tagBlkLogItem& blkItem = vItems[0];
    EXPECT_EQ(blkItem.u4Level, 7u);  // passed through unvalidated
    EXPECT_STREQ(blkItem.szSource, "source/GUIverify.cpp");
    EXPECT_EQ(blkItem.u4Line, 321u);
    EXPECT_STREQ(blkItem.szMessage, "value 42 of x");
    EXPECT_EQ(blkItem.u4Pid, NyOsGetCurrentPid());
    EXPECT_EQ(blkItem.u4Tid, NyOsGetCurrentTid());
    uint64_t u8Time = blkItem.u8Time;  // packed fields are read by value
    uint64_t u8TimeCopy = blkItem.u8TimeCopy;
    EXPECT_GE(u8Time, u8Before);
    EXPECT_LE(u8Time, u8After);
    EXPECT_EQ(u8TimeCopy, u8Time);
    // Everything not written is zero: the message tail and the reserved area.
    const uint8_t* pu1Item = reinterpret_cast<const uint8_t*>(&blkItem);
    for (size_t u = 152 + strlen(blkItem.szMessage); u < 4256; ++u) {
        ASSERT_EQ(pu1Item[u], 0) << "offset " << u;
    }
    for (size_t u = 4264; u < sizeof(blkItem); ++u) {
        ASSERT_EQ(pu1Item[u], 0) << "offset " << u;
    }
}

TEST(NyLogFrontEnd, TimeStampCountsHundredNanosecondsSince1601) {
    struct {
        uint64_t u8Seconds;
        uint64_t u8Micro;
        uint64_t u8Expected;
    } aCases[] = {
        {0, 0, 0x019DB1DED53E8000ULL},
        {0, 1, 0x019DB1DED53E8000ULL + 10},
        {1, 0, 0x019DB1DED53E8000ULL + 10000000},
        {946684800, 0, 125911584000000000ULL},  // 2000-01-01T00:00:00Z
        {1700000000, 999999, 133444736009999990ULL},
    };
    for (const auto& c : aCases) {
        EXPECT_EQ(NyLogTimeFromUnix(c.u8Seconds, c.u8Micro), c.u8Expected) << c.u8Seconds;
    }
}

TEST(NyLogFrontEnd, SourcePathKeepsItsLast127Characters) {
    struct {
        size_t cchSource;
        size_t cchStored;
    } aCases[] = {{0, 0}, {1, 1}, {127, 127}, {128, 127}, {200, 127}, {5000, 127}};
    for (const auto& c : aCases) {
        std::string strSource;
        for (size_t i = 0; i < c.cchSource; ++i) {
            strSource += static_cast<char>('a' + i % 26);
        }
        CNyTestLogCapture capture;
        NyLogEx(LOG_INFO, strSource.c_str(), 1, "m");
        std::vector<tagBlkLogItem> vItems = capture.Items();
        ASSERT_EQ(vItems.size(), 1u) << c.cchSource;
        EXPECT_EQ(std::string(vItems[0].szSource), strSource.substr(c.cchSource - c.cchStored))
            << c.cchSource;
    }
    CNyTestLogCapture capture;
    NyLogEx(LOG_INFO, nullptr, 1, "no source");
    ASSERT_EQ(capture.Items().size(), 1u);
    EXPECT_STREQ(capture.Items()[0].szSource, "");
}

TEST(NyLogFrontEnd, MessageIsCutAtItsFirst4096Characters) {
    for (size_t cch : {4095u, 4096u, 4097u, 6000u}) {
        std::string strLong(cch, 'm');
        strLong[0] = 'S';
        CNyTestLogCapture capture;
        NyLogEx(LOG_INFO, "f.cpp", 9, "%s", strLong.c_str());
        std::vector<tagBlkLogItem> vItems = capture.Items();
        ASSERT_FALSE(vItems.empty());
        const tagBlkLogItem& blkLast = vItems.back();
        EXPECT_EQ(blkLast.u4Level, LOG_INFO);
        EXPECT_EQ(std::string(blkLast.szMessage), strLong.substr(0, 4096)) << cch;
        // A cut message is preceded by the formatter's own error report.
        EXPECT_EQ(vItems.size(), cch > 4096 ? 2u : 1u) << cch;
    }
}

TEST(NyLogFrontEnd, NullFormatOrNullDataLogsNothing) {
    CNyTestLogCapture capture;
    const char* szNoFormat = nullptr;
    NyLogEx(LOG_ERROR, "f.cpp", 1, szNoFormat, 1, 2, "three");
    NyLogExW(LOG_ERROR, "f.cpp", 1, nullptr, 1, 2);
    NyLogByteArrayEx(LOG_ERROR, "f.cpp", 1, nullptr, 16);
    EXPECT_TRUE(capture.Items().empty());
}

TEST(NyLogFrontEnd, CallsWithoutLoggerAreIgnored) {
    CNyTestLogCapture capture(false);
    NyLogEx(LOG_INFO, "f.cpp", 1, "before init");
    NyLogInit();
    NyLogEx(LOG_INFO, "f.cpp", 2, "while running");
    NyLogFinal();
    NyLogEx(LOG_INFO, "f.cpp", 3, "after final");
    NyLogByteArrayEx(LOG_INFO, "f.cpp", 4, "ab", 2);
    EXPECT_EQ(capture.Messages(), std::vector<std::string>{"while running"});
}

TEST(NyLogFrontEnd, HexDumpIsSplitIntoChunksOf2048Bytes) {
    std::vector<uint8_t> vData(5000);
    for (size_t i = 0; i < vData.size(); ++i) {
        vData[i] = static_cast<uint8_t>(i * 7 + 3);
    }
    CNyTestLogCapture capture;
    NyLogByteArrayEx(LOG_TRACE, "f.cpp", 77, vData.data(), 5000);
    std::vector<tagBlkLogItem> vItems = capture.Items();
    ASSERT_EQ(vItems.size(), 3u);
    EXPECT_EQ(std::string(vItems[0].szMessage), HexOf(vData, 0, 2048));
    EXPECT_EQ(std::string(vItems[1].szMessage), HexOf(vData, 2048, 4096));
    EXPECT_EQ(std::string(vItems[2].szMessage), HexOf(vData, 4096, 5000));
    EXPECT_EQ(strlen(vItems[2].szMessage), 1808u);
    for (const tagBlkLogItem& blkItem : vItems) {
        EXPECT_EQ(blkItem.u4Level, LOG_TRACE);
        EXPECT_EQ(blkItem.u4Line, 77u);
        EXPECT_STREQ(blkItem.szSource, "f.cpp");
    }
    capture.Clear();
    NyLogByteArrayEx(LOG_TRACE, "f.cpp", 78, vData.data(), 2048);
    NyLogByteArrayEx(LOG_TRACE, "f.cpp", 79, vData.data(), 0);  // still one, empty, record
    EXPECT_EQ(capture.Messages(), (std::vector<std::string>{HexOf(vData, 0, 2048), ""}));
}

TEST(NyLogFrontEnd, WideMessageIsLoggedInGb18030) {
    CNyTestLogCapture capture;
    NyLogExW(LOG_INFO, "f.cpp", 5, L"\u4E2D\u6587 %d %ls", 12, L"ok");
    EXPECT_EQ(capture.Messages(), std::vector<std::string>{"\xD6\xD0\xCE\xC4 12 ok"});
}

TEST(NyLogFrontEnd, WideMessageThatCannotBeConvertedIsDropped) {
    const wchar_t szBad[] = {L'l', L'o', L's', L't', static_cast<wchar_t>(0xD800), 0};
    CNyTestLogCapture capture;
    NyLogExW(LOG_ERROR, "f.cpp", 5, szBad);
    // Only the converter's own result-code record remains.
    EXPECT_TRUE(capture.MessagesAt(LOG_ERROR).empty());
    EXPECT_EQ(capture.MessagesAt(LOG_INFO), std::vector<std::string>{"u4Result = E0600003"});
}

TEST(NyLogFrontEnd, SetParamCodes) {
    tagBlkLogParam blkOff = {};
    {
        CNyTestLogCapture capture(false);
        EXPECT_EQ(NyLogSetParam(&blkOff), NY_ERR_NOT_INITIALISED);
    }
    CNyTestLogCapture capture;
    EXPECT_EQ(NyLogSetParam(nullptr), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NyLogSetParam(&blkOff), NY_OK);  // the current parameter: a no-op

    tagBlkLogParam blkOffWithPath = {};
    strcpy(blkOffWithPath.szPath, "/tmp/unused");
    EXPECT_EQ(NyLogSetParam(&blkOffWithPath), NY_OK);  // any other mode: logging off

    tagBlkLogParam blkFile = {NY_LOG_MODE_FILE, {0}};
    EXPECT_EQ(NyLogSetParam(&blkFile), NY_ERR_INVALID_ARGUMENT);  // this back end cannot start
    NY_LOG(LOG_INFO, "still logging");
    EXPECT_EQ(capture.Messages(), std::vector<std::string>{"still logging"});
}

TEST(NyLogFrontEnd, ResultMacroLogsTheCodeAtLevel2WithThisFile) {
    CNyTestLogCapture capture;
    unsigned int u4Line = __LINE__ + 1;
    NY_LOG_RESULT(0xE0600005);
    std::vector<tagBlkLogItem> vItems = capture.Items();
    ASSERT_EQ(vItems.size(), 1u);
    EXPECT_EQ(vItems[0].u4Level, LOG_INFO);
    EXPECT_STREQ(vItems[0].szMessage, "u4Result = E0600005");
    EXPECT_STREQ(vItems[0].szSource, "tests/NyCommon/log/NyLogFrontEndTest.cpp");
    EXPECT_EQ(vItems[0].u4Line, u4Line);
}
