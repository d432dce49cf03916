// What a channel's server remembers between reading a request and answering it, so that an
// answer reaches only the client that asked, and does not linger in the region afterwards:
// - the request as it was read: a client killed after sending lets the next client in, whose
//   request replaces it; the answer to the dead client's request is then dropped, not written
//   over the new request;
// - the answer as it was written: when the channel mutex was held at the answer (its client
//   waits in a request), the data area is wiped once the mutex is free again (the client has
//   read the answer and let go), if the region still holds that answer. An answer given while
//   nobody holds the mutex is left alone: a client that gave up its request may still wait for
//   it as a notification, without the mutex.
// The serving thread calls RequestTaken/StillHoldsRequest/Answered, holding the region lock;
// the beater thread calls TryWipe (and a closing channel's WaitUntilTaken).
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "comm/BlkShmCommHeader.h"
#include "ipc/NyIpcHandle.h"

class CCommAnswerGuard {
public:
    // szMutexPath: the channel mutex's file, looked at to see whether another process holds it.
    CCommAnswerGuard(NY_SHM_HANDLE hShm, NY_MUTEX_HANDLE hMutex, const char* szMutexPath);
    ~CCommAnswerGuard();
    CCommAnswerGuard(const CCommAnswerGuard&) = delete;
    CCommAnswerGuard& operator=(const CCommAnswerGuard&) = delete;

    void RequestTaken(const BlkShmCommHeaderTag& blkHeader, const void* pData);
    // False when a request was taken and the region no longer holds it.
    bool StillHoldsRequest();
    void Answered(const BlkShmCommHeaderTag& blkAnswer);
    // Whether the region's header is still this answer and its client has not taken it yet.
    bool HoldsUntakenAnswer(const BlkShmCommHeaderTag& blkHeader);
    bool WipePending() const { return m_bWipePending.load(); }
    // One quiet attempt at the channel mutex; with it, wipes the answer if it is still there.
    void TryWipe();
    // While the last answer waits for its client, up to u4MaxMs: the channel is closing, and
    // its wipe should not take the answer from a client that is about to read it.
    void WaitUntilTaken(uint32_t u4MaxMs);
    // Zeroes the data area (the channel is closing).
    void WipeRegion();

private:
    void ForgetRequest();
    bool MutexHeldElsewhere() const;
    // The mapped region, when it holds at least u4Needed bytes; else null.
    uint8_t* Mapped(uint32_t u4Needed) const;

    NY_SHM_HANDLE m_hShm;
    NY_MUTEX_HANDLE m_hMutex;
    int m_iMutexFd;  // read-only, for F_GETLK; -1 when the file could not be opened
    std::mutex m_mtx;
    std::vector<uint8_t> m_vRequest;  // header and data as read; empty when none is pending
    BlkShmCommHeaderTag m_blkAnswer;
    std::atomic<bool> m_bWipePending;
};
