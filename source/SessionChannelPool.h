// Interaction-session channels opened ahead of the start requests that hand them out. Opening a
// channel (two files, three semaphore sets, a heartbeat thread) is most of what a start costs,
// and clients that start sessions together wait for each other's starts on the main channel;
// a thread of its own keeps a few channels ready instead, so a start only takes one.
// A channel here is exactly what a start opens at once: a fresh GUID name, the same objects,
// a beating heartbeat. It beats as a fresh channel again when it is handed out.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "comm/NyCommunication.h"

// Opens a session channel under a fresh GUID name (logged as a start logs its failures).
uint32_t OpenFreshSessionChannel(std::string* pstrName, NY_COMM_HANDLE* phSession);

class CSessionChannelPool {
public:
    // fnOpened is called with each channel's name once it is listed by AppendNames, before it
    // can be handed out (the caller records it for the clean-up after a crash).
    CSessionChannelPool(size_t cReady, std::function<void(const std::string&)> fnOpened);
    ~CSessionChannelPool();
    CSessionChannelPool(const CSessionChannelPool&) = delete;
    CSessionChannelPool& operator=(const CSessionChannelPool&) = delete;

    void Start();
    // A ready channel, taken out of the pool; false when none is ready.
    bool Take(std::string* pstrName, NY_COMM_HANDLE* phSession);
    // The names of the channels the pool holds, ready or about to be.
    void AppendNames(std::vector<std::string>* pvNames) const;
    // Ends the filling thread and closes every channel still held.
    void Close();

private:
    struct BlkPooledTag {
        std::string strName;
        NY_COMM_HANDLE hSession;
        bool bReady;
    };
    void Fill();
    bool OpenOne();

    const size_t m_cReady;
    std::function<void(const std::string&)> m_fnOpened;
    mutable std::mutex m_mtx;
    std::condition_variable m_cv;
    std::vector<BlkPooledTag> m_vPooled;
    bool m_bStop = false;
    std::thread m_thread;
};
