#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "log/NyLog.h"
#include "os/NyCommonLib.h"
#include "runtime/NyResult.h"
#include "support/NyTestLogCapture.h"

namespace {

// The logger exists exactly while the library runs.
bool LoggerExists() {
    tagBlkLogParam blkOff = {};
    return NyLogSetParam(&blkOff) != NY_ERR_NOT_INITIALISED;
}

}  // namespace

TEST(NyCommonLib, FirstStartStartsLoggingAndLastStopEndsIt) {
    CNyTestLogCapture capture(false);
    EXPECT_EQ(NyCommonLibRelease(), 0xFFFFFFFFu);  // never started: nothing changes
    EXPECT_FALSE(LoggerExists());
    ASSERT_EQ(NyCommonLibInit(), NY_OK);
    EXPECT_TRUE(LoggerExists());
    ASSERT_EQ(NyCommonLibInit(), NY_OK);
    EXPECT_EQ(NyCommonLibRelease(), NY_OK);
    EXPECT_TRUE(LoggerExists()) << "stopped while still started once";
    NY_LOG(LOG_INFO, "still running");
    EXPECT_EQ(NyCommonLibRelease(), NY_OK);
    EXPECT_FALSE(LoggerExists());
    NY_LOG(LOG_INFO, "after the last stop");
    EXPECT_EQ(capture.Messages(), std::vector<std::string>{"still running"});
    EXPECT_EQ(NyCommonLibRelease(), 0xFFFFFFFFu);
}

TEST(NyCommonLib, ConcurrentStartsAndStopsKeepAnExactCount) {
    CNyTestLogCapture capture(false);
    const int iThreads = 6;
    std::vector<std::thread> vThreads;
    for (int t = 0; t < iThreads; ++t) {
        vThreads.emplace_back([] { EXPECT_EQ(NyCommonLibInit(), NY_OK); });
    }
    for (std::thread& thread : vThreads) {
        thread.join();
    }
    vThreads.clear();
    EXPECT_TRUE(LoggerExists());
    for (int t = 0; t < iThreads - 1; ++t) {
        vThreads.emplace_back([] { EXPECT_EQ(NyCommonLibRelease(), NY_OK); });
    }
    for (std::thread& thread : vThreads) {
        thread.join();
    }
    EXPECT_TRUE(LoggerExists());
    EXPECT_EQ(NyCommonLibRelease(), NY_OK);
    EXPECT_FALSE(LoggerExists());
    EXPECT_EQ(NyCommonLibRelease(), 0xFFFFFFFFu);
}
