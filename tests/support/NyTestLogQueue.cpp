#include "support/NyTestLogQueue.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "log/CNyShmLogger.h"
#include "support/NyTestNames.h"

CNyTestLogQueue::CNyTestLogQueue(uint32_t u4Capacity)
    : m_strQueue("/" + NyTestUniqueName("NyTestLog")), m_u4Capacity(u4Capacity) {}

CNyTestLogQueue::~CNyTestLogQueue() {
    if (m_pvMapping != nullptr) {
        munmap(m_pvMapping, CLockfreeArrayQueue::CalcBufferLen(m_u4Capacity));
    }
    shm_unlink(m_strQueue.c_str());
}

void CNyTestLogQueue::MakeDefault() const {
    CNyShmLogger::SetDefaultTarget(m_strQueue.c_str(), m_u4Capacity);
}

CLockfreeArrayQueue* CNyTestLogQueue::View() {
    if (m_pView != nullptr) {
        return m_pView.get();
    }
    size_t cbLength = CLockfreeArrayQueue::CalcBufferLen(m_u4Capacity);
    int fd = shm_open(m_strQueue.c_str(), O_RDWR, 0);
    if (fd < 0) {
        return nullptr;
    }
    struct stat st = {};
    void* pv = MAP_FAILED;
    if (fstat(fd, &st) == 0 && static_cast<size_t>(st.st_size) == cbLength) {
        pv = mmap(nullptr, cbLength, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    }
    close(fd);
    if (pv == MAP_FAILED) {
        return nullptr;
    }
    std::unique_ptr<CLockfreeArrayQueue> pView(new CLockfreeArrayQueue());
    if (!pView->Initialize(pv, cbLength, m_u4Capacity, true)) {
        munmap(pv, cbLength);
        return nullptr;
    }
    m_pvMapping = pv;
    m_pView = std::move(pView);
    return m_pView.get();
}
