#include "ipc/NyFileMutex.h"

#include "ipc/NyFileLock.h"
#include "ipc/NyFileRef.h"
#include "ipc/NyIpcResult.h"
#include "ipc/NyRecMutex.h"
#include "log/NyLog.h"
#include "os/NyOs.h"
#include "runtime/NyResult.h"

namespace {

// The byte-2 lock belongs to the process; several handles of one file share it through the
// reference's depth counter, which only the holder of the in-process mutex touches.
uint32_t TakeMutexByte(BlkFileRefTag* pRef, uint32_t u4TimeoutMs) {
    if (pRef->u4LockDepth == 0) {
        struct flock stLock = FileByteLockDesc(NY_FILE_MUTEX_BYTE, F_WRLCK);
        uint32_t u4Result = FileRecordLockGet(pRef->iFd, &stLock, u4TimeoutMs);
        if (u4Result != NY_OK) {
            return u4Result;
        }
    }
    ++pRef->u4LockDepth;
    return NY_OK;
}

uint32_t DropMutexByte(BlkFileRefTag* pRef) {
    if (pRef->u4LockDepth == 1 && FileByteUnlock(pRef->iFd, NY_FILE_MUTEX_BYTE) != NY_OK) {
        return NY_ERR_UNLOCK_FAILED;
    }
    --pRef->u4LockDepth;
    return NY_OK;
}

uint32_t Logged(uint32_t u4Result) {
    if (u4Result != NY_OK) {
        NY_LOG_RESULT(u4Result);
    }
    return u4Result;
}

uint32_t Wait(BlkFileRefTag* pRef, BlkFileMutexOwnerTag* pOwner, uint32_t u4TimeoutMs) {
    uint32_t u4Tid = NyOsGetCurrentTid();
    if (u4Tid == 0) {
        return NY_ERR_UNEXPECTED;
    }
    if (pOwner->u4OwnerTid == u4Tid && pOwner->u4Count > 0) {
        ++pOwner->u4Count;
        return NY_OK;
    }
    uint32_t u4Result = NyRecMutexLock(pRef->pMutex, u4TimeoutMs);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    u4Result = TakeMutexByte(pRef, u4TimeoutMs);
    if (u4Result != NY_OK) {
        NyRecMutexUnlock(pRef->pMutex);
        return u4Result;
    }
    pOwner->u4OwnerTid = u4Tid;
    pOwner->u4Count = 1;
    return NY_OK;
}

uint32_t Release(BlkFileRefTag* pRef, BlkFileMutexOwnerTag* pOwner) {
    if (pOwner->u4OwnerTid != NyOsGetCurrentTid()) {
        return NY_ERR_NOT_OWNER;
    }
    if (pOwner->u4Count == 0) {
        return NY_ERR_UNEXPECTED;
    }
    if (--pOwner->u4Count > 0) {
        return NY_OK;
    }
    if (DropMutexByte(pRef) != NY_OK) {
        pOwner->u4Count = 1;
        return NY_ERR_UNLOCK_FAILED;
    }
    pOwner->u4OwnerTid = 0;
    if (NyRecMutexUnlock(pRef->pMutex) != NY_OK) {
        pOwner->u4OwnerTid = NyOsGetCurrentTid();
        pOwner->u4Count = 1;
        return NY_ERR_UNLOCK_FAILED;
    }
    return NY_OK;
}

}  // namespace

uint32_t FileMutexWait(BlkFileRefTag* pRef, BlkFileMutexOwnerTag* pOwner, uint32_t u4TimeoutMs) {
    return Logged(Wait(pRef, pOwner, u4TimeoutMs));
}

uint32_t FileMutexTryWait(BlkFileRefTag* pRef, BlkFileMutexOwnerTag* pOwner) {
    return Wait(pRef, pOwner, 0);
}

uint32_t FileMutexRelease(BlkFileRefTag* pRef, BlkFileMutexOwnerTag* pOwner) {
    return Logged(Release(pRef, pOwner));
}

void FileMutexReleaseAll(BlkFileRefTag* pRef, BlkFileMutexOwnerTag* pOwner) {
    if (pOwner->u4OwnerTid != NyOsGetCurrentTid()) {
        return;
    }
    while (pOwner->u4Count > 0 && FileMutexRelease(pRef, pOwner) == NY_OK) {
    }
}
