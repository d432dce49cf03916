#include "ipc/NyIpcAnchor.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ipc/NyFileTable.h"
#include "ipc/NyIpcName.h"
#include "log/NyLog.h"
#include "os/NyAtomic.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"

namespace {

constexpr uint32_t NY_ANCHOR_SIZE_WAITS = 100;  // 10 ms steps for a creator to size the object
constexpr uint32_t NY_ANCHOR_SPIN_TRIES = 500;  // 10 ms steps for the spin lock
constexpr uint32_t NY_ANCHOR_SPIN_STALE = 100;  // after this many, a stale holder is overridden
constexpr uint32_t NY_ANCHOR_CREATE_TRIES = 3;

// This copy's attachment. Constant-initialised, so it is valid before any static constructor.
pthread_mutex_t m_mtxAnchor = PTHREAD_MUTEX_INITIALIZER;
BlkIpcAnchorTag* m_pAnchor = nullptr;
BlkFileTableTag* m_pTable = nullptr;
pthread_once_t m_onceFork = PTHREAD_ONCE_INIT;

uintptr_t StoredTable(const BlkIpcAnchorTag* pAnchor) {
    uintptr_t uAddr = pAnchor->u4TableAddr;
#if UINTPTR_MAX > 0xFFFFFFFFu
    uAddr |= static_cast<uintptr_t>(pAnchor->u4TableAddrHigh) << 32;
#endif
    return uAddr;
}

void StoreTable(BlkIpcAnchorTag* pAnchor, BlkFileTableTag* pTable) {
    uintptr_t uAddr = reinterpret_cast<uintptr_t>(pTable);
    pAnchor->u4TableAddr = static_cast<uint32_t>(uAddr);
#if UINTPTR_MAX > 0xFFFFFFFFu
    pAnchor->u4TableAddrHigh = static_cast<uint32_t>(uAddr >> 32);
#endif
}

// Reads memory that may not be mapped without faulting: the kernel copies it into a pipe and
// reports EFAULT for a bad address.
bool ReadSafely(uintptr_t uAddr, void* pvOut, size_t cb) {
    int aiPipe[2];
    if (pipe2(aiPipe, O_CLOEXEC) != 0) {
        return false;
    }
    bool bOk =
        write(aiPipe[1], reinterpret_cast<const void*>(uAddr), cb) == static_cast<ssize_t>(cb) &&
        read(aiPipe[0], pvOut, cb) == static_cast<ssize_t>(cb);
    close(aiPipe[0]);
    close(aiPipe[1]);
    return bOk;
}

// An anchor left by an earlier process with this pid (killed, or replaced by exec) stores an
// address that means nothing here; only a live table of this process carries our tag, points to
// itself and names our pid.
bool StoredTableIsLive(const BlkIpcAnchorTag* pAnchor) {
    uintptr_t uAddr = StoredTable(pAnchor);
    BlkFileTableTag stCopy;
    if (uAddr == 0 || pAnchor->u4Pid != static_cast<uint32_t>(getpid()) ||
        !ReadSafely(uAddr, &stCopy, sizeof(stCopy))) {
        return false;
    }
    return stCopy.u4Tag == NY_FILE_TABLE_TAG &&
           reinterpret_cast<uintptr_t>(stCopy.pSelf) == uAddr &&
           stCopy.u4Pid == static_cast<uint32_t>(getpid());
}

uint32_t ExePathHash() {
    char szExe[NY_IPC_PATH_SIZE] = {};
    ssize_t cch = readlink("/proc/self/exe", szExe, sizeof(szExe) - 1);
    if (cch <= 0) {
        return 0;
    }
    szExe[cch] = '\0';
    return UnixName2Key(NY_KEY_KIND_NONE, szExe);
}

// Anchors of dead processes of this executable would stay in /dev/shm forever: remove them.
void RemoveDeadAnchors() {
    uint32_t u4Hash = ExePathHash();
    char szPrefix[32];
    snprintf(szPrefix, sizeof(szPrefix), "ny.%08x.", u4Hash);
    DIR* pDir = opendir("/dev/shm");
    if (pDir == nullptr) {
        return;
    }
    size_t cchPrefix = strlen(szPrefix);
    while (struct dirent* pEntry = readdir(pDir)) {
        if (strncmp(pEntry->d_name, szPrefix, cchPrefix) != 0) {
            continue;
        }
        char* pEnd = nullptr;
        long lPid = strtol(pEntry->d_name + cchPrefix, &pEnd, 10);
        if (lPid > 0 && *pEnd == '\0' && lPid != getpid() && kill(lPid, 0) != 0 && errno == ESRCH) {
            char szName[NY_ANCHOR_NAME_SIZE];
            if (NyStrPrintf(szName, sizeof(szName), "/ny.%08x.%ld", u4Hash, lPid)) {
                shm_unlink(szName);
            }
        }
    }
    closedir(pDir);
}

bool WaitForSize(int iFd) {
    for (uint32_t i = 0; i < NY_ANCHOR_SIZE_WAITS; ++i) {
        struct stat st = {};
        if (fstat(iFd, &st) != 0) {
            return false;
        }
        if (st.st_size >= static_cast<off_t>(sizeof(BlkIpcAnchorTag))) {
            return true;
        }
        usleep(10000);
    }
    return false;
}

// Creates the anchor object, or opens the existing one once its creator has sized it. An object
// that never gets a size (its creator died half-way) is removed and created again.
int OpenAnchorObject(const char* szName) {
    for (uint32_t i = 0; i < NY_ANCHOR_CREATE_TRIES; ++i) {
        int iFd = shm_open(szName, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (iFd >= 0) {
            fchmod(iFd, 0666);
            if (ftruncate(iFd, sizeof(BlkIpcAnchorTag)) == 0) {
                return iFd;
            }
            close(iFd);
            shm_unlink(szName);
            return -1;
        }
        if (errno != EEXIST) {
            return -1;
        }
        iFd = shm_open(szName, O_RDWR | O_CLOEXEC, 0666);
        if (iFd >= 0 && WaitForSize(iFd)) {
            return iFd;
        }
        if (iFd >= 0) {
            close(iFd);
        }
        shm_unlink(szName);
    }
    return -1;
}

BlkIpcAnchorTag* MapAnchor(const char* szName) {
    int iFd = OpenAnchorObject(szName);
    if (iFd < 0) {
        return nullptr;
    }
    void* pv = mmap(nullptr, sizeof(BlkIpcAnchorTag), PROT_READ | PROT_WRITE, MAP_SHARED, iFd, 0);
    close(iFd);
    return pv == MAP_FAILED ? nullptr : static_cast<BlkIpcAnchorTag*>(pv);
}

// Spin lock of the anchor. Gives up while another copy tears the anchor down; a lock that stays
// taken although no live table is stored was left by a dead process and is overridden.
bool LockAnchor(BlkIpcAnchorTag* pAnchor) {
    for (uint32_t i = 0; i < NY_ANCHOR_SPIN_TRIES; ++i) {
        if (NyAtomicCAS32(&pAnchor->u4SpinLock, 0, 1)) {
            return true;
        }
        bool bLive = StoredTableIsLive(pAnchor);
        if (pAnchor->u4State == NY_ANCHOR_STATE_TEARDOWN && bLive) {
            return false;
        }
        if (i >= NY_ANCHOR_SPIN_STALE && !bLive) {
            pAnchor->u4SpinLock = 1;
            return true;
        }
        usleep(10000);
    }
    return false;
}

void UnlockAnchor(BlkIpcAnchorTag* pAnchor) {
    NyAtomicCAS32(&pAnchor->u4SpinLock, 1, 0);
}

void ForkPrepare() {
    pthread_mutex_lock(&m_mtxAnchor);
    if (m_pTable != nullptr) {
        FileTableForkPrepare(m_pTable);
    }
}

void ForkParent() {
    if (m_pTable != nullptr) {
        FileTableForkParent(m_pTable);
    }
    pthread_mutex_unlock(&m_mtxAnchor);
}

// The child keeps the inherited table but not the parent's anchor: it is another process, and
// creates an anchor of its own only if it attaches again.
void ForkChild() {
    m_mtxAnchor = PTHREAD_MUTEX_INITIALIZER;
    if (m_pTable != nullptr) {
        FileTableForkChild(m_pTable);
    }
    if (m_pAnchor != nullptr) {
        munmap(m_pAnchor, sizeof(BlkIpcAnchorTag));
        m_pAnchor = nullptr;
    }
}

void RegisterForkHandlers() {
    pthread_atfork(ForkPrepare, ForkParent, ForkChild);
}

// Under the anchor's spin lock: join a live table, or (new or stale anchor) publish ours.
BlkFileTableTag* JoinOrPublish(BlkIpcAnchorTag* pAnchor) {
    if (pAnchor->u4State == NY_ANCHOR_STATE_READY && StoredTableIsLive(pAnchor)) {
        ++pAnchor->u4RefCount;
        return reinterpret_cast<BlkFileTableTag*>(StoredTable(pAnchor));
    }
    BlkFileTableTag* pTable = m_pTable != nullptr ? m_pTable : FileTableCreate();
    if (pTable != nullptr) {
        pAnchor->u4Tag = NY_ANCHOR_TAG;
        pAnchor->u4State = NY_ANCHOR_STATE_READY;
        pAnchor->u4RefCount = 1;
        StoreTable(pAnchor, pTable);
        pAnchor->u4Pid = static_cast<uint32_t>(getpid());
    }
    return pTable;
}

uint32_t SHDataInit() {
    char szName[NY_ANCHOR_NAME_SIZE];
    if (!GetSHDataName(szName, sizeof(szName))) {
        return NY_ERR_UNEXPECTED;
    }
    RemoveDeadAnchors();
    BlkIpcAnchorTag* pAnchor = MapAnchor(szName);
    if (pAnchor == nullptr) {
        return NY_ERR_UNEXPECTED;
    }
    BlkFileTableTag* pTable = nullptr;
    if (LockAnchor(pAnchor)) {
        pTable = JoinOrPublish(pAnchor);
        UnlockAnchor(pAnchor);
    }
    if (pTable == nullptr) {
        munmap(pAnchor, sizeof(BlkIpcAnchorTag));
        return NY_ERR_UNEXPECTED;
    }
    m_pAnchor = pAnchor;
    __atomic_store_n(&m_pTable, pTable, __ATOMIC_RELEASE);
    pthread_once(&m_onceFork, RegisterForkHandlers);
    return NY_OK;
}

// Detach; the last copy marks the anchor as torn down, removes it and frees an empty table
// (a table that still holds open files stays with this copy until they are closed).
void SHDataDeinit() {
    bool bLast = false;
    if (LockAnchor(m_pAnchor)) {
        bLast = m_pAnchor->u4RefCount <= 1;
        if (bLast) {
            m_pAnchor->u4State = NY_ANCHOR_STATE_TEARDOWN;
        } else {
            --m_pAnchor->u4RefCount;
        }
        UnlockAnchor(m_pAnchor);
    }
    if (bLast) {
        char szName[NY_ANCHOR_NAME_SIZE];
        if (GetSHDataName(szName, sizeof(szName))) {
            shm_unlink(szName);
        }
        if (FileTableDestroy(m_pTable)) {
            __atomic_store_n(&m_pTable, nullptr, __ATOMIC_RELEASE);
        }
    } else {
        __atomic_store_n(&m_pTable, nullptr, __ATOMIC_RELEASE);
    }
    munmap(m_pAnchor, sizeof(BlkIpcAnchorTag));
    m_pAnchor = nullptr;
}

// Every process attaches at load, before it can fork, so that forked children share the
// parent's table instead of each making an anchor of its own; a normal exit detaches.
struct CIpcAutoAttach {
    CIpcAutoAttach() { UnixIpcInit(); }
    ~CIpcAutoAttach() { UnixIpcDeinit(); }
};
CIpcAutoAttach m_autoAttach;

}  // namespace

bool GetSHDataName(char* szName, uint32_t cchName) {
    if (szName == nullptr) {
        return false;
    }
    int cch = snprintf(szName, cchName, "/ny.%08x.%d", ExePathHash(), static_cast<int>(getpid()));
    return cch > 0 && static_cast<uint32_t>(cch) < cchName;
}

uint32_t UnixIpcInit() {
    pthread_mutex_lock(&m_mtxAnchor);
    uint32_t u4Result = m_pAnchor != nullptr ? NY_OK : SHDataInit();
    pthread_mutex_unlock(&m_mtxAnchor);
    if (u4Result != NY_OK) {
        NY_LOG(LOG_ERROR, "u4Result = %08X", u4Result);
    }
    return u4Result;
}

uint32_t UnixIpcDeinit() {
    pthread_mutex_lock(&m_mtxAnchor);
    if (m_pAnchor != nullptr) {
        SHDataDeinit();
    } else if (m_pTable != nullptr && FileTableDestroy(m_pTable)) {
        __atomic_store_n(&m_pTable, nullptr, __ATOMIC_RELEASE);
    }
    pthread_mutex_unlock(&m_mtxAnchor);
    return NY_OK;
}

BlkFileTableTag* UnixIpcFileTable() {
    BlkFileTableTag* pTable = __atomic_load_n(&m_pTable, __ATOMIC_ACQUIRE);
    if (pTable == nullptr && UnixIpcInit() == NY_OK) {
        pTable = __atomic_load_n(&m_pTable, __ATOMIC_ACQUIRE);
    }
    return pTable;
}
