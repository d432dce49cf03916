#include "support/NyTestLogQueue.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "log/CNyShmLogger.h"
#include "support/NyTestNames.h"

namespace {
// Queue names are "/NyTestLog-<pid>-...": the pid tells whether the owner still runs.
constexpr const char* NY_TEST_LOG_PREFIX = "NyTestLog";
constexpr const char* NY_SHM_DIR = "/dev/shm";
}  // namespace

CNyTestLogQueue::CNyTestLogQueue(uint32_t u4Capacity)
    : m_strQueue("/" + NyTestUniqueName(NY_TEST_LOG_PREFIX)), m_u4Capacity(u4Capacity) {}

CNyTestLogQueue::~CNyTestLogQueue() {
    if (m_pvMapping != nullptr) {
        munmap(m_pvMapping, CLockfreeArrayQueue::CalcBufferLen(m_u4Capacity));
    }
    if (getpid() == m_pidOwner) {
        shm_unlink(m_strQueue.c_str());
    }
}

void CNyTestLogQueue::RemoveOrphans() {
    DIR* pDir = opendir(NY_SHM_DIR);
    if (pDir == nullptr) {
        return;
    }
    const std::string strPrefix = std::string(NY_TEST_LOG_PREFIX) + "-";
    while (struct dirent* pEntry = readdir(pDir)) {
        std::string strName = pEntry->d_name;
        if (strName.compare(0, strPrefix.size(), strPrefix) != 0) {
            continue;
        }
        long lPid = strtol(strName.c_str() + strPrefix.size(), nullptr, 10);
        if (lPid > 0 && kill(static_cast<pid_t>(lPid), 0) != 0 && errno == ESRCH) {
            shm_unlink(("/" + strName).c_str());
        }
    }
    closedir(pDir);
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
