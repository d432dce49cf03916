// The per-process anchor: its name and words, counting of attachments, and recovery from
// anchors that dead processes left behind (killed children, an earlier process with our pid).
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "NyIpcTestSupport.h"
#include "ipc/NyFileTable.h"
#include "ipc/NyIpcAnchor.h"
#include "ipc/NyIpcName.h"
#include "ipc/NyShareMem.h"
#include "runtime/NyResult.h"
#include "support/NyTestProcess.h"

namespace {

class NyIpcAnchorTest : public CIpcTest {};

// Maps this process's anchor (made first when bCreate); null when there is none.
BlkIpcAnchorTag* MapOwnAnchor(bool bCreate = false) {
    char szName[NY_ANCHOR_NAME_SIZE];
    int iFd = GetSHDataName(szName, sizeof(szName))
                  ? shm_open(szName, O_RDWR | (bCreate ? O_CREAT : 0), 0666)
                  : -1;
    if (iFd < 0 || (bCreate && ftruncate(iFd, sizeof(BlkIpcAnchorTag)) != 0)) {
        return nullptr;
    }
    void* pv = mmap(nullptr, sizeof(BlkIpcAnchorTag), PROT_READ | PROT_WRITE, MAP_SHARED, iFd, 0);
    close(iFd);
    return pv == MAP_FAILED ? nullptr : static_cast<BlkIpcAnchorTag*>(pv);
}

uintptr_t AnchorTable(const BlkIpcAnchorTag* pAnchor) {
    uintptr_t uAddr = pAnchor->u4TableAddr;
#if UINTPTR_MAX > 0xFFFFFFFFu
    uAddr |= static_cast<uintptr_t>(pAnchor->u4TableAddrHigh) << 32;
#endif
    return uAddr;
}

// Writes an anchor under this process's name as an earlier process with our pid would have
// left it.
bool PlantAnchor(uint32_t u4State, uint32_t u4SpinLock, uintptr_t uTable) {
    BlkIpcAnchorTag* pAnchor = MapOwnAnchor(true);
    if (pAnchor == nullptr) {
        return false;
    }
    *pAnchor = BlkIpcAnchorTag{};
    pAnchor->u4Tag = NY_ANCHOR_TAG;
    pAnchor->u4State = u4State;
    pAnchor->u4RefCount = 5;
    pAnchor->u4SpinLock = u4SpinLock;
    pAnchor->u4TableAddr = static_cast<uint32_t>(uTable);
#if UINTPTR_MAX > 0xFFFFFFFFu
    pAnchor->u4TableAddrHigh = static_cast<uint32_t>(static_cast<uint64_t>(uTable) >> 32);
#endif
    pAnchor->u4Pid = static_cast<uint32_t>(getpid());
    munmap(pAnchor, sizeof(BlkIpcAnchorTag));
    return true;
}

TEST_F(NyIpcAnchorTest, NameHashesTheExecutablePathAndCarriesThePid) {
    char szExe[NY_IPC_PATH_SIZE] = {};
    ASSERT_GT(readlink("/proc/self/exe", szExe, sizeof(szExe) - 1), 0);
    char szExpected[NY_ANCHOR_NAME_SIZE];
    snprintf(szExpected, sizeof(szExpected), "/ny.%08x.%d", UnixName2Key(NY_KEY_KIND_NONE, szExe),
             static_cast<int>(getpid()));
    char szName[NY_ANCHOR_NAME_SIZE];
    ASSERT_TRUE(GetSHDataName(szName, sizeof(szName)));
    EXPECT_STREQ(szExpected, szName);
    EXPECT_FALSE(GetSHDataName(szName, 8));
}

// The anchor publishes this process's table; the last detach removes it, files still work
// while detached, and the next start attaches again.
TEST_F(NyIpcAnchorTest, AnchorPublishesTheTableAndLastDetachRemovesIt) {
    for (int iRound = 0; iRound < 2; ++iRound) {
        ASSERT_EQ(NY_OK, UnixIpcInit());
        ASSERT_EQ(NY_OK, UnixIpcInit()) << "a second start of the same copy is no new attachment";
        BlkIpcAnchorTag* pAnchor = MapOwnAnchor();
        ASSERT_NE(nullptr, pAnchor);
        EXPECT_EQ(NY_ANCHOR_TAG, pAnchor->u4Tag);
        EXPECT_EQ(NY_ANCHOR_STATE_READY, pAnchor->u4State);
        EXPECT_EQ(1u, pAnchor->u4RefCount);
        EXPECT_EQ(0u, pAnchor->u4SpinLock);
        EXPECT_EQ(static_cast<uint32_t>(getpid()), pAnchor->u4Pid);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(UnixIpcFileTable()), AnchorTable(pAnchor));
        munmap(pAnchor, sizeof(BlkIpcAnchorTag));
        ASSERT_EQ(NY_OK, UnixIpcDeinit());
        EXPECT_EQ(nullptr, MapOwnAnchor());
        NY_SHM_HANDLE hShm = nullptr;
        ASSERT_EQ(NY_OK, NyShareMemOpen(NewName("shm").c_str(), 4, &hShm)) << "detached";
        EXPECT_EQ(NY_OK, NyShareMemClose(hShm));
    }
    ASSERT_EQ(NY_OK, UnixIpcInit());
}

TEST_F(NyIpcAnchorTest, AnchorOfAnEarlierProcessWithOurPidIsReplaced) {
    // Ready with an unmapped or a null table, torn down half-way, spin lock left taken.
    const struct {
        uint32_t u4State, u4SpinLock;
        uintptr_t uTable;
    } aCases[] = {{NY_ANCHOR_STATE_READY, 0, 0x1000},
                  {NY_ANCHOR_STATE_READY, 0, 0},
                  {NY_ANCHOR_STATE_TEARDOWN, 0, 0x1000},
                  {NY_ANCHOR_STATE_READY, 1, 0x1000}};
    for (const auto& c : aCases) {
        // A forked child has no anchor yet; it plants the stale one under its own name.
        pid_t pid = Fork([&] {
            IPC_CHILD_CHECK(PlantAnchor(c.u4State, c.u4SpinLock, c.uTable), 1);
            IPC_CHILD_CHECK(UnixIpcInit() == NY_OK, 2);
            BlkIpcAnchorTag* pAnchor = MapOwnAnchor();
            IPC_CHILD_CHECK(pAnchor != nullptr, 3);
            IPC_CHILD_CHECK(pAnchor->u4State == NY_ANCHOR_STATE_READY, 4);
            IPC_CHILD_CHECK(pAnchor->u4RefCount == 1 && pAnchor->u4SpinLock == 0, 5);
            IPC_CHILD_CHECK(AnchorTable(pAnchor) == reinterpret_cast<uintptr_t>(UnixIpcFileTable()),
                            6);
            munmap(pAnchor, sizeof(BlkIpcAnchorTag));
            IPC_CHILD_CHECK(UnixIpcDeinit() == NY_OK, 7);
            IPC_CHILD_CHECK(MapOwnAnchor() == nullptr, 8);
            return 0;
        });
        EXPECT_EQ(0, Join(pid)) << c.u4State << " " << c.u4SpinLock << " " << c.uTable;
    }
}

TEST_F(NyIpcAnchorTest, AnchorsOfKilledProcessesAreRemovedByTheNextAttach) {
    CIpcSignal sigAttached;
    pid_t pid = Fork([&] {
        IPC_CHILD_CHECK(UnixIpcInit() == NY_OK, 1);
        sigAttached.Post();
        pause();
        return 0;
    });
    ASSERT_TRUE(sigAttached.Await(5000));
    NyTestKillChild(pid);
    char szOwn[NY_ANCHOR_NAME_SIZE];
    ASSERT_TRUE(GetSHDataName(szOwn, sizeof(szOwn)));
    std::string strChild =
        "/dev/shm" + std::string(szOwn, strrchr(szOwn, '.') + 1) + std::to_string(pid);
    ASSERT_TRUE(IpcPathExists(strChild));
    ASSERT_EQ(NY_OK, UnixIpcDeinit());
    ASSERT_EQ(NY_OK, UnixIpcInit());
    EXPECT_FALSE(IpcPathExists(strChild));
}

}  // namespace
