#include "ipc/NyFileLock.h"

#include <unistd.h>

#include <cerrno>

#include "ipc/NyIpcHandle.h"
#include "ipc/NyIpcResult.h"
#include "runtime/NyResult.h"

namespace {

uint32_t LockForever(int iFd, struct flock* pLock) {
    for (;;) {
        if (fcntl(iFd, F_SETLKW, pLock) == 0) {
            return NY_OK;
        }
        if (errno != EDEADLK && errno != EINTR) {
            return NY_ERR_LOCK_FAILED;
        }
    }
}

// A zero time-out still makes one attempt: 0 means "try once" everywhere in this library.
uint32_t LockByAttempts(int iFd, struct flock* pLock, uint32_t u4Attempts) {
    if (u4Attempts == 0) {
        u4Attempts = 1;
    }
    uint32_t u4Done = 0;
    while (u4Done < u4Attempts) {
        if (fcntl(iFd, F_SETLK, pLock) == 0) {
            return NY_OK;
        }
        if (errno == EINTR) {
            continue;
        }
        if (errno != EACCES && errno != EAGAIN && errno != EDEADLK) {
            return NY_ERR_LOCK_FAILED;
        }
        ++u4Done;
        usleep(1000);
    }
    return NY_ERR_TIMEOUT;
}

}  // namespace

struct flock FileByteLockDesc(off_t u8Offset, short iType) {
    struct flock stLock = {};
    stLock.l_type = iType;
    stLock.l_whence = SEEK_SET;
    stLock.l_start = u8Offset;
    stLock.l_len = 1;
    return stLock;
}

uint32_t FileRecordLockGet(int iFd, struct flock* pLock, uint32_t u4TimeoutMs) {
    if (pLock == nullptr || (pLock->l_type != F_RDLCK && pLock->l_type != F_WRLCK)) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (u4TimeoutMs == NY_WAIT_INFINITE) {
        return LockForever(iFd, pLock);
    }
    return LockByAttempts(iFd, pLock, u4TimeoutMs);
}

uint32_t FileByteLock(int iFd, off_t u8Offset, short iType) {
    struct flock stLock = FileByteLockDesc(u8Offset, iType);
    return FileRecordLockGet(iFd, &stLock, NY_WAIT_INFINITE);
}

uint32_t FileByteUnlock(int iFd, off_t u8Offset) {
    struct flock stLock = FileByteLockDesc(u8Offset, F_UNLCK);
    while (fcntl(iFd, F_SETLK, &stLock) != 0) {
        if (errno != EINTR) {
            return NY_ERR_UNLOCK_FAILED;
        }
    }
    return NY_OK;
}

bool FileByteUsedByOthers(int iFd, off_t u8Offset) {
    struct flock stLock = FileByteLockDesc(u8Offset, F_WRLCK);
    while (fcntl(iFd, F_GETLK, &stLock) != 0) {
        if (errno != EINTR) {
            return true;  // cannot tell: assume in use, so nothing is removed or taken over
        }
    }
    return stLock.l_type != F_UNLCK;
}
