// A channel client that takes every step of the channel's client side as the token libraries
// do, with nothing cached or skipped: open the channel's objects by name; Connect resets the
// connected event and waits for it; Request takes the channel mutex, writes header and data
// under the region lock, resets the response event, sets the request event, then asks
// IsConnected (reset the connected event, wait up to 500 ms for it) and waits up to 500 ms for
// the response event, round after round, and reads the answer. Benchmarks use it to measure
// what such a client pays; the project's own client library takes shortcuts.
#pragma once

#include <cstdint>
#include <string>

#include "ipc/NyIpcHandle.h"

class CNyStrictClient {
public:
    CNyStrictClient() = default;
    ~CNyStrictClient();
    CNyStrictClient(const CNyStrictClient&) = delete;
    CNyStrictClient& operator=(const CNyStrictClient&) = delete;

    // Opens the region, the mutex and the three events of the channel strName.
    uint32_t Open(const std::string& strName);
    // Reset the connected event, wait for it at most u4TimeoutMs.
    uint32_t Connect(uint32_t u4TimeoutMs);
    // One request and its answer (at most u4AnswerCapacity bytes, length from the header).
    uint32_t Request(const void* pRequest, uint32_t u4RequestLen, void* pAnswer,
                     uint32_t u4AnswerCapacity, uint32_t* pu4AnswerLen = nullptr);
    void Close();
    // The channel's region, for measurements that look at what it holds.
    NY_SHM_HANDLE Region() const { return m_hShm; }

private:
    uint32_t WriteRequest(const void* pRequest, uint32_t u4RequestLen);
    uint32_t WaitForAnswer();
    uint32_t ReadAnswer(void* pAnswer, uint32_t u4Capacity, uint32_t* pu4Len);

    NY_SHM_HANDLE m_hShm = nullptr;
    NY_MUTEX_HANDLE m_hMutex = nullptr;
    NY_EVENT_HANDLE m_hRequest = nullptr;
    NY_EVENT_HANDLE m_hResponse = nullptr;
    NY_EVENT_HANDLE m_hConnected = nullptr;
};
