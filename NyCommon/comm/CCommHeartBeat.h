// The server side's heartbeat: a thread that sets the channel's connected event, so that clients
// can tell a live server from a dead one. Stop() ends the thread within about one period; the
// event itself belongs to the channel and is not closed here.
//
// Besides the periodic beat (10 ms, or less after SetPeriod) the thread beats every millisecond for
// a while when asked (a fresh channel, and after every answer), releases every client waiting on
// the event at a beat, and does the channel's pending answer wipe (CCommAnswerGuard) while it beats
// fast. It asks the scheduler for short time slices, so that a beat is not late on a busy machine.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "ipc/NyIpcHandle.h"
#include "os/NyThread.h"

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
    // pGuard (may be null) is the channel's answer guard, whose wipe the thread carries out.
    CCommHeartBeat(NY_EVENT_HANDLE hConnected, CCommAnswerGuard* pGuard);
    ~CCommHeartBeat();
    CCommHeartBeat(const CCommHeartBeat&) = delete;
    CCommHeartBeat& operator=(const CCommHeartBeat&) = delete;

    uint32_t Start();
    // Idempotent; returns once the thread has ended.
    void Stop();
    // Beat every millisecond for the next u4FastMs, starting now.
    void BeatFast(uint32_t u4FastMs);
    // The period between beats when nothing asks for fast ones (1..COMM_HEARTBEAT_PERIOD_MS).
    bool SetPeriod(uint32_t u4PeriodMs);
    // True while the thread runs and its last beat is recent, or it beats within u4WaitMs: how
    // this process asks after its own channel without consuming a beat that a client waits for.
    bool IsBeating(uint32_t u4WaitMs) const;

private:
    static void* SessionHeartBeatThreadProc(void* pvArg);
    uint32_t NextPeriodMs() const;
    void Beaten(uint32_t u4Waiting);
    void Pause(uint32_t u4Ms);

    NY_EVENT_HANDLE m_hConnected;
    CCommAnswerGuard* m_pGuard;
    NY_THREAD_HANDLE m_hThread;
    std::atomic<uint32_t> m_u4Stop;
    std::atomic<uint32_t> m_u4Left;
    std::atomic<uint64_t> m_u8FastUntil;
    std::atomic<uint64_t> m_u8FreshUntil;
    std::atomic<uint64_t> m_u8LastBeat;
    std::atomic<uint32_t> m_u4PeriodMs;
    std::mutex m_mtxWake;
    std::condition_variable m_cvWake;
};
