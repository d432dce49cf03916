#include "SessionChannelPool.h"

#include <chrono>

#include "log/NyLog.h"
#include "os/NyUuid.h"
#include "runtime/NyResult.h"
#include "session/NySessionChannel.h"

namespace {

// A channel that could not be opened is tried again after this long, not at once.
constexpr uint32_t POOL_RETRY_MS = 100;

}  // namespace

uint32_t OpenFreshSessionChannel(std::string* pstrName, NY_COMM_HANDLE* phSession) {
    char szGuid[256] = {};
    uint32_t u4Result = NyGenUuid(szGuid, sizeof(szGuid));
    if (u4Result != NY_OK) {
        NY_LOG_RESULT(u4Result);
        return u4Result;
    }
    BlkCommInitParamTag blkInit;
    if (!NySessionFillInitParam(szGuid, &blkInit)) {
        NY_LOG(LOG_ERROR,
               "CUiServerExe::StartNewSession()-> szGuid != m_szSessionName!!!, Guid=[%s], "
               "m_szSessionName=[%s]",
               szGuid, blkInit.blkShm.szName);
        return NY_ERR_BAD_ARGUMENT;
    }
    u4Result = NyCommConnectAsServer(&blkInit, phSession);
    if (u4Result != NY_OK) {
        NY_LOG_RESULT(u4Result);
        return u4Result;
    }
    pstrName->assign(szGuid);
    return NY_OK;
}

CSessionChannelPool::CSessionChannelPool(size_t cReady,
                                         std::function<void(const std::string&)> fnOpened)
    : m_cReady(cReady), m_fnOpened(std::move(fnOpened)) {}

CSessionChannelPool::~CSessionChannelPool() {
    Close();
}

void CSessionChannelPool::Start() {
    std::lock_guard<std::mutex> lock(m_mtx);
    if (!m_thread.joinable() && !m_bStop) {
        m_thread = std::thread(&CSessionChannelPool::Fill, this);
    }
}

bool CSessionChannelPool::Take(std::string* pstrName, NY_COMM_HANDLE* phSession) {
    std::lock_guard<std::mutex> lock(m_mtx);
    for (auto it = m_vPooled.begin(); it != m_vPooled.end(); ++it) {
        if (it->bReady) {
            *pstrName = it->strName;
            *phSession = it->hSession;
            m_vPooled.erase(it);
            m_cv.notify_all();
            return true;
        }
    }
    return false;
}

void CSessionChannelPool::AppendNames(std::vector<std::string>* pvNames) const {
    std::lock_guard<std::mutex> lock(m_mtx);
    for (const BlkPooledTag& blkPooled : m_vPooled) {
        pvNames->push_back(blkPooled.strName);
    }
}

void CSessionChannelPool::Close() {
    std::vector<BlkPooledTag> vClose;
    {
        std::lock_guard<std::mutex> lock(m_mtx);
        m_bStop = true;
    }
    m_cv.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
    {
        std::lock_guard<std::mutex> lock(m_mtx);
        vClose.swap(m_vPooled);
    }
    for (const BlkPooledTag& blkPooled : vClose) {
        NyCommDisconnect(blkPooled.hSession);
    }
}

void CSessionChannelPool::Fill() {
    std::unique_lock<std::mutex> lock(m_mtx);
    while (!m_bStop) {
        if (m_vPooled.size() >= m_cReady) {
            m_cv.wait(lock);
            continue;
        }
        lock.unlock();
        bool bOpened = OpenOne();
        lock.lock();
        if (!bOpened && !m_bStop) {
            m_cv.wait_for(lock, std::chrono::milliseconds(POOL_RETRY_MS));
        }
    }
}

// Listed before it is recorded, ready after: a record rewritten meanwhile from AppendNames
// already holds the name.
bool CSessionChannelPool::OpenOne() {
    BlkPooledTag blkPooled = {std::string(), nullptr, false};
    if (OpenFreshSessionChannel(&blkPooled.strName, &blkPooled.hSession) != NY_OK) {
        return false;
    }
    {
        std::lock_guard<std::mutex> lock(m_mtx);
        m_vPooled.push_back(blkPooled);
    }
    m_fnOpened(blkPooled.strName);
    std::lock_guard<std::mutex> lock(m_mtx);
    for (BlkPooledTag& blkEntry : m_vPooled) {
        blkEntry.bReady = blkEntry.bReady || blkEntry.strName == blkPooled.strName;
    }
    return true;
}
