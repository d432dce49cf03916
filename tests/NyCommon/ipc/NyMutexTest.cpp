// Mutexes: recursion per thread, exclusion across threads and processes, refusal of releases by
// non-owners, and the kernel freeing the lock of a killed owner.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "NyIpcTestSupport.h"
#include "ipc/NyIpcResult.h"
#include "ipc/NyMutex.h"
#include "runtime/NyResult.h"
#include "support/NyTestProcess.h"

namespace {

class NyMutexTest : public CIpcTest {
protected:
    // Result of a wait with the given time-out from another thread.
    static uint32_t WaitFromOtherThread(NY_MUTEX_HANDLE hMutex, uint32_t u4TimeoutMs) {
        uint32_t u4Result = 0;
        std::thread th([&] {
            u4Result = NyMutexWait(hMutex, u4TimeoutMs);
            if (u4Result == NY_OK) {
                NyMutexRelease(hMutex);
            }
        });
        th.join();
        return u4Result;
    }
};

// Both kinds behave alike within one process.
class NyMutexKindTest : public NyMutexTest, public ::testing::WithParamInterface<bool> {
protected:
    NY_MUTEX_HANDLE Make() {
        NY_MUTEX_HANDLE hMutex = nullptr;
        std::string strName = GetParam() ? NewName("mtx") : "";
        EXPECT_EQ(NY_OK, NyMutexCreate(strName.c_str(), &hMutex));
        return hMutex;
    }
};

// Releases by a thread that does not hold it are refused, before and while another holds it.
TEST_P(NyMutexKindTest, RecursiveInOneThreadExclusiveAgainstOthersAndOnlyTheOwnerReleases) {
    NY_MUTEX_HANDLE hMutex = Make();
    ASSERT_NE(nullptr, hMutex);
    uint32_t u4NotOwner = GetParam() ? NY_ERR_NOT_OWNER : NY_ERR_INVALID_ARGUMENT;
    EXPECT_EQ(u4NotOwner, NyMutexRelease(hMutex)) << "nobody holds it";
    EXPECT_EQ(NY_OK, NyMutexWait(hMutex, NY_WAIT_INFINITE));
    EXPECT_EQ(NY_OK, NyMutexWait(hMutex, 0));
    EXPECT_EQ(NY_ERR_TIMEOUT, WaitFromOtherThread(hMutex, 0));
    EXPECT_EQ(NY_ERR_TIMEOUT, WaitFromOtherThread(hMutex, 30));
    uint32_t u4Other = 0;
    std::thread th([&] { u4Other = NyMutexRelease(hMutex); });
    th.join();
    EXPECT_EQ(u4NotOwner, u4Other);
    EXPECT_EQ(NY_OK, NyMutexRelease(hMutex));
    EXPECT_EQ(NY_ERR_TIMEOUT, WaitFromOtherThread(hMutex, 0)) << "still held once";
    EXPECT_EQ(NY_OK, NyMutexRelease(hMutex));
    EXPECT_EQ(NY_OK, WaitFromOtherThread(hMutex, 0));
    EXPECT_EQ(NY_OK, NyMutexDestroy(hMutex));
}

INSTANTIATE_TEST_SUITE_P(NamedAndNameless, NyMutexKindTest, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool>& info) {
                             return info.param ? "Named" : "Nameless";
                         });

// What another program sees with plain fcntl: a share lock on byte 1 from every user, the
// owner's exclusive lock on byte 2; and a plain lock on byte 2 keeps us out.
TEST_F(NyMutexTest, LockBytesMatchWhatOtherProgramsSee) {
    std::string strName = NewName("mtx");
    NY_MUTEX_HANDLE hMutex = nullptr;
    ASSERT_EQ(NY_OK, NyMutexCreate(strName.c_str(), &hMutex));
    ASSERT_EQ(NY_OK, NyMutexWait(hMutex, NY_WAIT_INFINITE));
    const pid_t pidParent = getpid();
    CIpcSignal sigProbed;
    CIpcSignal sigReleased;
    CIpcSignal sigChildLocked;
    pid_t pid = Fork([&] {
        int iFd = open(IpcMutexPath(strName).c_str(), O_RDWR);
        IPC_CHILD_CHECK(iFd >= 0, 1);
        // Plain one-byte write-lock description, independent of the code under test.
        auto Byte = [](off_t u8Byte) {
            struct flock st = {};
            st.l_type = F_WRLCK;
            st.l_whence = SEEK_SET;
            st.l_start = u8Byte;
            st.l_len = 1;
            return st;
        };
        for (off_t u8Byte : {1, 2}) {
            struct flock stProbe = Byte(u8Byte);
            IPC_CHILD_CHECK(fcntl(iFd, F_GETLK, &stProbe) == 0, 2);
            IPC_CHILD_CHECK(stProbe.l_pid == pidParent, 3);
            IPC_CHILD_CHECK(stProbe.l_type == (u8Byte == 1 ? F_RDLCK : F_WRLCK), 4);
        }
        sigProbed.Post();
        IPC_CHILD_CHECK(sigReleased.Await(5000), 5);
        struct flock stLock = Byte(2);
        IPC_CHILD_CHECK(fcntl(iFd, F_SETLKW, &stLock) == 0, 6);
        sigChildLocked.Post();
        pause();
        return 0;
    });
    ASSERT_TRUE(sigProbed.Await(5000)) << "child ended with " << NyTestWaitChild(pid, 100);
    EXPECT_EQ(NY_OK, NyMutexRelease(hMutex));
    sigReleased.Post();
    ASSERT_TRUE(sigChildLocked.Await(5000));
    EXPECT_EQ(NY_ERR_TIMEOUT, NyMutexWait(hMutex, 20));
    NyTestKillChild(pid);
    EXPECT_EQ(NY_OK, NyMutexWait(hMutex, 0));
    EXPECT_EQ(NY_OK, NyMutexRelease(hMutex));
    EXPECT_EQ(NY_OK, NyMutexDestroy(hMutex));
}

TEST_F(NyMutexTest, TwoHandlesOfOneNameInOneProcessExcludeEachOtherUntilDestroyed) {
    std::string strName = NewName("mtx");
    NY_MUTEX_HANDLE hFirst = nullptr;
    NY_MUTEX_HANDLE hSecond = nullptr;
    ASSERT_EQ(NY_OK, NyMutexCreate(strName.c_str(), &hFirst));
    ASSERT_EQ(NY_OK, NyMutexOpen(strName.c_str(), &hSecond));
    EXPECT_EQ(1, IpcOpenDescriptors(IpcMutexPath(strName)));

    ASSERT_EQ(NY_OK, NyMutexWait(hFirst, NY_WAIT_INFINITE));
    EXPECT_EQ(NY_ERR_TIMEOUT, WaitFromOtherThread(hSecond, 20));
    ASSERT_EQ(NY_OK, NyMutexWait(hSecond, 0)) << "the holding thread may lock both";
    EXPECT_EQ(NY_OK, NyMutexRelease(hFirst));
    pid_t pid = Fork([&] {
        NY_MUTEX_HANDLE hChild = nullptr;
        IPC_CHILD_CHECK(NyMutexOpen(strName.c_str(), &hChild) == NY_OK, 1);
        uint32_t u4Result = NyMutexWait(hChild, 20);
        IPC_CHILD_CHECK(NyMutexDestroy(hChild) == NY_OK, 2);
        return u4Result == NY_ERR_TIMEOUT ? 0 : 3;
    });
    EXPECT_EQ(0, Join(pid)) << "still held through the second handle";
    ASSERT_EQ(NY_OK, NyMutexWait(hSecond, 0));
    EXPECT_EQ(NY_OK, NyMutexDestroy(hSecond)) << "destroyed while held twice";
    EXPECT_EQ(NY_OK, WaitFromOtherThread(hFirst, 100));
    EXPECT_EQ(NY_OK, NyMutexDestroy(hFirst));
}

// A child joins and holds the mutex: we are kept out, the kernel frees the lock when the child
// is killed, and its file is then abandoned: open fails, the next creator takes it over.
TEST_F(NyMutexTest, KilledOwnersLockIsFreedAndItsFileTakenOverByTheNextCreator) {
    std::string strName = NewName("mtx");
    NY_MUTEX_HANDLE hMutex = nullptr;
    EXPECT_EQ(NY_ERR_OBJECT_ABSENT, NyMutexOpen(strName.c_str(), &hMutex));
    EnBool enCreated = NY_FALSE;
    ASSERT_EQ(NY_OK, NyMutexCreateEx(strName.c_str(), &enCreated, &hMutex));
    EXPECT_EQ(NY_TRUE, enCreated);
    CIpcSignal sigLocked;
    pid_t pid = Fork([&] {
        NY_MUTEX_HANDLE hChild = nullptr;
        EnBool enChildCreated = NY_TRUE;
        IPC_CHILD_CHECK(NyMutexCreateEx(strName.c_str(), &enChildCreated, &hChild) == NY_OK, 1);
        IPC_CHILD_CHECK(enChildCreated == NY_FALSE, 2);
        IPC_CHILD_CHECK(NyMutexWait(hChild, NY_WAIT_INFINITE) == NY_OK, 3);
        sigLocked.Post();
        pause();
        return 0;
    });
    ASSERT_TRUE(sigLocked.Await(5000));
    EXPECT_EQ(NY_ERR_TIMEOUT, NyMutexWait(hMutex, 20));
    EXPECT_EQ(NY_OK, NyMutexDestroy(hMutex));
    EXPECT_TRUE(IpcPathExists(IpcMutexPath(strName))) << "the child still uses it";
    ASSERT_EQ(NY_OK, NyMutexOpen(strName.c_str(), &hMutex));
    EXPECT_EQ(NY_OK, NyMutexDestroy(hMutex));
    NyTestKillChild(pid);
    EXPECT_EQ(NY_ERR_OBJECT_ABSENT, NyMutexOpen(strName.c_str(), &hMutex));
    ASSERT_EQ(NY_OK, NyMutexCreateEx(strName.c_str(), &enCreated, &hMutex));
    EXPECT_EQ(NY_TRUE, enCreated);
    EXPECT_EQ(NY_OK, NyMutexWait(hMutex, 0)) << "the kernel freed the killed owner's lock";
    EXPECT_EQ(NY_OK, NyMutexRelease(hMutex));
    EXPECT_EQ(NY_OK, NyMutexDestroy(hMutex));
}

}  // namespace
