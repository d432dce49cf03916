// Process identity and start times.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "ipc/NyProcessInfo.h"
#include "runtime/NyResult.h"

namespace {

TEST(NyProcessInfoTest, InfoNamesThisExecutableAndUser) {
    BlkProcessInfoTag stInfo;
    memset(&stInfo, 0x55, sizeof(stInfo));
    ASSERT_EQ(NY_OK, GetProcessInfo(&stInfo));
    EXPECT_EQ(static_cast<uint32_t>(getpid()), stInfo.u4Pid);
    EXPECT_STREQ("test_NyCommon_ipc", stInfo.szExeName);
    EXPECT_GT(strlen(stInfo.szUserName), 0u);
    EXPECT_LE(strlen(stInfo.szUserName), NY_PROCESS_USER_MAX);
    EXPECT_STREQ("0.0.0.0", stInfo.szAddress);
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, GetProcessInfo(nullptr));
}

TEST(NyProcessInfoTest, StartTimeLinesBecomeDateAndClockDigits) {
    // clang-format off
    const struct {
        const char* szLine;
        const char* szExpected;  // null: the line is refused
    } aCases[] = {
        {"Mon#Jan#15#103045#2024\n", "20240115103045"},
        {"Sun#Dec#31#235959#1999", "19991231235959"}, {"Tue#Feb#3#000501#2026\n", "20260203000501"},
        {"Wed#Jun#9#070000#2021", "20210609070000"}, {"Mon#Foo#15#103045#2024", nullptr},
        {"Mon#Jan#15#103045", nullptr}, {"", nullptr}, {"Mon#Jan#32#103045#2024", nullptr}};
    // clang-format on
    for (const auto& c : aCases) {
        char szTime[NY_PROCESS_START_TIME_SIZE] = {};
        uint32_t u4Result = ParseProcessStartTime(c.szLine, szTime, sizeof(szTime));
        EXPECT_EQ(c.szExpected != nullptr ? NY_OK : NY_ERR_NOT_FOUND, u4Result) << c.szLine;
        EXPECT_STREQ(c.szExpected != nullptr ? c.szExpected : "", szTime) << c.szLine;
    }
    // This process's own start, read through the process table.
    char szTime[NY_PROCESS_START_TIME_SIZE] = {};
    const uint32_t u4Pid = static_cast<uint32_t>(getpid());
    ASSERT_EQ(NY_OK, GetProcessStartTime(u4Pid, szTime, sizeof(szTime)));
    EXPECT_EQ(14u, strlen(szTime));
    EXPECT_EQ(NY_ERR_BUFFER_TOO_SMALL, GetProcessStartTime(u4Pid, szTime, sizeof(szTime) - 1));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, GetProcessStartTime(u4Pid, nullptr, sizeof(szTime)));
}

}  // namespace
