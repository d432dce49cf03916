#include "comm/CCommBeater.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <new>

#include "comm/CCommHeartBeat.h"
#include "os/NyThread.h"

namespace {

// The thread's time slice: a pass is a few microseconds of work per channel, and a beat that
// waits behind another thread's slice on a busy machine comes milliseconds late.
constexpr uint32_t BEATER_SLICE_US = 100;
// A channel due this soon beats in the current pass: channels then share passes instead of
// waking the thread each at its own moment (an early beat is still a beat).
constexpr uint64_t BEATER_EARLY_US = 2000;

}  // namespace

CCommBeater& CCommBeater::Instance() {
    // Lives as long as the process: channels may be stopped from static destructors.
    static CCommBeater* pInstance = [] {
        pthread_atfork([] { Instance().m_mtx.lock(); }, [] { Instance().m_mtx.unlock(); },
                       &CCommBeater::ForgetInChild);
        return new CCommBeater();
    }();
    return *pInstance;
}

// The child has only the thread that forked, which holds the lock (taken before the fork). The
// parent's channels are not the child's to beat, and its condition variable may count waiters
// that do not exist here.
void CCommBeater::ForgetInChild() {
    CCommBeater& self = Instance();
    self.m_vBeats.clear();
    self.m_bRunning = false;
    self.m_bWoken = false;
    new (self.m_pCv) std::condition_variable();  // made anew in place, not destroyed
    self.m_mtx.unlock();
}

bool CCommBeater::Add(CCommHeartBeat* pBeat) {
    std::lock_guard<std::mutex> lock(m_mtx);
    if (!m_bRunning) {
        pthread_t hThread;
        pthread_attr_t attr;
        pthread_attr_init(&attr);
        pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
        int iError = pthread_create(&hThread, &attr, &CCommBeater::ThreadProc, this);
        pthread_attr_destroy(&attr);
        if (iError != 0) {
            return false;
        }
        m_bRunning = true;
    }
    m_vBeats.push_back(pBeat);
    m_bWoken = true;
    m_pCv->notify_one();
    return true;
}

void CCommBeater::Remove(CCommHeartBeat* pBeat) {
    std::lock_guard<std::mutex> lock(m_mtx);
    m_vBeats.erase(std::remove(m_vBeats.begin(), m_vBeats.end(), pBeat), m_vBeats.end());
}

void CCommBeater::Wake() {
    {
        std::lock_guard<std::mutex> lock(m_mtx);
        m_bWoken = true;
    }
    m_pCv->notify_one();
}

void* CCommBeater::ThreadProc(void* pvArg) {
    NyThreadPreferShortSlice(BEATER_SLICE_US);
    static_cast<CCommBeater*>(pvArg)->Run();
    return nullptr;
}

void CCommBeater::Run() {
    std::unique_lock<std::mutex> lock(m_mtx);
    for (;;) {
        uint64_t u8Now = CCommHeartBeat::NowUs();
        uint64_t u8Next = BeatDue(u8Now);
        m_bWoken = false;
        u8Now = CCommHeartBeat::NowUs();
        if (u8Next > u8Now) {
            m_pCv->wait_for(lock, std::chrono::microseconds(u8Next - u8Now),
                            [this] { return m_bWoken; });
        }
    }
}

// One pass: every channel that is due (or nearly) beats; a channel whose event is gone is dropped.
// Returns when the next channel is due.
uint64_t CCommBeater::BeatDue(uint64_t u8Now) {
    uint64_t u8Next = u8Now + COMM_HEARTBEAT_PERIOD_MS * 1000;
    for (auto it = m_vBeats.begin(); it != m_vBeats.end();) {
        uint64_t u8Due = (*it)->BeatIfDue(u8Now, BEATER_EARLY_US);
        if (u8Due == 0) {
            it = m_vBeats.erase(it);
            continue;
        }
        u8Next = std::min(u8Next, u8Due);
        ++it;
    }
    return u8Next;
}
