// Shared-memory regions across processes: create, join and open; take-over and zero-filling of
// files left by killed processes; bounds; the region lock; removal with the last user.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <vector>

#include "NyIpcTestSupport.h"
#include "ipc/NyIpcResult.h"
#include "ipc/NyShareMem.h"
#include "ipc/NyUnixShm.h"
#include "runtime/NyResult.h"
#include "support/NyTestProcess.h"

namespace {

class NyShareMemTest : public CIpcTest {};

TEST_F(NyShareMemTest, CreateJoinAndOpenShareOneRegionAndAnExistingMappingKeepsItsSize) {
    std::string strName = NewName("shm");
    NY_SHM_HANDLE hShm = nullptr;
    uint32_t u4Created = 0;
    ASSERT_EQ(NY_OK, UnixShmOpen(strName.c_str(), 64, &hShm, &u4Created));
    EXPECT_EQ(1u, u4Created);
    pid_t pid = Fork([&] {
        NY_SHM_HANDLE hJoin = nullptr;
        NY_SHM_HANDLE hOpen = nullptr;
        uint32_t u4ChildCreated = 1;
        uint32_t u4Size = 0;
        IPC_CHILD_CHECK(UnixShmOpen(strName.c_str(), 4096, &hJoin, &u4ChildCreated) == NY_OK, 1);
        IPC_CHILD_CHECK(u4ChildCreated == 0, 2);
        IPC_CHILD_CHECK(NyShareMemGetSize(hJoin, &u4Size) == NY_OK && u4Size == 4096, 3);
        IPC_CHILD_CHECK(NyShareMemWrite(hJoin, 4095, "z", 1) == NY_OK, 4);
        IPC_CHILD_CHECK(NyShareMemWrite(hJoin, 60, "abcd", 4) == NY_OK, 5);
        IPC_CHILD_CHECK(NyShareMemOpen2(0, strName.c_str(), &hOpen) == NY_OK, 6);
        IPC_CHILD_CHECK(NyShareMemClose(hOpen) == NY_OK, 7);
        IPC_CHILD_CHECK(NyShareMemClose(hJoin) == NY_OK, 8);
        return 0;
    });
    EXPECT_EQ(0, Join(pid));
    char acRead[5] = {};
    EXPECT_EQ(NY_OK, NyShareMemRead(hShm, 60, acRead, 4));
    EXPECT_STREQ("abcd", acRead);
    void* pvData = nullptr;
    EXPECT_EQ(NY_OK, NyShareMemGetData(hShm, &pvData));
    EXPECT_EQ(0, memcmp(static_cast<char*>(pvData) + 60, "abcd", 4));
    uint32_t u4Size = 0;
    EXPECT_EQ(NY_OK, NyShareMemGetSize(hShm, &u4Size));
    EXPECT_EQ(64u, u4Size);
    EXPECT_EQ(NY_OK, NyShareMemClose(hShm));
}

TEST_F(NyShareMemTest, FileOfKilledUserCannotBeOpenedButIsTakenOverAndZeroFilled) {
    std::string strName = NewName("shm");
    CIpcSignal sigFilled;
    pid_t pid = Fork([&] {
        NY_SHM_HANDLE hShm = nullptr;
        IPC_CHILD_CHECK(NyShareMemOpen(strName.c_str(), 256, &hShm) == NY_OK, 1);
        std::vector<uint8_t> vFill(256, 0xAA);
        IPC_CHILD_CHECK(NyShareMemWrite(hShm, 0, vFill.data(), 256) == NY_OK, 2);
        sigFilled.Post();
        pause();
        return 0;
    });
    ASSERT_TRUE(sigFilled.Await(5000));
    NyTestKillChild(pid);
    EXPECT_TRUE(IpcPathExists(IpcShmPath(strName))) << "a killed user cannot remove it";
    NY_SHM_HANDLE hShm = nullptr;
    EXPECT_EQ(NY_ERR_OBJECT_ABSENT, NyShareMemOpen(strName.c_str(), 0, &hShm));
    EXPECT_EQ(nullptr, hShm);
    uint32_t u4Created = 0;
    ASSERT_EQ(NY_OK, UnixShmOpen(strName.c_str(), 256, &hShm, &u4Created));
    EXPECT_EQ(1u, u4Created);
    std::vector<uint8_t> vRead(256, 0xFF);
    ASSERT_EQ(NY_OK, NyShareMemRead(hShm, 0, vRead.data(), 256));
    EXPECT_EQ(std::vector<uint8_t>(256, 0), vRead);
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

TEST_F(NyShareMemTest, ReadAndWriteStayInsideTheRegion) {
    const uint32_t E = NY_ERR_OUT_OF_MEMORY;
    const struct {
        uint32_t u4Offset, u4Length, u4Expected;
    } aCases[] = {{0, 100, NY_OK}, {99, 1, NY_OK}, {100, 0, NY_OK},    {0, 101, E},
                  {100, 1, E},     {101, 0, E},    {0xFFFFFFFF, 2, E}, {1, 0xFFFFFFFF, E}};
    NY_SHM_HANDLE hShm = nullptr;
    ASSERT_EQ(NY_OK, NyShareMemOpen(NewName("shm").c_str(), 100, &hShm));
    std::vector<uint8_t> vBuf(128, 0x5A);
    for (const auto& c : aCases) {
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

}  // namespace
