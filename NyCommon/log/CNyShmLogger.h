// The shared-memory back end of the logger: this process's attachment to the machine-wide log
// queue. Producers (every process using the library) push records; a viewer attaches as a
// listening consumer, pops them and beats the heartbeat so producers know it is draining.
#pragma once

#include <cstdint>

#include "ipc/NyIpcHandle.h"
#include "log/CLockfreeArrayQueue.h"
#include "log/NyLogRecord.h"

// The machine-wide queue and the mutex that serialises attaching to it.
constexpr const char* NY_SHMLOG_QUEUE_NAME = "/NyShmLog-4b1a";
constexpr const char* NY_SHMLOG_MUTEX_NAME = "{NyMutexForShmLog-4b1a}";
constexpr uint32_t NY_SHMLOG_CAPACITY = 32768;
// Records thrown away at once when the ring is full and nobody drains it.
constexpr uint32_t NY_SHMLOG_DISCARD_ON_FULL = 4096;
// One-millisecond waits on a motionless heartbeat before the viewer is taken for dead.
constexpr uint32_t NY_SHMLOG_STALL_LIMIT = 101;
constexpr uint32_t NY_SHMLOG_NAME_SIZE = 256;
// Smallest ring a logger attaches to: a smaller one could be full of nothing but a dead
// producer's claim, and a full push would never find a record to drop.
constexpr uint32_t NY_SHMLOG_MIN_CAPACITY = 4;

class CNyShmLogger {
public:
    // Attaches to the default queue: the machine-wide one unless SetDefaultTarget chose another.
    CNyShmLogger();
    // Attaches to the queue of this name and capacity (a power of two). Every attachment to one
    // queue uses the same mutex: the machine-wide one for the machine-wide queue, else one
    // named after the queue.
    CNyShmLogger(const char* szQueueName, uint32_t u4Capacity);
    virtual ~CNyShmLogger();
    CNyShmLogger(const CNyShmLogger&) = delete;
    CNyShmLogger& operator=(const CNyShmLogger&) = delete;

    // Seam for tests and tools: the queue that loggers constructed from now on attach to. A null
    // queue name restores the machine-wide queue. Call before the library starts.
    static void SetDefaultTarget(const char* szQueueName, uint32_t u4Capacity);

    // True when attached (as a producer, or as a listening consumer when bListen).
    bool Connect(bool bListen);
    // True when it was attached. The mapping stays until the process ends: other threads may
    // still be pushing into it.
    bool Disconnect();
    bool IsConnect() const;

    // Producer: true when the record was queued. A full ring drops its oldest records when
    // nobody listens, and waits at most about 100 ms for a listener whose heartbeat stopped.
    bool SetLogItem(const tagBlkLogItem& blkItem);

    // Consumer operations; each beats the heartbeat first.
    // Records popped into pOut (at most u4Max), 0 when none.
    unsigned int GetLogItem(tagBlkLogItem* pOut, unsigned int u4Max);
    // Drops the u4Count oldest records, the whole ring when u4Count is 0.
    bool DiscardLog(unsigned int u4Count);
    void SetHeartbeatForViewer();

private:
    bool Attach();
    void OnFullWithListener(uint32_t& u4Heartbeat, uint32_t& u4Stalls);

    uint32_t m_u4Reserved = 0;
    NY_MUTEX_HANDLE m_hMutex = nullptr;
    uint8_t m_u1Connected = 0;
    uint8_t m_u1Listening = 0;
    CLockfreeArrayQueue* m_pQueue = nullptr;
    uint32_t m_u4Capacity;
    char m_szQueueName[NY_SHMLOG_NAME_SIZE] = {};
};
