// Named events across real processes: creation and joining, shared state, auto-reset, the three
// time-out modes, holder counting and the removal of sets whose holders all died.
#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include "NyIpcTestSupport.h"
#include "ipc/NyEvent.h"
#include "ipc/NyIpcResult.h"
#include "os/NyOs.h"
#include "runtime/NyResult.h"
#include "support/NyTestProcess.h"

namespace {

class NyEventTest : public CIpcTest {};

TEST_F(NyEventTest, SecondProcessJoinsAndSharesStateUntilTheLastHolderCloses) {
    std::string strName = NewName("ev");
    EnBool enCreated = NY_FALSE;
    NY_EVENT_HANDLE hEvent = nullptr;
    ASSERT_EQ(NY_OK, NyEventCreateEx(strName.c_str(), &enCreated, &hEvent));
    EXPECT_EQ(NY_TRUE, enCreated);
    CIpcSignal sigSet;
    CIpcSignal sigParentClosed;
    pid_t pid = Fork([&] {
        EnBool enChildCreated = NY_TRUE;
        NY_EVENT_HANDLE hChild = nullptr;
        IPC_CHILD_CHECK(NyEventCreateEx(strName.c_str(), &enChildCreated, &hChild) == NY_OK, 1);
        IPC_CHILD_CHECK(enChildCreated == NY_FALSE, 2);
        IPC_CHILD_CHECK(IpcEventHolders(strName) == 2, 3);
        IPC_CHILD_CHECK(NyEventSet(hChild) == NY_OK, 4);
        sigSet.Post();
        IPC_CHILD_CHECK(sigParentClosed.Await(5000), 5);
        IPC_CHILD_CHECK(IpcEventHolders(strName) == 1, 6);
        IPC_CHILD_CHECK(NyEventClose(hChild) == NY_OK, 7);
        return IpcEventHolders(strName) == -1 ? 0 : 8;
    });
    ASSERT_TRUE(sigSet.Await(5000));
    EXPECT_EQ(NY_OK, NyEventWait(hEvent, NY_WAIT_INFINITE));
    EXPECT_EQ(2, IpcEventHolders(strName));
    EXPECT_EQ(NY_OK, NyEventClose(hEvent));
    sigParentClosed.Post();
    EXPECT_EQ(0, Join(pid));
}

TEST_F(NyEventTest, AutoResetResetTimeOutModesAndPrivateNamelessEvents) {
    NY_EVENT_HANDLE hEvent = nullptr;
    ASSERT_EQ(NY_OK, NyEventCreate(NewName("ev").c_str(), &hEvent));
    EXPECT_EQ(NY_OK, NyEventSet(hEvent));
    EXPECT_EQ(NY_OK, NyEventSet(hEvent));
    EXPECT_EQ(NY_OK, NyEventWait(hEvent, 0));
    EXPECT_EQ(NY_ERR_TIMEOUT, NyEventWait(hEvent, 0)) << "two sets, one wake";
    EXPECT_EQ(NY_OK, NyEventSet(hEvent));
    EXPECT_EQ(NY_OK, NyEventReset(hEvent));
    // Reset held; then the three time-out modes: poll, bounded (its own code), infinite.
    unsigned long long u8Start = NyOsGetTickCount64();
    EXPECT_EQ(NY_ERR_TIMEOUT, NyEventWait(hEvent, 0));
    EXPECT_LT(NyOsGetTickCount64() - u8Start, 100u);
    u8Start = NyOsGetTickCount64();
    EXPECT_EQ(static_cast<uint32_t>(EAGAIN), NyEventWait(hEvent, 120));
    unsigned long long u8Elapsed = NyOsGetTickCount64() - u8Start;
    EXPECT_GE(u8Elapsed, 110u);
    EXPECT_LT(u8Elapsed, 1000u);
    std::thread thSetter([hEvent] {
        usleep(50000);
        NyEventSet(hEvent);
    });
    EXPECT_EQ(NY_OK, NyEventWait(hEvent, NY_WAIT_INFINITE));
    thSetter.join();
    EXPECT_EQ(NY_OK, NyEventClose(hEvent));

    NY_EVENT_HANDLE hFirst = nullptr;
    NY_EVENT_HANDLE hSecond = nullptr;
    EnBool enCreated = NY_FALSE;
    ASSERT_EQ(NY_OK, NyEventCreateEx("", &enCreated, &hFirst));
    EXPECT_EQ(NY_TRUE, enCreated);
    ASSERT_EQ(NY_OK, NyEventCreate(nullptr, &hSecond));
    EXPECT_EQ(NY_OK, NyEventSet(hFirst));
    EXPECT_EQ(NY_ERR_TIMEOUT, NyEventWait(hSecond, 0));
    EXPECT_EQ(NY_OK, NyEventWait(hFirst, 0));
    EXPECT_EQ(NY_OK, NyEventClose(hFirst));
    EXPECT_EQ(NY_OK, NyEventClose(hSecond));

    EXPECT_EQ(NY_ERR_CREATE_FAILED, NyEventOpen(NewName("absent").c_str(), &hEvent));
    EXPECT_EQ(NY_ERR_NOT_FOUND, NyEventOpen("", &hEvent));
    EXPECT_EQ(NY_ERR_NOT_FOUND, NyEventOpen(nullptr, &hEvent));
}

TEST_F(NyEventTest, StaleSetOfKilledHolderIsReplacedOnCreate) {
    std::string strName = NewName("ev");
    CIpcSignal sigReady;
    pid_t pid = Fork([&] {
        NY_EVENT_HANDLE hChild = nullptr;
        IPC_CHILD_CHECK(NyEventCreate(strName.c_str(), &hChild) == NY_OK, 1);
        NyEventSet(hChild);
        sigReady.Post();
        pause();
        return 0;
    });
    ASSERT_TRUE(sigReady.Await(5000));
    NyTestKillChild(pid);
    ASSERT_EQ(0, IpcEventHolders(strName)) << "the kernel gives back a dead holder's count";
    NY_EVENT_HANDLE hEvent = nullptr;
    EXPECT_EQ(NY_ERR_CREATE_FAILED, NyEventOpen(strName.c_str(), &hEvent));
    EnBool enCreated = NY_FALSE;
    ASSERT_EQ(NY_OK, NyEventCreateEx(strName.c_str(), &enCreated, &hEvent));
    EXPECT_EQ(NY_TRUE, enCreated);
    EXPECT_EQ(NY_ERR_TIMEOUT, NyEventWait(hEvent, 0)) << "the new set starts reset";
    EXPECT_EQ(1, IpcEventHolders(strName));
    EXPECT_EQ(NY_OK, NyEventClose(hEvent));
}

}  // namespace
