#include "comm/CCommAnswerGuard.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "ipc/NyFileLock.h"

#include "ipc/NyMutex.h"
#include "ipc/NyShareMem.h"
#include "os/NyOs.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"

CCommAnswerGuard::CCommAnswerGuard(NY_SHM_HANDLE hShm, NY_MUTEX_HANDLE hMutex,
                                   const char* szMutexPath)
    : m_hShm(hShm),
      m_hMutex(hMutex),
      m_iMutexFd(open(szMutexPath, O_RDONLY | O_CLOEXEC)),
      m_blkAnswer(),
      m_bWipePending(false) {}

// Closing a descriptor drops this process's record locks on the file: the beats, the only ones
// here that take the mutex besides the closing wait, have stopped before the guard goes.
CCommAnswerGuard::~CCommAnswerGuard() {
    ForgetRequest();
    if (m_iMutexFd >= 0) {
        close(m_iMutexFd);
    }
}

bool CCommAnswerGuard::MutexHeldElsewhere() const {
    struct flock stLock = FileByteLockDesc(NY_FILE_MUTEX_BYTE, F_WRLCK);
    return m_iMutexFd >= 0 && fcntl(m_iMutexFd, F_GETLK, &stLock) == 0 && stLock.l_type != F_UNLCK;
}

void CCommAnswerGuard::ForgetRequest() {
    if (!m_vRequest.empty()) {
        NyMemSafeClear(m_vRequest.data(), m_vRequest.size());
        m_vRequest.clear();
    }
}

void CCommAnswerGuard::RequestTaken(const BlkShmCommHeaderTag& blkHeader, const void* pData) {
    std::lock_guard<std::mutex> lock(m_mtx);
    ForgetRequest();
    m_bWipePending.store(false);
    m_vRequest.resize(sizeof(blkHeader) + blkHeader.u4DataLen);
    memcpy(m_vRequest.data(), &blkHeader, sizeof(blkHeader));
    if (blkHeader.u4DataLen != 0) {
        memcpy(m_vRequest.data() + sizeof(blkHeader), pData, blkHeader.u4DataLen);
    }
}

bool CCommAnswerGuard::StillHoldsRequest() {
    std::lock_guard<std::mutex> lock(m_mtx);
    if (m_vRequest.empty()) {
        return true;
    }
    std::vector<uint8_t> vNow(m_vRequest.size());
    bool bSame =
        NyShareMemRead(m_hShm, 0, vNow.data(), static_cast<uint32_t>(vNow.size())) == NY_OK &&
        memcmp(vNow.data(), m_vRequest.data(), vNow.size()) == 0;
    NyMemSafeClear(vNow.data(), vNow.size());
    return bSame;
}

// Only an answer to a request is wiped: a notification that no request asked for is read by
// clients that wait for it without taking the channel mutex.
void CCommAnswerGuard::Answered(const BlkShmCommHeaderTag& blkAnswer) {
    std::lock_guard<std::mutex> lock(m_mtx);
    bool bAnswersRequest = !m_vRequest.empty();
    ForgetRequest();
    m_blkAnswer = blkAnswer;
    m_bWipePending.store(bAnswersRequest && blkAnswer.u4DataLen != 0 && MutexHeldElsewhere());
}

// An answer waits to be wiped until its client, which holds the channel mutex, has taken it.
bool CCommAnswerGuard::HoldsUntakenAnswer(const BlkShmCommHeaderTag& blkHeader) {
    std::lock_guard<std::mutex> lock(m_mtx);
    return m_bWipePending.load() && memcmp(&blkHeader, &m_blkAnswer, sizeof(blkHeader)) == 0;
}

// The client holds the channel mutex from before its request until it has read the answer, so
// holding it here means the answer has been taken (or its client died).
// Holding the channel mutex keeps every client from writing, so the region lock is not taken:
// a process that keeps taking it cannot stall the beater thread that runs this.
void CCommAnswerGuard::TryWipe() {
    // A look first: a failed attempt at the lock pauses for a millisecond.
    if (MutexHeldElsewhere() || NyMutexTryWait(m_hMutex) != NY_OK) {
        return;
    }
    {
        std::lock_guard<std::mutex> lock(m_mtx);
        uint8_t* pu1Region = Mapped(COMM_DATA_OFFSET + m_blkAnswer.u4DataLen);
        if (m_bWipePending.load() && pu1Region != nullptr &&
            memcmp(pu1Region, &m_blkAnswer, sizeof(m_blkAnswer)) == 0) {
            NyMemSafeClear(pu1Region + COMM_DATA_OFFSET, m_blkAnswer.u4DataLen);
        }
        m_bWipePending.store(false);
    }
    NyMutexRelease(m_hMutex);
}

void CCommAnswerGuard::WaitUntilTaken(uint32_t u4MaxMs) {
    for (uint32_t u4Waited = 0; m_bWipePending.load() && u4Waited < u4MaxMs; ++u4Waited) {
        TryWipe();
        if (m_bWipePending.load()) {
            NyOsSleep(1);
        }
    }
}

// The closing server no longer answers anything: the data area goes, without waiting for the
// region lock.
void CCommAnswerGuard::WipeRegion() {
    uint32_t u4Size = 0;
    uint8_t* pu1Region = nullptr;
    if (NyShareMemGetSize(m_hShm, &u4Size) == NY_OK && u4Size > COMM_DATA_OFFSET &&
        (pu1Region = Mapped(u4Size)) != nullptr) {
        NyMemSafeClear(pu1Region + COMM_DATA_OFFSET, u4Size - COMM_DATA_OFFSET);
    }
}

uint8_t* CCommAnswerGuard::Mapped(uint32_t u4Needed) const {
    void* pvData = nullptr;
    uint32_t u4Size = 0;
    if (NyShareMemGetData(m_hShm, &pvData) != NY_OK ||
        NyShareMemGetSize(m_hShm, &u4Size) != NY_OK || u4Size < u4Needed ||
        u4Size < COMM_DATA_OFFSET) {
        return nullptr;
    }
    return static_cast<uint8_t*>(pvData);
}
