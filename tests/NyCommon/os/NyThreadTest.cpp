#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>

#include "os/NyOs.h"
#include "os/NyThread.h"
#include "runtime/NyResult.h"
#include "support/NyTestProcess.h"

namespace {

// Starts one thread with the fixture as its argument; NyThreadBegin fills m_hThread before the
// thread runs, so the entry functions may read it.
class NyThreadTest : public ::testing::Test {
public:
    void Start(PFN_NY_THREAD_ENTRY pfnEntry) {
        ASSERT_EQ(NyThreadBegin(pfnEntry, this, &m_hThread), NY_OK);
        ASSERT_TRUE(NyTestWaitUntil([&] { return m_bStarted.load(); }, 5000));
    }
    // Ends the thread and returns how long that took in milliseconds.
    uint64_t TimedEnd() {
        uint64_t u8Start = NyOsGetTickCount64();
        EXPECT_EQ(NyThreadEnd(m_hThread), NY_OK);
        return NyOsGetTickCount64() - u8Start;
    }
    static void* ReturnAtOnce(void* pvArg) {
        static_cast<NyThreadTest*>(pvArg)->m_bStarted = true;
        return nullptr;
    }
    static void* PollUntilAskedToExit(void* pvArg) {
        auto* pSelf = static_cast<NyThreadTest*>(pvArg);
        NyThreadSetState(pSelf->m_hThread, NY_THREAD_RUNNING);
        pSelf->m_bStarted = true;
        while (!NyThreadShouldExit(pSelf->m_hThread)) {
            usleep(1000);
        }
        pSelf->m_i4StateSeen = NyThreadGetState(pSelf->m_hThread);
        pSelf->m_bLeftLoop = true;
        return nullptr;
    }
    static void* IgnoreExitRequests(void* pvArg) {
        auto* pSelf = static_cast<NyThreadTest*>(pvArg);
        pSelf->m_bStarted = true;
        for (;;) {
            pSelf->m_i4StateSeen = NyThreadGetState(pSelf->m_hThread);
            usleep(1000);  // a cancellation point, nothing more
        }
    }
    NY_THREAD_HANDLE m_hThread = nullptr;
    std::atomic<bool> m_bStarted{false};
    std::atomic<bool> m_bLeftLoop{false};
    std::atomic<int32_t> m_i4StateSeen{-1};
};

TEST_F(NyThreadTest, CooperativeThreadSeesTheExitRequestAndIsJoined) {
    Start(PollUntilAskedToExit);
    EXPECT_EQ(NyThreadGetState(m_hThread), NY_THREAD_RUNNING);
    EXPECT_FALSE(m_bLeftLoop);
    EXPECT_LT(TimedEnd(), 1500u);  // well before the 3 s cancel
    EXPECT_TRUE(m_bLeftLoop) << "NyThreadEnd returned before the thread ended";
    EXPECT_EQ(m_i4StateSeen, NY_THREAD_EXIT_ASKED);
}

TEST_F(NyThreadTest, UncooperativeThreadIsCancelledAfterAbout3Seconds) {
    Start(IgnoreExitRequests);
    uint64_t u8Elapsed = TimedEnd();
    EXPECT_GE(u8Elapsed, 2800u);
    EXPECT_LT(u8Elapsed, 10000u);
    EXPECT_EQ(m_i4StateSeen, NY_THREAD_EXIT_ASKED) << "the request was made before cancelling";
}

// Checked on a thread of its own so that the test runner's thread keeps its settings.
TEST_F(NyThreadTest, BeginMakesTheCallerAsynchronouslyCancellable) {
    static int s_iTypeAfterBegin = -1;
    pthread_t hCaller;
    auto pfnCaller = [](void* pvSelf) -> void* {
        static_cast<NyThreadTest*>(pvSelf)->Start(ReturnAtOnce);
        pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &s_iTypeAfterBegin);
        NyThreadEnd(static_cast<NyThreadTest*>(pvSelf)->m_hThread);
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&hCaller, nullptr, pfnCaller, this), 0);
    pthread_join(hCaller, nullptr);
    EXPECT_EQ(s_iTypeAfterBegin, PTHREAD_CANCEL_ASYNCHRONOUS);
}

}  // namespace
