// A read-only attachment to a log queue: maps the existing queue object read-only and reads its
// committed records without moving the read position and without counting as a consumer, so
// that other viewers and the producers' full-queue handling see no difference.
#pragma once

#include <cstddef>
#include <cstdint>

#include "log/CLockfreeArrayQueue.h"

class CNyLogQueuePeek {
public:
    CNyLogQueuePeek() = default;
    ~CNyLogQueuePeek();
    CNyLogQueuePeek(const CNyLogQueuePeek&) = delete;
    CNyLogQueuePeek& operator=(const CNyLogQueuePeek&) = delete;

    // Whether a queue object of this name exists.
    static bool Exists(const char* szQueueName);
    // Maps the existing queue of this name and capacity; false when there is none or it has
    // another size.
    bool Open(const char* szQueueName, uint32_t u4Capacity);
    // Up to u4Max records not read before, oldest first; 0 when there are none.
    unsigned int Read(tagBlkLogItem* pOut, unsigned int u4Max);

private:
    CLockfreeArrayQueue m_queue;
    void* m_pvMapping = nullptr;
    size_t m_cbMapping = 0;
    uint32_t m_u4Position = 0;
    bool m_bStarted = false;
};
