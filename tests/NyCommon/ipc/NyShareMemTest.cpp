// Shared-memory regions across processes: create, join and open; take-over and zero-filling of
// files left by killed processes; bounds; the region lock; removal with the last user.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <thread>
#include <vector>

#include "NyIpcTestSupport.h"
#include "ipc/NyIpcResult.h"
#include "ipc/NyShareMem.h"
#include "ipc/NyUnixShm.h"
#include "runtime/NyResult.h"
#include "support/NyTestProcess.h"

namespace {

class NyShareMemTest : public CIpcTest {
protected:
    // A child that creates the region, fills it with 0xAA and waits to be killed.
    pid_t ForkFillerAndKillIt(const std::string& strName, uint32_t u4Size) {
        CIpcSignal sigFilled;
        pid_t pid = Fork([&] {
            NY_SHM_HANDLE hShm = nullptr;
            IPC_CHILD_CHECK(NyShareMemOpen(strName.c_str(), u4Size, &hShm) == NY_OK, 1);
            std::vector<uint8_t> vFill(u4Size, 0xAA);
            IPC_CHILD_CHECK(NyShareMemWrite(hShm, 0, vFill.data(), u4Size) == NY_OK, 2);
            sigFilled.Post();
            pause();
            return 0;
        });
        EXPECT_TRUE(sigFilled.Await(5000));
        NyTestKillChild(pid);
        EXPECT_TRUE(IpcPathExists(IpcShmPath(strName))) << "a killed user cannot remove it";
        return pid;
    }
};

TEST_F(NyShareMemTest, CreateJoinAndOpenShareOneRegion) {
    std::string strName = NewName("shm");
    NY_SHM_HANDLE hShm = nullptr;
    uint32_t u4Created = 0;
    ASSERT_EQ(NY_OK, UnixShmOpen(strName.c_str(), 64, &hShm, &u4Created));
    EXPECT_EQ(1u, u4Created);
    uint32_t u4Size = 0;
    EXPECT_EQ(NY_OK, NyShareMemGetSize(hShm, &u4Size));
    EXPECT_EQ(64u, u4Size);

    pid_t pid = Fork([&] {
        NY_SHM_HANDLE hJoin = nullptr;
        NY_SHM_HANDLE hOpen = nullptr;
        uint32_t u4ChildCreated = 1;
        IPC_CHILD_CHECK(UnixShmOpen(strName.c_str(), 64, &hJoin, &u4ChildCreated) == NY_OK, 1);
        IPC_CHILD_CHECK(u4ChildCreated == 0, 2);
        IPC_CHILD_CHECK(NyShareMemWrite(hJoin, 60, "abcd", 4) == NY_OK, 3);
        IPC_CHILD_CHECK(NyShareMemOpen2(0, strName.c_str(), &hOpen) == NY_OK, 4);
        uint32_t u4OpenSize = 0;
        IPC_CHILD_CHECK(NyShareMemGetSize(hOpen, &u4OpenSize) == NY_OK && u4OpenSize == 64, 5);
        IPC_CHILD_CHECK(NyShareMemClose(hOpen) == NY_OK, 6);
        IPC_CHILD_CHECK(NyShareMemClose(hJoin) == NY_OK, 7);
        return 0;
    });
    EXPECT_EQ(0, Join(pid));
    char acRead[5] = {};
    EXPECT_EQ(NY_OK, NyShareMemRead(hShm, 60, acRead, 4));
    EXPECT_STREQ("abcd", acRead);
    void* pvData = nullptr;
    EXPECT_EQ(NY_OK, NyShareMemGetData(hShm, &pvData));
    EXPECT_EQ(0, memcmp(static_cast<char*>(pvData) + 60, "abcd", 4));
    EXPECT_EQ(NY_OK, NyShareMemClose(hShm));
}

TEST_F(NyShareMemTest, FileOfKilledUserIsTakenOverAndZeroFilled) {
    std::string strName = NewName("shm");
    ForkFillerAndKillIt(strName, 256);

    NY_SHM_HANDLE hShm = nullptr;
    uint32_t u4Created = 0;
    ASSERT_EQ(NY_OK, UnixShmOpen(strName.c_str(), 256, &hShm, &u4Created));
    EXPECT_EQ(1u, u4Created);
    std::vector<uint8_t> vRead(256, 0xFF);
    ASSERT_EQ(NY_OK, NyShareMemRead(hShm, 0, vRead.data(), 256));
    EXPECT_EQ(std::vector<uint8_t>(256, 0), vRead);
    EXPECT_EQ(NY_OK, NyShareMemClose(hShm));
}

TEST_F(NyShareMemTest, OpeningAFileOnlyDeadProcessesUsedFails) {
    std::string strName = NewName("shm");
    ForkFillerAndKillIt(strName, 32);
    NY_SHM_HANDLE hShm = nullptr;
    EXPECT_EQ(NY_ERR_OBJECT_ABSENT, NyShareMemOpen(strName.c_str(), 0, &hShm));
    EXPECT_EQ(nullptr, hShm);
    // Clean up the abandoned file the way the next creator would.
    ASSERT_EQ(NY_OK, NyShareMemOpen(strName.c_str(), 32, &hShm));
    EXPECT_EQ(NY_OK, NyShareMemClose(hShm));
}

TEST_F(NyShareMemTest, FileDisappearsWhenTheLastUserClosesAndNotBefore) {
    std::string strName = NewName("shm");
    std::string strPath = IpcShmPath(strName);
    NY_SHM_HANDLE hShm = nullptr;
    ASSERT_EQ(NY_OK, NyShareMemOpen(strName.c_str(), 16, &hShm));
    CIpcSignal sigOpened;
    CIpcSignal sigParentClosed;
    CIpcSignal sigChildClosed;
    pid_t pid = Fork([&] {
        NY_SHM_HANDLE hChild = nullptr;
        IPC_CHILD_CHECK(NyShareMemOpen(strName.c_str(), 0, &hChild) == NY_OK, 1);
        sigOpened.Post();
        IPC_CHILD_CHECK(sigParentClosed.Await(5000), 2);
        IPC_CHILD_CHECK(NyShareMemClose(hChild) == NY_OK, 3);
        sigChildClosed.Post();
        pause();
        return 0;
    });
    ASSERT_TRUE(sigOpened.Await(5000));
    EXPECT_EQ(NY_OK, NyShareMemClose(hShm));
    EXPECT_TRUE(IpcPathExists(strPath));
    sigParentClosed.Post();
    ASSERT_TRUE(sigChildClosed.Await(5000));
    EXPECT_FALSE(IpcPathExists(strPath)) << "removed by the last close, while the child lives on";
    NyTestKillChild(pid);
}

TEST_F(NyShareMemTest, SecondOpenInOneProcessSharesTheDescriptor) {
    std::string strName = NewName("shm");
    NY_SHM_HANDLE hFirst = nullptr;
    NY_SHM_HANDLE hSecond = nullptr;
    ASSERT_EQ(NY_OK, NyShareMemOpen(strName.c_str(), 8, &hFirst));
    uint32_t u4Created = 1;
    ASSERT_EQ(NY_OK, UnixShmOpen(strName.c_str(), 8, &hSecond, &u4Created));
    EXPECT_EQ(0u, u4Created);
    EXPECT_EQ(1, IpcOpenDescriptors(IpcShmPath(strName)));
    EXPECT_EQ(NY_OK, NyShareMemWrite(hFirst, 0, "x", 1));
    char ch = 0;
    EXPECT_EQ(NY_OK, NyShareMemRead(hSecond, 0, &ch, 1));
    EXPECT_EQ('x', ch);
    EXPECT_EQ(NY_OK, NyShareMemClose(hFirst));
    EXPECT_TRUE(IpcPathExists(IpcShmPath(strName))) << "the second handle still uses it";
    EXPECT_EQ(NY_OK, NyShareMemClose(hSecond));
}

TEST_F(NyShareMemTest, JoiningWithALargerSizeExtendsTheFile) {
    std::string strName = NewName("shm");
    NY_SHM_HANDLE hSmall = nullptr;
    ASSERT_EQ(NY_OK, NyShareMemOpen(strName.c_str(), 8, &hSmall));
    pid_t pid = Fork([&] {
        NY_SHM_HANDLE hLarge = nullptr;
        uint32_t u4Size = 0;
        IPC_CHILD_CHECK(NyShareMemOpen(strName.c_str(), 4096, &hLarge) == NY_OK, 1);
        IPC_CHILD_CHECK(NyShareMemGetSize(hLarge, &u4Size) == NY_OK && u4Size == 4096, 2);
        IPC_CHILD_CHECK(NyShareMemWrite(hLarge, 4095, "z", 1) == NY_OK, 3);
        IPC_CHILD_CHECK(NyShareMemClose(hLarge) == NY_OK, 4);
        return 0;
    });
    EXPECT_EQ(0, Join(pid));
    uint32_t u4Size = 0;
    EXPECT_EQ(NY_OK, NyShareMemGetSize(hSmall, &u4Size));
    EXPECT_EQ(8u, u4Size) << "an existing mapping keeps its size";
    EXPECT_EQ(NY_OK, NyShareMemClose(hSmall));
}

struct BoundsCase {
    uint32_t u4Offset;
    uint32_t u4Length;
    uint32_t u4Expected;
};

TEST_F(NyShareMemTest, ReadAndWriteStayInsideTheRegion) {
    const BoundsCase aCases[] = {
        {0, 100, NY_OK},
        {99, 1, NY_OK},
        {100, 0, NY_OK},
        {0, 101, NY_ERR_OUT_OF_MEMORY},
        {100, 1, NY_ERR_OUT_OF_MEMORY},
        {101, 0, NY_ERR_OUT_OF_MEMORY},
        {0xFFFFFFFF, 2, NY_ERR_OUT_OF_MEMORY},
        {1, 0xFFFFFFFF, NY_ERR_OUT_OF_MEMORY},
    };
    NY_SHM_HANDLE hShm = nullptr;
    ASSERT_EQ(NY_OK, NyShareMemOpen(NewName("shm").c_str(), 100, &hShm));
    std::vector<uint8_t> vBuf(128, 0x5A);
    for (const BoundsCase& c : aCases) {
        SCOPED_TRACE(::testing::Message() << "offset " << c.u4Offset << " length " << c.u4Length);
        EXPECT_EQ(c.u4Expected, NyShareMemWrite(hShm, c.u4Offset, vBuf.data(), c.u4Length));
        EXPECT_EQ(c.u4Expected, NyShareMemRead(hShm, c.u4Offset, vBuf.data(), c.u4Length));
    }
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyShareMemWrite(hShm, 0, nullptr, 1));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyShareMemRead(hShm, 0, nullptr, 1));
    EXPECT_EQ(NY_OK, NyShareMemClose(hShm));
}

TEST_F(NyShareMemTest, RegionLockIsRecursiveAndExcludesOtherProcesses) {
    std::string strName = NewName("shm");
    NY_SHM_HANDLE hShm = nullptr;
    ASSERT_EQ(NY_OK, NyShareMemOpen(strName.c_str(), 16, &hShm));
    ASSERT_EQ(NY_OK, NyShareMemLock(hShm));
    ASSERT_EQ(NY_OK, NyShareMemLockTimeout(hShm, 0));
    EXPECT_EQ(NY_OK, NyShareMemWrite(hShm, 0, "held", 4)) << "the holder may read and write";

    CIpcSignal sigTimedOut;
    pid_t pid = Fork([&] {
        NY_SHM_HANDLE hChild = nullptr;
        IPC_CHILD_CHECK(NyShareMemOpen(strName.c_str(), 0, &hChild) == NY_OK, 1);
        IPC_CHILD_CHECK(NyShareMemLockTimeout(hChild, 30) == NY_ERR_TIMEOUT, 2);
        sigTimedOut.Post();
        char acRead[5] = {};
        // Blocks until the parent lets go entirely.
        IPC_CHILD_CHECK(NyShareMemRead(hChild, 0, acRead, 4) == NY_OK, 3);
        IPC_CHILD_CHECK(strcmp(acRead, "done") == 0, 4);
        IPC_CHILD_CHECK(NyShareMemClose(hChild) == NY_OK, 5);
        return 0;
    });
    ASSERT_TRUE(sigTimedOut.Await(5000));
    EXPECT_EQ(NY_OK, NyShareMemUnlock(hShm));
    EXPECT_EQ(NY_OK, NyShareMemWrite(hShm, 0, "done", 4));
    EXPECT_EQ(NY_OK, NyShareMemUnlock(hShm));
    EXPECT_EQ(NY_ERR_NOT_OWNER, NyShareMemUnlock(hShm));
    EXPECT_EQ(0, Join(pid));
    EXPECT_EQ(NY_OK, NyShareMemClose(hShm));
}

TEST_F(NyShareMemTest, NamesWithSeparatorsMapToUnderscores) {
    std::string strBase = NewName("shm");
    std::string strName = "a/b\\c d" + strBase;
    NY_SHM_HANDLE hShm = nullptr;
    ASSERT_EQ(NY_OK, NyShareMemOpen(strName.c_str(), 4, &hShm));
    EXPECT_TRUE(IpcPathExists(IpcShmPath("a_b_c_d" + strBase)));
    EXPECT_EQ(NY_OK, NyShareMemClose(hShm));
    EXPECT_FALSE(IpcPathExists(IpcShmPath("a_b_c_d" + strBase)));
}

}  // namespace
