#include "comm/CLock.h"

#include "ipc/NyMutex.h"

CLock::CLock() : CLock(nullptr) {}

CLock::CLock(const char* szName) : m_hMutex(nullptr) {
    if (NyMutexCreate(szName, &m_hMutex) != 0) {
        m_hMutex = nullptr;
    }
}

CLock::~CLock() {
    if (m_hMutex != nullptr) {
        NyMutexDestroy(m_hMutex);
    }
}

bool CLock::Lock() {
    return m_hMutex != nullptr && NyMutexWait(m_hMutex, NY_WAIT_INFINITE) == 0;
}

bool CLock::Unlock() {
    return m_hMutex != nullptr && NyMutexRelease(m_hMutex) == 0;
}

void CLock::ResetAfterFork() {
    if (NyMutexCreate(nullptr, &m_hMutex) != 0) {
        m_hMutex = nullptr;
    }
}
