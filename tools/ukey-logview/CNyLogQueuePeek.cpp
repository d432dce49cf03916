#include "CNyLogQueuePeek.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

CNyLogQueuePeek::~CNyLogQueuePeek() {
    m_queue.Finalize();
    if (m_pvMapping != nullptr) {
        munmap(m_pvMapping, m_cbMapping);
    }
}

bool CNyLogQueuePeek::Exists(const char* szQueueName) {
    int fd = shm_open(szQueueName, O_RDONLY, 0);
    if (fd < 0) {
        return false;
    }
    close(fd);
    return true;
}

bool CNyLogQueuePeek::Open(const char* szQueueName, uint32_t u4Capacity) {
    size_t cbLength = CLockfreeArrayQueue::CalcBufferLen(u4Capacity);
    int fd = shm_open(szQueueName, O_RDONLY, 0);
    if (fd < 0) {
        return false;
    }
    struct stat st = {};
    void* pv = MAP_FAILED;
    if (cbLength != 0 && fstat(fd, &st) == 0 && static_cast<size_t>(st.st_size) == cbLength) {
        pv = mmap(nullptr, cbLength, PROT_READ, MAP_SHARED, fd, 0);
    }
    close(fd);
    if (pv == MAP_FAILED) {
        return false;
    }
    if (!m_queue.Initialize(pv, cbLength, u4Capacity, true)) {
        munmap(pv, cbLength);
        return false;
    }
    m_pvMapping = pv;
    m_cbMapping = cbLength;
    return true;
}

unsigned int CNyLogQueuePeek::Read(tagBlkLogItem* pOut, unsigned int u4Max) {
    if (!m_bStarted) {
        m_u4Position = m_queue.ReadPosition();
        m_bStarted = true;
    }
    return m_queue.Peek(m_u4Position, pOut, u4Max);
}
