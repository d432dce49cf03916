// The file layer: one reference and descriptor per path per process, take-over of files left
// by dead users, timed record locks, and references inherited by forked children.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>

#include "NyIpcTestSupport.h"
#include "ipc/NyFileLock.h"
#include "ipc/NyFileRef.h"
#include "ipc/NyIpcResult.h"
#include "ipc/NyShareMem.h"
#include "os/NyOs.h"
#include "runtime/NyResult.h"
#include "support/NyTestProcess.h"

namespace {

class NyFileRefTest : public CIpcTest {
protected:
    // Path of a fresh file name; the directory exists afterwards (FileName2Path makes it).
    std::string NewPath() {
        std::string strName = NewName("file");
        char szPath[NY_IPC_PATH_SIZE];
        EXPECT_TRUE(FileName2Path(strName.c_str(), NY_FILE_KIND_SHM, szPath, sizeof(szPath)));
        return szPath;
    }
};

TEST_F(NyFileRefTest, TakeOverWithoutZeroFillKeepsTheContents) {
    std::string strPath = NewPath();
    CIpcSignal sigWritten;
    pid_t pid = Fork([&] {
        BlkFileRefTag* pRef = FileOpen(strPath.c_str(), 4, false, nullptr);
        IPC_CHILD_CHECK(pRef != nullptr, 1);
        IPC_CHILD_CHECK(pwrite(pRef->iFd, "keep", 4, 0) == 4, 2);
        sigWritten.Post();
        pause();
        return 0;
    });
    ASSERT_TRUE(sigWritten.Await(5000));
    NyTestKillChild(pid);
    uint32_t u4Created = 0;
    BlkFileRefTag* pRef = FileOpen(strPath.c_str(), 4, false, &u4Created);
    ASSERT_NE(nullptr, pRef);
    EXPECT_EQ(1u, u4Created);
    char acRead[5] = {};
    EXPECT_EQ(4, pread(pRef->iFd, acRead, 4, 0));
    EXPECT_STREQ("keep", acRead);
    EXPECT_EQ(NY_OK, FileClose(pRef));
}

TEST_F(NyFileRefTest, EmptyFileOfACreatorThatDiedIsTakenOver) {
    std::string strPath = NewPath();
    int iFd = open(strPath.c_str(), O_RDWR | O_CREAT | O_EXCL, 0666);
    ASSERT_GE(iFd, 0);
    close(iFd);
    EXPECT_EQ(nullptr, FileOpen(strPath.c_str(), 0, true, nullptr));
    uint32_t u4Created = 0;
    BlkFileRefTag* pRef = FileOpen(strPath.c_str(), 24, true, &u4Created);
    ASSERT_NE(nullptr, pRef);
    EXPECT_EQ(1u, u4Created);
    EXPECT_EQ(24u, pRef->u4Length);
    EXPECT_EQ(NY_OK, FileClose(pRef));
    EXPECT_FALSE(IpcPathExists(strPath));
}

TEST_F(NyFileRefTest, RecordLockTimeOutCountsAttemptsAgainstAnotherProcess) {
    std::string strPath = NewPath();
    BlkFileRefTag* pRef = FileOpen(strPath.c_str(), 4, true, nullptr);
    ASSERT_NE(nullptr, pRef);
    CIpcSignal sigLocked;
    pid_t pid = Fork([&] {
        int iFd = open(strPath.c_str(), O_RDWR);
        struct flock stLock = FileByteLockDesc(NY_FILE_MUTEX_BYTE, F_WRLCK);
        IPC_CHILD_CHECK(iFd >= 0 && FileRecordLockGet(iFd, &stLock, NY_WAIT_INFINITE) == NY_OK, 1);
        sigLocked.Post();
        pause();
        return 0;
    });
    ASSERT_TRUE(sigLocked.Await(5000));

    struct flock stWrite = FileByteLockDesc(NY_FILE_MUTEX_BYTE, F_WRLCK);
    unsigned long long u8Start = NyOsGetTickCount64();
    EXPECT_EQ(NY_ERR_TIMEOUT, FileRecordLockGet(pRef->iFd, &stWrite, 30));
    EXPECT_GE(NyOsGetTickCount64() - u8Start, 30u);
    EXPECT_EQ(NY_ERR_TIMEOUT, FileRecordLockGet(pRef->iFd, &stWrite, 0)) << "0 tries once";
    struct flock stRead = FileByteLockDesc(NY_FILE_MUTEX_BYTE, F_RDLCK);
    EXPECT_EQ(NY_ERR_TIMEOUT, FileRecordLockGet(pRef->iFd, &stRead, 5));
    struct flock stOtherByte = FileByteLockDesc(NY_FILE_SYNC_BYTE, F_WRLCK);
    EXPECT_EQ(NY_OK, FileRecordLockGet(pRef->iFd, &stOtherByte, 0));
    EXPECT_EQ(NY_OK, FileByteUnlock(pRef->iFd, NY_FILE_SYNC_BYTE));

    NyTestKillChild(pid);
    EXPECT_EQ(NY_OK, FileRecordLockGet(pRef->iFd, &stWrite, 0));
    EXPECT_EQ(NY_OK, FileByteUnlock(pRef->iFd, NY_FILE_MUTEX_BYTE));
    EXPECT_EQ(NY_OK, FileClose(pRef));
}

TEST_F(NyFileRefTest, ForkedChildUsesAndClosesInheritedHandlesWithoutRemovingTheFile) {
    std::string strName = NewName("shm");
    NY_SHM_HANDLE hShm = nullptr;
    ASSERT_EQ(NY_OK, NyShareMemOpen(strName.c_str(), 8, &hShm));
    ASSERT_EQ(NY_OK, NyShareMemLock(hShm));  // held across fork by this thread
    CIpcSignal sigTried;
    pid_t pid = Fork([&] {
        IPC_CHILD_CHECK(NyShareMemLockTimeout(hShm, 20) == NY_ERR_TIMEOUT, 1);
        sigTried.Post();
        IPC_CHILD_CHECK(NyShareMemWrite(hShm, 0, "child", 5) == NY_OK, 2);
        IPC_CHILD_CHECK(NyShareMemClose(hShm) == NY_OK, 3);
        IPC_CHILD_CHECK(IpcPathExists(IpcShmPath(strName)), 4);
        return 0;
    });
    ASSERT_TRUE(sigTried.Await(5000));
    EXPECT_EQ(NY_OK, NyShareMemUnlock(hShm));
    EXPECT_EQ(0, Join(pid));
    char acRead[6] = {};
    EXPECT_EQ(NY_OK, NyShareMemRead(hShm, 0, acRead, 5));
    EXPECT_STREQ("child", acRead);
    EXPECT_EQ(NY_OK, NyShareMemClose(hShm));
}

}  // namespace
