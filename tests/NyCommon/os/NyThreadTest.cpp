#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>

#include "os/NyOs.h"
#include "os/NyThread.h"
#include "runtime/NyResult.h"
#include "support/NyTestProcess.h"

namespace {

// What a test thread sees; the thread gets the address of the caller's handle variable, which
// NyThreadBegin fills before the thread runs.
struct BlkThreadProbeTag {
    NY_THREAD_HANDLE* phThread;
    std::atomic<bool> bStarted{false};
    std::atomic<bool> bLeftLoop{false};
    std::atomic<int32_t> i4StateSeen{-1};
};

void* ReturnAtOnce(void* pvArg) {
    static_cast<BlkThreadProbeTag*>(pvArg)->bLeftLoop = true;
    return nullptr;
}

void* PollUntilAskedToExit(void* pvArg) {
    auto* pProbe = static_cast<BlkThreadProbeTag*>(pvArg);
    NyThreadSetState(*pProbe->phThread, NY_THREAD_RUNNING);
    pProbe->bStarted = true;
    while (!NyThreadShouldExit(*pProbe->phThread)) {
        usleep(1000);
    }
    pProbe->i4StateSeen = NyThreadGetState(*pProbe->phThread);
    pProbe->bLeftLoop = true;
    return nullptr;
}

void* IgnoreExitRequests(void* pvArg) {
    auto* pProbe = static_cast<BlkThreadProbeTag*>(pvArg);
    pProbe->bStarted = true;
    for (;;) {
        pProbe->i4StateSeen = NyThreadGetState(*pProbe->phThread);
        usleep(1000);  // a cancellation point, nothing more
    }
    pProbe->bLeftLoop = true;
    return nullptr;
}

// A started thread with its probe; the probe lives as long as the test.
struct BlkStartedThreadTag {
    BlkThreadProbeTag probe;
    NY_THREAD_HANDLE hThread = nullptr;
};

void StartThread(PFN_NY_THREAD_ENTRY pfnEntry, BlkStartedThreadTag* pStarted, bool bWaitStarted) {
    pStarted->probe.phThread = &pStarted->hThread;
    ASSERT_EQ(NyThreadBegin(pfnEntry, &pStarted->probe, &pStarted->hThread), NY_OK);
    if (bWaitStarted) {
        ASSERT_TRUE(NyTestWaitUntil([&] { return pStarted->probe.bStarted.load(); }, 5000));
    }
}

}  // namespace

TEST(NyThread, CooperativeThreadSeesTheExitRequestAndIsJoined) {
    BlkStartedThreadTag t;
    StartThread(PollUntilAskedToExit, &t, true);
    BlkThreadProbeTag& probe = t.probe;
    NY_THREAD_HANDLE hThread = t.hThread;
    EXPECT_EQ(NyThreadGetState(hThread), NY_THREAD_RUNNING);
    EXPECT_FALSE(probe.bLeftLoop);
    uint64_t u8Start = NyOsGetTickCount64();
    EXPECT_EQ(NyThreadEnd(hThread), NY_OK);
    EXPECT_LT(NyOsGetTickCount64() - u8Start, 1500u);  // well before the 3 s cancel
    EXPECT_TRUE(probe.bLeftLoop) << "NyThreadEnd returned before the thread ended";
    EXPECT_EQ(probe.i4StateSeen, NY_THREAD_EXIT_ASKED);
}

TEST(NyThread, UncooperativeThreadIsCancelledAfterAbout3Seconds) {
    BlkStartedThreadTag t;
    StartThread(IgnoreExitRequests, &t, true);
    BlkThreadProbeTag& probe = t.probe;
    NY_THREAD_HANDLE hThread = t.hThread;
    uint64_t u8Start = NyOsGetTickCount64();
    EXPECT_EQ(NyThreadEnd(hThread), NY_OK);
    uint64_t u8Elapsed = NyOsGetTickCount64() - u8Start;
    EXPECT_GE(u8Elapsed, 2800u);
    EXPECT_LT(u8Elapsed, 10000u);
    EXPECT_FALSE(probe.bLeftLoop);
    EXPECT_EQ(probe.i4StateSeen, NY_THREAD_EXIT_ASKED) << "the request was made before cancelling";
}

TEST(NyThread, StateAcceptsOnlyRunningAskedAndEnded) {
    BlkStartedThreadTag t;
    StartThread(ReturnAtOnce, &t, false);
    NY_THREAD_HANDLE hThread = t.hThread;
    EXPECT_EQ(NyThreadGetState(hThread), NY_THREAD_STARTED);
    struct {
        int32_t i4State;
        uint32_t u4Result;
        int32_t i4After;
    } aCases[] = {{1, NY_OK, 1},
                  {0, NY_ERR_INVALID_ARGUMENT, 1},
                  {3, NY_OK, 3},
                  {4, NY_ERR_INVALID_ARGUMENT, 3},
                  {-1, NY_ERR_INVALID_ARGUMENT, 3},
                  {2, NY_OK, 2}};
    for (const auto& c : aCases) {
        EXPECT_EQ(NyThreadSetState(hThread, c.i4State), c.u4Result) << c.i4State;
        EXPECT_EQ(NyThreadGetState(hThread), c.i4After) << c.i4State;
    }
    EXPECT_EQ(NyThreadSetState(nullptr, 1), NY_ERR_INVALID_ARGUMENT);
    NY_THREAD_HANDLE hNone = nullptr;
    EXPECT_EQ(NyThreadBegin(nullptr, nullptr, &hNone), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(hNone, nullptr);
    EXPECT_EQ(NyThreadBegin(ReturnAtOnce, nullptr, nullptr), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NyThreadEnd(nullptr), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NyThreadGetState(nullptr), 0);
    EXPECT_FALSE(NyThreadShouldExit(nullptr));
    EXPECT_EQ(NyThreadEnd(hThread), NY_OK);
}

TEST(NyThread, BeginMakesTheCallerAsynchronouslyCancellable) {
    // Checked on a thread of its own so that the test runner's thread keeps its settings.
    pthread_t hCaller;
    static int s_iTypeAfterBegin = -1;
    pthread_create(
        &hCaller, nullptr,
        [](void*) -> void* {
            BlkStartedThreadTag t;
            StartThread(ReturnAtOnce, &t, false);
            pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &s_iTypeAfterBegin);
            NyThreadEnd(t.hThread);
            return nullptr;
        },
        nullptr);
    pthread_join(hCaller, nullptr);
    EXPECT_EQ(s_iTypeAfterBegin, PTHREAD_CANCEL_ASYNCHRONOUS);
}
