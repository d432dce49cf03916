#include <gtest/gtest.h>

#include <algorithm>
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
    for (size_t u = 152 + strlen(blkItem.szMessage); u < sizeof(blkItem); ++u) {
        ASSERT_EQ(pu1Item[u], u >= 4256 && u < 4264 ? pu1Item[u] : 0) << "offset " << u;
    }
    // Time stamps count hundred nanoseconds since 1601.
    const uint64_t u8Epoch = 0x019DB1DED53E8000ULL;
    EXPECT_EQ(NyLogTimeFromUnix(0, 1), u8Epoch + 10);
    EXPECT_EQ(NyLogTimeFromUnix(1, 0), u8Epoch + 10000000);
    EXPECT_EQ(NyLogTimeFromUnix(1700000000, 999999), 133444736009999990ULL);
}

TEST(NyLogFrontEnd, SourceKeepsItsLast127AndMessageItsFirst4096Characters) {
    for (size_t cchSource : {0u, 127u, 128u, 5000u}) {
        std::string strSource;
        for (size_t i = 0; i < cchSource; ++i) {
            strSource += static_cast<char>('a' + i % 26);
        }
        CNyTestLogCapture capture;
        NyLogEx(LOG_INFO, strSource.c_str(), 1, "m");
        ASSERT_EQ(capture.Items().size(), 1u) << cchSource;
        EXPECT_EQ(std::string(capture.Items()[0].szSource),
                  strSource.substr(cchSource - std::min<size_t>(cchSource, 127)));
    }
    for (size_t cch : {4096u, 4097u}) {
        std::string strLong(cch, 'm');
        strLong[0] = 'S';
        CNyTestLogCapture capture;
        NyLogEx(LOG_INFO, "f.cpp", 9, "%s", strLong.c_str());
        std::vector<tagBlkLogItem> vItems = capture.Items();
        ASSERT_FALSE(vItems.empty());
        EXPECT_EQ(std::string(vItems.back().szMessage), strLong.substr(0, 4096)) << cch;
        // A cut message is preceded by the formatter's own error report.
        EXPECT_EQ(vItems.size(), cch > 4096 ? 2u : 1u) << cch;
    }
    CNyTestLogCapture capture;
    NyLogEx(LOG_INFO, nullptr, 1, "no source");
    ASSERT_EQ(capture.Items().size(), 1u);
    EXPECT_STREQ(capture.Items()[0].szSource, "");
}

TEST(NyLogFrontEnd, NothingIsLoggedWithoutFormatDataOrLogger) {
    {
        CNyTestLogCapture capture;
        const char* szNoFormat = nullptr;
        NyLogEx(LOG_ERROR, "f.cpp", 1, szNoFormat, 1, 2, "three");
        NyLogExW(LOG_ERROR, "f.cpp", 1, nullptr, 1, 2);
        NyLogByteArrayEx(LOG_ERROR, "f.cpp", 1, nullptr, 16);
        EXPECT_TRUE(capture.Items().empty());
    }
    CNyTestLogCapture capture(false);
    tagBlkLogParam blkOff = {};
    EXPECT_EQ(NyLogSetParam(&blkOff), NY_ERR_NOT_INITIALISED);
    NyLogEx(LOG_INFO, "f.cpp", 1, "before init");
    NyLogInit();
    NyLogEx(LOG_INFO, "f.cpp", 2, "while running");
    NyLogFinal();
    NyLogEx(LOG_INFO, "f.cpp", 3, "after final");
    NyLogByteArrayEx(LOG_INFO, "f.cpp", 4, "ab", 2);
    EXPECT_EQ(capture.Messages(), std::vector<std::string>{"while running"});
}

TEST(NyLogFrontEnd, HexDumpIsSplitIntoChunksOf2048Bytes) {
    std::vector<uint8_t> vData(2100);
    for (size_t i = 0; i < vData.size(); ++i) {
        vData[i] = static_cast<uint8_t>(i * 7 + 3);
    }
    CNyTestLogCapture capture;
    NyLogByteArrayEx(LOG_TRACE, "f.cpp", 77, vData.data(), vData.size());
    EXPECT_EQ(capture.Messages(),
              (std::vector<std::string>{HexOf(vData, 0, 2048), HexOf(vData, 2048, 2100)}));
}

// Wide messages are logged in GB18030; one that cannot be converted is dropped, leaving only
// the converter's own result-code record.
TEST(NyLogFrontEnd, WideMessagesAreConvertedOrDropped) {
    CNyTestLogCapture capture;
    NyLogExW(LOG_INFO, "f.cpp", 5, L"\u4E2D\u6587 %d %ls", 12, L"ok");
    EXPECT_EQ(capture.Messages(), std::vector<std::string>{"\xD6\xD0\xCE\xC4 12 ok"});
    capture.Clear();
    const wchar_t szBad[] = {L'l', L'o', L's', L't', static_cast<wchar_t>(0xD800), 0};
    NyLogExW(LOG_ERROR, "f.cpp", 5, szBad);
    EXPECT_TRUE(capture.MessagesAt(LOG_ERROR).empty());
    EXPECT_EQ(capture.MessagesAt(LOG_INFO), std::vector<std::string>{"u4Result = E0600003"});
}

TEST(NyLogFrontEnd, SetParamCodesAndTheResultMacro) {
    CNyTestLogCapture capture;
    tagBlkLogParam blkOff = {};
    EXPECT_EQ(NyLogSetParam(nullptr), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NyLogSetParam(&blkOff), NY_OK);  // the current parameter: a no-op
    tagBlkLogParam blkOffWithPath = {};
    strcpy(blkOffWithPath.szPath, "/tmp/unused");
    EXPECT_EQ(NyLogSetParam(&blkOffWithPath), NY_OK);  // any other mode: logging off
    tagBlkLogParam blkFile = {NY_LOG_MODE_FILE, {0}};
    EXPECT_EQ(NyLogSetParam(&blkFile), NY_ERR_INVALID_ARGUMENT);  // this back end cannot start
    unsigned int u4Line = __LINE__ + 1;
    NY_LOG_RESULT(0xE0600005);
    std::vector<tagBlkLogItem> vItems = capture.Items();
    ASSERT_EQ(vItems.size(), 1u) << "still logging";
    EXPECT_EQ(vItems[0].u4Level, LOG_INFO);
    EXPECT_STREQ(vItems[0].szMessage, "u4Result = E0600005");
    // Relative to the project (a compiler cache may put "../" in front).
    const std::string strSource = vItems[0].szSource;
    EXPECT_NE(strSource[0], '/');
    EXPECT_EQ(strSource.substr(strSource.find("tests/")),
              "tests/NyCommon/log/NyLogFrontEndTest.cpp");
    EXPECT_EQ(vItems[0].u4Line, u4Line);
}
