// A mutex with a plain lock/unlock interface: nameless (in-process) by default, or named
// (shared with other processes). The destructor destroys the mutex.
#pragma once

#include "ipc/NyIpcHandle.h"

class CLock {
public:
    CLock();
    explicit CLock(const char* szName);
    ~CLock();
    CLock(const CLock&) = delete;
    CLock& operator=(const CLock&) = delete;

    // Waits without time-out. False when there is no mutex or the lock failed.
    bool Lock();
    bool Unlock();

    // In a child after fork() while the lock was held: the holding thread does not exist here,
    // so the old mutex is abandoned (not destroyed) and a fresh nameless one replaces it.
    void ResetAfterFork();

private:
    NY_MUTEX_HANDLE m_hMutex;
};
