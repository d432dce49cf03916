// The server side's heartbeat of one channel: sets the channel's connected event, so that clients
// can tell a live server from a dead one. The process's one beater thread (CCommBeater) does the
// beats; Stop() returns once this channel is no longer beaten. The event itself belongs to the
// channel and is not closed here.
//
// Besides the periodic beat (10 ms, or less after SetPeriod) the channel beats every millisecond
// for a while when asked (a fresh channel, and after every answer), releases every client waiting
// on the event at a beat, and does the channel's pending answer wipe (CCommAnswerGuard) while it
// beats fast.
#pragma once

#include <atomic>
#include <cstdint>

#include "ipc/NyIpcHandle.h"

constexpr uint32_t COMM_HEARTBEAT_PERIOD_MS = 10;
constexpr uint32_t COMM_HEARTBEAT_FAST_PERIOD_MS = 1;
// A fresh channel beats fast until a beat finds a client waiting, at most this long, so a client
// told its name connects at once (a storm of fresh sessions does not keep the cores busy).
constexpr uint32_t COMM_HEARTBEAT_FRESH_FAST_MS = 200;
// Fast beats after an answer: a client that reset the event just after the answer's own beat
// sees the next one within a millisecond.
constexpr uint32_t COMM_HEARTBEAT_ANSWER_FAST_MS = 5;
// Waiting clients released by one beat, at most.
constexpr uint32_t COMM_HEARTBEAT_MAX_WAKES = 256;

class CCommAnswerGuard;

class CCommHeartBeat {
public:
    // pGuard (may be null) is the channel's answer guard, whose wipe the beats carry out.
    CCommHeartBeat(NY_EVENT_HANDLE hConnected, CCommAnswerGuard* pGuard);
    ~CCommHeartBeat();
    CCommHeartBeat(const CCommHeartBeat&) = delete;
    CCommHeartBeat& operator=(const CCommHeartBeat&) = delete;

    uint32_t Start();
    // Idempotent; returns once the channel is no longer beaten.
    void Stop();
    // Beat every millisecond for the next u4FastMs, starting now.
    void BeatFast(uint32_t u4FastMs);
    // The period between beats when nothing asks for fast ones (1..COMM_HEARTBEAT_PERIOD_MS).
    bool SetPeriod(uint32_t u4PeriodMs);
    // True while the channel is beaten and its last beat is recent, or it beats within u4WaitMs:
    // how this process asks after its own channel without consuming a beat that a client waits
    // for.
    bool IsBeating(uint32_t u4WaitMs) const;

    // For the beater: beats at u8NowUs when due by u8NowUs + u8EarlyUs, and returns when the next
    // beat is due, or 0 when the event is gone (the channel is then no longer beaten).
    uint64_t BeatIfDue(uint64_t u8NowUs, uint64_t u8EarlyUs);
    // The beater's clock, in microseconds.
    static uint64_t NowUs();

private:
    uint32_t NextPeriodMs() const;
    void Beaten(uint32_t u4Waiting);
    // Fast beats until u4FastMs from now; true when the next beat was planned later than that.
    bool FastFor(uint32_t u4FastMs);

    NY_EVENT_HANDLE m_hConnected;
    CCommAnswerGuard* m_pGuard;
    bool m_bAdded;
    std::atomic<bool> m_bBeaten;
    std::atomic<uint64_t> m_u8NextBeatUs;
    std::atomic<uint64_t> m_u8FastUntil;
    std::atomic<uint64_t> m_u8FreshUntil;
    std::atomic<uint64_t> m_u8LastBeat;
    std::atomic<uint32_t> m_u4PeriodMs;
};
