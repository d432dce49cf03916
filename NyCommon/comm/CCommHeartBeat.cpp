#include "comm/CCommHeartBeat.h"

#include <pthread.h>

#include <chrono>

#include "comm/CCommAnswerGuard.h"
#include "comm/NyCommunication.h"
#include "ipc/NyEvent.h"
#include "os/NyOs.h"

namespace {

// The thread's time slice: a beat is a few microseconds of work, and a beat or answer wipe that
// waits behind another thread's slice on a busy machine comes milliseconds late.
constexpr uint32_t HEARTBEAT_SLICE_US = 100;
// How long Stop() waits for the thread to notice the request before NyThreadEnd takes over.
constexpr uint32_t HEARTBEAT_STOP_POLLS = 100;
// A beat older than this no longer counts as the thread's own sign of life by itself.
constexpr uint64_t HEARTBEAT_STALE_MS = 100;

}  // namespace

CCommHeartBeat::CCommHeartBeat(NY_EVENT_HANDLE hConnected, CCommAnswerGuard* pGuard)
    : m_hConnected(hConnected),
      m_pGuard(pGuard),
      m_hThread(nullptr),
      m_u4Stop(0),
      m_u4Left(0),
      m_u8FastUntil(0),
      m_u8FreshUntil(0),
      m_u8LastBeat(0),
      m_u4PeriodMs(COMM_HEARTBEAT_PERIOD_MS) {}

CCommHeartBeat::~CCommHeartBeat() {
    Stop();
}

uint32_t CCommHeartBeat::Start() {
    m_u4Stop = 0;
    m_u4Left = 0;
    m_u8LastBeat = NyOsGetTickCount64();
    m_u8FastUntil = 0;
    m_u8FreshUntil = NyOsGetTickCount64() + COMM_HEARTBEAT_FRESH_FAST_MS;
    return NyThreadBegin(&CCommHeartBeat::SessionHeartBeatThreadProc, this, &m_hThread);
}

void CCommHeartBeat::Stop() {
    if (m_hThread == nullptr) {
        return;
    }
    {
        std::lock_guard<std::mutex> lock(m_mtxWake);
        m_u4Stop = 1;
    }
    m_cvWake.notify_all();
    for (uint32_t u4Poll = 0; u4Poll < HEARTBEAT_STOP_POLLS && m_u4Left == 0; ++u4Poll) {
        NyOsSleep(1);
    }
    // A moment for the thread to get from its last statement to its end, so that NyThreadEnd
    // finds it ended at its first look instead of after its 100 ms pause.
    NyOsSleep(1);
    NyThreadEnd(m_hThread);
    m_hThread = nullptr;
}

// A thread already beating fast wakes within a millisecond anyway: it is not woken (in a storm
// every answer would otherwise cost a wake of the heartbeat thread beside the client's).
void CCommHeartBeat::BeatFast(uint32_t u4FastMs) {
    uint64_t u8Now = NyOsGetTickCount64();
    uint64_t u8Until = u8Now + u4FastMs;
    uint64_t u8Was = m_u8FastUntil.load();
    if (u8Was < u8Until) {
        m_u8FastUntil.store(u8Until);
    }
    if (u8Was <= u8Now && u8Now >= m_u8FreshUntil.load()) {
        m_cvWake.notify_all();
    }
}

bool CCommHeartBeat::SetPeriod(uint32_t u4PeriodMs) {
    if (u4PeriodMs == 0 || u4PeriodMs > COMM_HEARTBEAT_PERIOD_MS) {
        return false;
    }
    m_u4PeriodMs.store(u4PeriodMs);
    return true;
}

// A thread that has not beaten lately (a loaded machine may leave it unscheduled for longer
// than its period) is given the waiter's time for its next beat, as a client would give it.
bool CCommHeartBeat::IsBeating(uint32_t u4WaitMs) const {
    uint64_t u8Until = NyOsGetTickCount64() + u4WaitMs;
    for (;;) {
        if (m_hThread == nullptr || m_u4Left.load() != 0) {
            return false;
        }
        uint64_t u8Now = NyOsGetTickCount64();
        if (u8Now - m_u8LastBeat.load() < HEARTBEAT_STALE_MS) {
            return true;
        }
        if (u8Now >= u8Until) {
            return false;
        }
        NyOsSleep(1);
    }
}

// Fast while asked to, and while an answer waits to be wiped.
uint32_t CCommHeartBeat::NextPeriodMs() const {
    uint64_t u8Now = NyOsGetTickCount64();
    bool bFast = u8Now < m_u8FastUntil.load() || u8Now < m_u8FreshUntil.load() ||
                 (m_pGuard != nullptr && m_pGuard->WipePending());
    return bFast ? COMM_HEARTBEAT_FAST_PERIOD_MS : m_u4PeriodMs.load();
}

// A beat that found clients waiting ends the fresh channel's fast window (its first client is
// in); one that found several is followed by a few fast beats for the clients of a storm that
// arrive just after (a single client, as on a session's channel, needs none).
void CCommHeartBeat::Beaten(uint32_t u4Waiting) {
    m_u8LastBeat.store(NyOsGetTickCount64());
    if (u4Waiting != 0) {
        m_u8FreshUntil.store(0);
    }
    if (u4Waiting > 1) {
        BeatFast(COMM_HEARTBEAT_ANSWER_FAST_MS);
    }
}

void CCommHeartBeat::Pause(uint32_t u4Ms) {
    std::unique_lock<std::mutex> lock(m_mtxWake);
    if (m_u4Stop == 0) {
        m_cvWake.wait_for(lock, std::chrono::milliseconds(u4Ms));
    }
}

// A set releases one waiter; a beat here releases every client waiting for it (a connect
// storm would otherwise get one client through per beat).
void* CCommHeartBeat::SessionHeartBeatThreadProc(void* pvArg) {
    CCommHeartBeat* pThis = static_cast<CCommHeartBeat*>(pvArg);
    NyThreadPreferShortSlice(HEARTBEAT_SLICE_US);
    uint32_t u4Result = 0;
    while (pThis->m_u4Stop == 0) {
        uint32_t u4Waiting = 0;
        u4Result = NyEventSetForWaiters(pThis->m_hConnected, COMM_HEARTBEAT_MAX_WAKES, &u4Waiting);
        if (u4Result != 0) {
            break;
        }
        pThis->Beaten(u4Waiting);
        if (pThis->m_pGuard != nullptr && pThis->m_pGuard->WipePending()) {
            pThis->m_pGuard->TryWipe();
        }
        pthread_testcancel();
        pThis->Pause(pThis->NextPeriodMs());
    }
    pThis->m_u4Left = 1;
    return reinterpret_cast<void*>(static_cast<uintptr_t>(u4Result));
}
