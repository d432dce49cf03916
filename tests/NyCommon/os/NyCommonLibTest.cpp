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

// Runs pfn on iCount threads at once.
void OnThreads(int iCount, void (*pfn)()) {
    std::vector<std::thread> vThreads;
    for (int t = 0; t < iCount; ++t) {
        vThreads.emplace_back(pfn);
    }
    for (std::thread& thread : vThreads) {
        thread.join();
    }
}

}  // namespace

// Starts and stops from several threads keep an exact count: the first start starts logging,
// the last stop ends it, a stop without a start changes nothing.
TEST(NyCommonLib, FirstStartStartsLoggingAndLastStopEndsIt) {
    CNyTestLogCapture capture(false);
    EXPECT_EQ(NyCommonLibRelease(), 0xFFFFFFFFu);
    EXPECT_FALSE(LoggerExists());
    OnThreads(6, [] { EXPECT_EQ(NyCommonLibInit(), NY_OK); });
    OnThreads(5, [] { EXPECT_EQ(NyCommonLibRelease(), NY_OK); });
    EXPECT_TRUE(LoggerExists()) << "stopped while still started once";
    NY_LOG(LOG_INFO, "still running");
    EXPECT_EQ(NyCommonLibRelease(), NY_OK);
    EXPECT_FALSE(LoggerExists());
    NY_LOG(LOG_INFO, "after the last stop");
    EXPECT_EQ(capture.Messages(), std::vector<std::string>{"still running"});
    EXPECT_EQ(NyCommonLibRelease(), 0xFFFFFFFFu);
}
