#include "log/CNyShmLogger.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <new>

#include "ipc/NyMutex.h"
#include "log/NyLog.h"
#include "os/NyOs.h"
#include "runtime/NySafe.h"

namespace {

constexpr mode_t NY_SHMLOG_MODE = 0666;

constexpr const char* NY_SHMLOG_MUTEX_PREFIX = "{NyMutexForShmLog";
constexpr const char* NY_SHMLOG_MUTEX_SUFFIX = "}";

char m_szDefaultQueue[NY_SHMLOG_NAME_SIZE] = {};
uint32_t m_u4DefaultCapacity = 0;

void MutexNameFor(const char* szQueueName, char* szMutex, size_t cchMutex) {
    if (strcmp(szQueueName, NY_SHMLOG_QUEUE_NAME) == 0) {
        NyStrCopy(szMutex, cchMutex, NY_SHMLOG_MUTEX_NAME);
        return;
    }
    NyStrPrintf(szMutex, cchMutex, "%s%s%s", NY_SHMLOG_MUTEX_PREFIX, szQueueName,
                NY_SHMLOG_MUTEX_SUFFIX);
}

// Opens the queue object: the existing one if it has exactly the expected length (anything else
// is not ours, or its creator has not sized it yet), else a new one of that length.
int OpenQueueObject(const char* szName, size_t cbLength, bool& bExisting) {
    int fd = shm_open(szName, O_RDWR, NY_SHMLOG_MODE);
    if (fd >= 0) {
        struct stat st = {};
        bExisting = true;
        if (fstat(fd, &st) != 0 || static_cast<size_t>(st.st_size) != cbLength) {
            close(fd);
            return -1;
        }
        return fd;
    }
    bExisting = false;
    fd = shm_open(szName, O_RDWR | O_CREAT | O_EXCL, NY_SHMLOG_MODE);
    if (fd < 0) {
        return -1;  // lost the creation race: not connected this time
    }
    fchmod(fd, NY_SHMLOG_MODE);
    if (ftruncate(fd, static_cast<off_t>(cbLength)) != 0) {
        close(fd);
        shm_unlink(szName);
        return -1;
    }
    return fd;
}

}  // namespace

CNyShmLogger::CNyShmLogger()
    : CNyShmLogger(m_szDefaultQueue[0] != '\0' ? m_szDefaultQueue : NY_SHMLOG_QUEUE_NAME,
                   m_szDefaultQueue[0] != '\0' ? m_u4DefaultCapacity : NY_SHMLOG_CAPACITY) {}

CNyShmLogger::CNyShmLogger(const char* szQueueName, uint32_t u4Capacity)
    : m_u4Capacity(u4Capacity) {
    NyStrCopy(m_szQueueName, sizeof(m_szQueueName), szQueueName);
    char szMutex[NY_SHMLOG_NAME_SIZE + 32] = {};
    MutexNameFor(m_szQueueName, szMutex, sizeof(szMutex));
    NyMutexCreate(szMutex, &m_hMutex);
    m_pQueue = new (std::nothrow) CLockfreeArrayQueue();
}

CNyShmLogger::~CNyShmLogger() {
    Disconnect();
    if (m_hMutex != nullptr) {
        NyMutexDestroy(m_hMutex);
    }
    delete m_pQueue;
}

void CNyShmLogger::SetDefaultTarget(const char* szQueueName, uint32_t u4Capacity) {
    if (szQueueName == nullptr) {
        m_szDefaultQueue[0] = '\0';
        m_u4DefaultCapacity = 0;
        return;
    }
    NyStrCopy(m_szDefaultQueue, sizeof(m_szDefaultQueue), szQueueName);
    m_u4DefaultCapacity = u4Capacity;
}

bool CNyShmLogger::Connect(bool bListen) {
    if (m_pQueue == nullptr) {
        return false;
    }
    uint32_t u4Result = NyMutexWait(m_hMutex, NY_WAIT_INFINITE);
    if (u4Result != 0) {
        NY_LOG_RESULT(u4Result);
        return false;
    }
    bool bConnected = m_u1Connected != 0 || Attach();
    if (bConnected && m_u1Connected == 0) {
        if (bListen && m_pQueue->AddConsumerListeningCount()) {
            m_u1Listening = 1;
        }
        m_u1Connected = 1;
    }
    NyMutexRelease(m_hMutex);
    return bConnected;
}

bool CNyShmLogger::Attach() {
    size_t cbLength = CLockfreeArrayQueue::CalcBufferLen(m_u4Capacity);
    bool bExisting = false;
    if (m_u4Capacity < NY_SHMLOG_MIN_CAPACITY || cbLength == 0) {
        return false;
    }
    int fd = OpenQueueObject(m_szQueueName, cbLength, bExisting);
    if (fd < 0) {
        return false;
    }
    void* pv = mmap(nullptr, cbLength, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    close(fd);
    if (pv == MAP_FAILED) {
        return false;
    }
    if (!m_pQueue->Initialize(pv, cbLength, m_u4Capacity, bExisting)) {
        munmap(pv, cbLength);
        return false;
    }
    return true;
}

bool CNyShmLogger::Disconnect() {
    if (m_u1Connected == 0) {
        return false;
    }
    // Detaching is process-local apart from the listening count, which is atomic: go on even
    // if the mutex cannot be had.
    uint32_t u4Result = NyMutexWait(m_hMutex, NY_WAIT_INFINITE);
    if (u4Result != 0) {
        NY_LOG_RESULT(u4Result);
    }
    if (m_u1Listening != 0) {
        m_pQueue->SubConsumerListeningCount();
    }
    m_pQueue->Finalize();
    m_u1Listening = 0;
    m_u1Connected = 0;
    if (u4Result == 0) {
        NyMutexRelease(m_hMutex);
    }
    return true;
}

bool CNyShmLogger::IsConnect() const {
    return m_pQueue != nullptr && m_u1Connected != 0;
}

bool CNyShmLogger::SetLogItem(const tagBlkLogItem& blkItem) {
    if (!IsConnect()) {
        return false;
    }
    uint32_t u4Heartbeat = m_pQueue->GetConsumerHeartbeatCount();
    uint32_t u4Stalls = 0;
    for (;;) {
        int32_t i4Result = m_pQueue->Push(blkItem);
        if (i4Result != NY_LFQ_FULL) {
            return i4Result == NY_LFQ_OK;
        }
        if (m_pQueue->GetConsumerListeningCount() == 0) {
            m_pQueue->Discard(NY_SHMLOG_DISCARD_ON_FULL);
        } else {
            OnFullWithListener(u4Heartbeat, u4Stalls);
        }
    }
}

// A listener that beats is draining: wait for it. One whose heartbeat stands still for about
// 100 ms is taken for dead: make room and stop counting it.
void CNyShmLogger::OnFullWithListener(uint32_t& u4Heartbeat, uint32_t& u4Stalls) {
    uint32_t u4Now = m_pQueue->GetConsumerHeartbeatCount();
    if (u4Now != u4Heartbeat) {
        sched_yield();
        u4Heartbeat = u4Now;
        u4Stalls = 0;
        return;
    }
    if (++u4Stalls < NY_SHMLOG_STALL_LIMIT) {
        NyOsSleep(1);
        return;
    }
    m_pQueue->Discard(NY_SHMLOG_DISCARD_ON_FULL);
    m_pQueue->ResetConsumerListeningCount();
    u4Stalls = 0;
}

unsigned int CNyShmLogger::GetLogItem(tagBlkLogItem* pOut, unsigned int u4Max) {
    if (!IsConnect()) {
        return 0;
    }
    m_pQueue->AddConsumerHeartbeatCount();
    unsigned int u4Count = u4Max;
    return m_pQueue->Pop(pOut, u4Count) == NY_LFQ_OK ? u4Count : 0;
}

bool CNyShmLogger::DiscardLog(unsigned int u4Count) {
    if (!IsConnect()) {
        return false;
    }
    m_pQueue->AddConsumerHeartbeatCount();
    return m_pQueue->Discard(u4Count == 0 ? m_u4Capacity : u4Count) == 1;
}

void CNyShmLogger::SetHeartbeatForViewer() {
    if (IsConnect()) {
        m_pQueue->AddConsumerHeartbeatCount();
    }
}
