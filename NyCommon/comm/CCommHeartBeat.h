// The server side's heartbeat: a thread that sets the channel's connected event every 10 ms, so
// that clients can tell a live server from a dead one. Stop() ends the thread within about one
// period; the event itself belongs to the channel and is not closed here.
#pragma once

#include <atomic>
#include <cstdint>

#include "ipc/NyIpcHandle.h"
#include "os/NyThread.h"

constexpr uint32_t COMM_HEARTBEAT_PERIOD_MS = 10;

class CCommHeartBeat {
public:
    explicit CCommHeartBeat(NY_EVENT_HANDLE hConnected);
    ~CCommHeartBeat();
    CCommHeartBeat(const CCommHeartBeat&) = delete;
    CCommHeartBeat& operator=(const CCommHeartBeat&) = delete;

    uint32_t Start();
    // Idempotent; returns once the thread has ended.
    void Stop();

private:
    static void* SessionHeartBeatThreadProc(void* pvArg);

    NY_EVENT_HANDLE m_hConnected;
    NY_THREAD_HANDLE m_hThread;
    std::atomic<uint32_t> m_u4Stop;
    std::atomic<uint32_t> m_u4Left;
};
