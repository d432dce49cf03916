#include "comm/CCommAnswerGuard.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "ipc/NyFileLock.h"

#include "ipc/NyMutex.h"
#include "ipc/NyShareMem.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"

CCommAnswerGuard::CCommAnswerGuard(NY_SHM_HANDLE hShm, NY_MUTEX_HANDLE hMutex,
                                   const char* szMutexPath)
    : m_hShm(hShm),
      m_hMutex(hMutex),
      m_iMutexFd(open(szMutexPath, O_RDONLY | O_CLOEXEC)),
      m_blkAnswer(),
      m_bWipePending(false) {}

// Closing a descriptor drops this process's record locks on the file: the heartbeat thread,
// the only one here that takes the mutex, has ended before the guard goes.
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

// The client holds the channel mutex from before its request until it has read the answer, so
// holding it here means the answer has been taken (or its client died).
void CCommAnswerGuard::TryWipe() {
    // A look first: a failed attempt at the lock pauses for a millisecond.
    if (MutexHeldElsewhere() || NyMutexTryWait(m_hMutex) != NY_OK) {
        return;
    }
    // Region lock before m_mtx, in the order of the serving thread.
    if (NyShareMemLock(m_hShm) == NY_OK) {
        std::lock_guard<std::mutex> lock(m_mtx);
        BlkShmCommHeaderTag blkNow = {};
        if (m_bWipePending.load() && NyShareMemRead(m_hShm, 0, &blkNow, sizeof(blkNow)) == NY_OK &&
            memcmp(&blkNow, &m_blkAnswer, sizeof(blkNow)) == 0) {
            std::vector<uint8_t> vZero(m_blkAnswer.u4DataLen, 0);
            NyShareMemWrite(m_hShm, COMM_DATA_OFFSET, vZero.data(), m_blkAnswer.u4DataLen);
        }
        m_bWipePending.store(false);
        NyShareMemUnlock(m_hShm);
    }
    NyMutexRelease(m_hMutex);
}

void CCommAnswerGuard::WipeRegion() {
    uint32_t u4Size = 0;
    if (NyShareMemGetSize(m_hShm, &u4Size) != NY_OK || u4Size <= COMM_DATA_OFFSET) {
        return;
    }
    std::vector<uint8_t> vZero(u4Size - COMM_DATA_OFFSET, 0);
    NyShareMemWrite(m_hShm, COMM_DATA_OFFSET, vZero.data(), static_cast<uint32_t>(vZero.size()));
}
