#include <gtest/gtest.h>
#include <unistd.h>

#include "os/NyOs.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"

TEST(NyOs, TickCountIsMonotonicAndCountsMilliseconds) {
    uint64_t u8Before = NyOsGetTickCount64();
    NyOsSleep(20);
    uint64_t u8After = NyOsGetTickCount64();
    EXPECT_GE(u8After - u8Before, 20u);
    EXPECT_LT(u8After - u8Before, 2000u);
    uint32_t u4Low = NyOsGetTickCount();
    EXPECT_LE(static_cast<uint32_t>(u4Low - static_cast<uint32_t>(u8After)), 1000u);
}

TEST(NyOs, ProcessAndThreadIdsOfTheMainThreadAgree) {
    EXPECT_EQ(NyOsGetCurrentPid(), static_cast<uint32_t>(getpid()));
    EXPECT_EQ(NyOsGetCurrentTid(), NyOsGetCurrentPid());
}

TEST(NyTestSupport, UniqueNamesDiffer) {
    EXPECT_NE(NyTestUniqueName("x"), NyTestUniqueName("x"));
}

TEST(NyTestSupport, ForkedChildExitCodeAndKillAreReported) {
    pid_t pid = NyTestForkChild([] { return 7; });
    EXPECT_EQ(NyTestWaitChild(pid, 5000), 7);
    pid_t pidSleeper = NyTestForkChild([] {
        pause();
        return 0;
    });
    EXPECT_EQ(NyTestWaitChild(pidSleeper, 50), -1);
    NyTestKillChild(pidSleeper);
}
