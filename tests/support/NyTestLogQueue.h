// A private log queue for a test: unique names, a small ring, removed when the object goes.
// Keeps tests (and `ctest -j`) away from the machine-wide queue and from each other.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <string>

#include "log/CLockfreeArrayQueue.h"

class CNyTestLogQueue {
public:
    explicit CNyTestLogQueue(uint32_t u4Capacity = 64);
    ~CNyTestLogQueue();
    CNyTestLogQueue(const CNyTestLogQueue&) = delete;
    CNyTestLogQueue& operator=(const CNyTestLogQueue&) = delete;

    const char* QueueName() const { return m_strQueue.c_str(); }
    uint32_t Capacity() const { return m_u4Capacity; }

    // Removes the queues of test processes that died before they could remove them (killed).
    static void RemoveOrphans();

    // Loggers constructed from now on in this process (the library's included) use this queue.
    void MakeDefault() const;
    // An outside view of the ring for assertions; null while the queue does not exist (or has
    // another length). Attaches on first use.
    CLockfreeArrayQueue* View();

private:
    std::string m_strQueue;
    uint32_t m_u4Capacity;
    pid_t m_pidOwner;  // only the process that made the object removes the queue
    void* m_pvMapping = nullptr;
    std::unique_ptr<CLockfreeArrayQueue> m_pView;
};
