#include <gtest/gtest.h>
#include <unistd.h>

#include "os/NyOs.h"

TEST(NyOs, TickCountCountsMillisecondsAndIdsOfTheMainThreadAgree) {
    uint64_t u8Before = NyOsGetTickCount64();
    NyOsSleep(20);
    uint64_t u8After = NyOsGetTickCount64();
    EXPECT_GE(u8After - u8Before, 20u);
    EXPECT_LT(u8After - u8Before, 2000u);
    uint32_t u4Low = NyOsGetTickCount();
    EXPECT_LE(static_cast<uint32_t>(u4Low - static_cast<uint32_t>(u8After)), 1000u);
    EXPECT_EQ(NyOsGetCurrentPid(), static_cast<uint32_t>(getpid()));
    EXPECT_EQ(NyOsGetCurrentTid(), NyOsGetCurrentPid());
}
