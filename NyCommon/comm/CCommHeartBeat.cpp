#include "comm/CCommHeartBeat.h"

#include <algorithm>
#include <chrono>

#include "comm/CCommAnswerGuard.h"
#include "comm/CCommBeater.h"
#include "comm/NyCommunication.h"
#include "ipc/NyEvent.h"
#include "os/NyOs.h"
#include "runtime/NyResult.h"

namespace {

// A beat older than this no longer counts as the channel's own sign of life by itself.
constexpr uint64_t HEARTBEAT_STALE_MS = 100;

}  // namespace

CCommHeartBeat::CCommHeartBeat(NY_EVENT_HANDLE hConnected, CCommAnswerGuard* pGuard)
    : m_hConnected(hConnected),
      m_pGuard(pGuard),
      m_bAdded(false),
      m_bBeaten(false),
      m_u8NextBeatUs(0),
      m_u8FastUntil(0),
      m_u8FreshUntil(0),
      m_u8LastBeat(0),
      m_u4PeriodMs(COMM_HEARTBEAT_PERIOD_MS) {}

CCommHeartBeat::~CCommHeartBeat() {
    Stop();
}

uint64_t CCommHeartBeat::NowUs() {
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(
                                     std::chrono::steady_clock::now().time_since_epoch())
                                     .count());
}

// The first beat is due at once.
uint32_t CCommHeartBeat::Start() {
    Stop();
    m_u8LastBeat = NyOsGetTickCount64();
    m_u8FastUntil = 0;
    m_u8FreshUntil = NyOsGetTickCount64() + COMM_HEARTBEAT_FRESH_FAST_MS;
    m_u8NextBeatUs = NowUs();
    m_bBeaten = true;
    m_bAdded = CCommBeater::Instance().Add(this);
    if (!m_bAdded) {
        m_bBeaten = false;
        return NY_ERR_UNEXPECTED;
    }
    return NY_OK;
}

void CCommHeartBeat::Stop() {
    if (m_bAdded) {
        CCommBeater::Instance().Remove(this);
        m_bAdded = false;
    }
    m_bBeaten = false;
}

bool CCommHeartBeat::FastFor(uint32_t u4FastMs) {
    uint64_t u8Until = NyOsGetTickCount64() + u4FastMs;
    if (m_u8FastUntil.load() < u8Until) {
        m_u8FastUntil.store(u8Until);
    }
    uint64_t u8Soon = NowUs() + COMM_HEARTBEAT_FAST_PERIOD_MS * 1000;
    uint64_t u8Planned = m_u8NextBeatUs.load();
    while (u8Planned > u8Soon && !m_u8NextBeatUs.compare_exchange_weak(u8Planned, u8Soon)) {
    }
    return u8Planned > u8Soon;
}

// A channel whose next beat is due within a millisecond anyway does not wake the beater (in a
// storm every answer would otherwise cost a wake beside the client's).
void CCommHeartBeat::BeatFast(uint32_t u4FastMs) {
    if (FastFor(u4FastMs) && m_bBeaten.load()) {
        CCommBeater::Instance().Wake();
    }
}

bool CCommHeartBeat::SetPeriod(uint32_t u4PeriodMs) {
    if (u4PeriodMs == 0 || u4PeriodMs > COMM_HEARTBEAT_PERIOD_MS) {
        return false;
    }
    m_u4PeriodMs.store(u4PeriodMs);
    return true;
}

// A channel that has not beaten lately (a loaded machine may leave the beater unscheduled for
// longer than its period) is given the waiter's time for its next beat, as a client would give
// it.
bool CCommHeartBeat::IsBeating(uint32_t u4WaitMs) const {
    uint64_t u8Until = NyOsGetTickCount64() + u4WaitMs;
    for (;;) {
        if (!m_bBeaten.load()) {
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
        FastFor(COMM_HEARTBEAT_ANSWER_FAST_MS);
    }
}

// A set releases one waiter; a beat here releases every client waiting for it (a connect
// storm would otherwise get one client through per beat).
uint64_t CCommHeartBeat::BeatIfDue(uint64_t u8NowUs, uint64_t u8EarlyUs) {
    uint64_t u8Due = m_u8NextBeatUs.load();
    // Only a channel at its slow period beats early: a fast one would beat at every pass.
    if (NextPeriodMs() == COMM_HEARTBEAT_FAST_PERIOD_MS) {
        u8EarlyUs = 0;
    }
    if (u8Due > u8NowUs + u8EarlyUs) {
        return u8Due;
    }
    uint32_t u4Waiting = 0;
    if (NyEventSetForWaiters(m_hConnected, COMM_HEARTBEAT_MAX_WAKES, &u4Waiting) != 0) {
        m_bBeaten = false;
        return 0;
    }
    Beaten(u4Waiting);
    if (m_pGuard != nullptr && m_pGuard->WipePending()) {
        m_pGuard->TryWipe();
    }
    // An earlier beat asked for meanwhile (BeatFast) stands.
    uint64_t u8Next = u8NowUs + NextPeriodMs() * 1000;
    uint64_t u8Planned = u8Due;
    if (!m_u8NextBeatUs.compare_exchange_strong(u8Planned, u8Next)) {
        u8Next = std::min(u8Next, u8Planned);
        m_u8NextBeatUs.store(u8Next);
    }
    return u8Next;
}
