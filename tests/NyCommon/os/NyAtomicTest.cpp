#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "os/NyAtomic.h"

TEST(NyAtomic, ArithmeticReturnsThePreviousValueWrapsAndSwapsOnlyTheExpectedValue) {
    volatile uint32_t u4Word = 10;
    EXPECT_EQ(NyAtomicAdd32(&u4Word, 5), 10u);
    EXPECT_EQ(NyAtomicSub32(&u4Word, 20), 15u);
    EXPECT_EQ(u4Word, 0xFFFFFFFBu);
    EXPECT_EQ(NyAtomicAdd32(&u4Word, 6), 0xFFFFFFFBu);
    EXPECT_EQ(u4Word, 1u);
    EXPECT_FALSE(NyAtomicCAS32(&u4Word, 6, 9));
    EXPECT_TRUE(NyAtomicCAS32(&u4Word, 1, 9));
    EXPECT_EQ(u4Word, 9u);
    EXPECT_EQ(NyAtomicCASVal32(&u4Word, 9, 2), 9u);
    EXPECT_EQ(u4Word, 2u);
    EXPECT_EQ(NyAtomicAdd32(nullptr, 1), 0u);
    EXPECT_EQ(NyAtomicSub32(nullptr, 1), 0u);
    EXPECT_FALSE(NyAtomicCAS32(nullptr, 0, 1));
    EXPECT_EQ(NyAtomicCASVal32(nullptr, 0, 1), 0u);
}

TEST(NyAtomic, SpinLockExcludesOtherThreadsAndReleaseOnlyClearsAHeldLock) {
    volatile uint32_t u4Lock = 0;
    uint32_t u4Inside = 0;
    uint32_t u4MaxInside = 0;
    uint32_t u4Total = 0;
    std::vector<std::thread> vThreads;
    for (int t = 0; t < 3; ++t) {
        vThreads.emplace_back([&] {
            for (int i = 0; i < 100; ++i) {
                NyAtomicGetLock(&u4Lock);
                uint32_t u4Now = ++u4Inside;  // plain accesses: only the lock protects them
                u4MaxInside = u4Now > u4MaxInside ? u4Now : u4MaxInside;
                std::this_thread::yield();
                ++u4Total;
                --u4Inside;
                NyAtomicReleaseLock(&u4Lock);
            }
        });
    }
    for (std::thread& thread : vThreads) {
        thread.join();
    }
    EXPECT_EQ(u4MaxInside, 1u);
    EXPECT_EQ(u4Total, 300u);
    EXPECT_EQ(u4Lock, 0u);
    u4Lock = 5;
    NyAtomicReleaseLock(&u4Lock);
    EXPECT_EQ(u4Lock, 5u);
}
