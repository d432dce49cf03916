#include "HeldDialog.h"

#include <pthread.h>

#include <condition_variable>
#include <mutex>
#include <thread>

#include "os/NyOs.h"
#include "runtime/NyResult.h"

namespace {

// A stop can be lost when it arrives before the dialog has entered its main loop, so it is
// repeated at this period until the run has returned.
constexpr uint32_t STOP_REPEAT_MS = 100;
constexpr uint32_t RUN_POLL_MS = 1;

}  // namespace

CHeldDialog::CHeldDialog(std::unique_ptr<CConfig> pConfig, std::unique_ptr<GUIBase> pDialog)
    : m_pConfig(std::move(pConfig)), m_pDialog(std::move(pDialog)) {}

CHeldDialog::~CHeldDialog() {
    if (m_pDialog != nullptr) {
        StopAndWaitForRun();
    }
}

uint32_t CHeldDialog::RunHere(const std::function<bool()>& fnClientAlive, uint32_t u4WatchMs) {
    std::mutex mtxDone;
    std::condition_variable cvDone;
    bool bDone = false;
    std::thread watcher([&] {
        std::unique_lock<std::mutex> lock(mtxDone);
        bool bClientGone = false;
        while (
            !cvDone.wait_for(lock, std::chrono::milliseconds(u4WatchMs), [&] { return bDone; })) {
            // The check may take a while (it probes the channel): not under the lock.
            lock.unlock();
            bClientGone = bClientGone || !fnClientAlive();
            if (bClientGone) {
                // Repeated until the run returns: a stop that comes before the main loop runs
                // may be lost.
                m_pDialog->stop();
            }
            lock.lock();
        }
    });
    uint32_t u4Result = m_pDialog->run();
    {
        std::lock_guard<std::mutex> lock(mtxDone);
        bDone = true;
    }
    cvDone.notify_one();
    watcher.join();
    return u4Result;
}

uint32_t CHeldDialog::StartThread(PFN_NY_THREAD_ENTRY pfnEntry) {
    m_bRunning.store(true);
    NY_THREAD_HANDLE hThread = nullptr;
    uint32_t u4Result = NyThreadBegin(pfnEntry, this, &hThread);
    if (u4Result != NY_OK) {
        m_bRunning.store(false);
        return u4Result;
    }
    // The thread detaches itself; only the handle record is ours to free.
    NyThreadCloseHandle(hThread);
    return NY_OK;
}

uint32_t CHeldDialog::RunOnThread() {
    pthread_detach(pthread_self());
    return m_pDialog->run();
}

void CHeldDialog::StopAndWaitForRun() {
    uint32_t u4Waited = STOP_REPEAT_MS;
    while (m_bRunning.load()) {
        if (u4Waited >= STOP_REPEAT_MS) {
            m_pDialog->stop();
            u4Waited = 0;
        }
        NyOsSleep(RUN_POLL_MS);
        u4Waited += RUN_POLL_MS;
    }
}
