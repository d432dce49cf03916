// The cross-process lock of a shared file: the file reference's in-process mutex, then the
// exclusive byte-2 record lock; recursive per thread through an owner record. Failures are
// logged at level 2 as result codes.
#pragma once

#include <cstdint>

struct BlkFileRefTag;

struct BlkFileMutexOwnerTag {
    uint32_t u4OwnerTid;  // 0: nobody in this process through this handle
    uint32_t u4Count;     // recursion depth
};

// One attempt, without the log line of a failed wait.
uint32_t FileMutexTryWait(BlkFileRefTag* pRef, BlkFileMutexOwnerTag* pOwner);
uint32_t FileMutexWait(BlkFileRefTag* pRef, BlkFileMutexOwnerTag* pOwner, uint32_t u4TimeoutMs);
// NY_ERR_NOT_OWNER when the calling thread does not own the lock.
uint32_t FileMutexRelease(BlkFileRefTag* pRef, BlkFileMutexOwnerTag* pOwner);
// Releases every level the calling thread holds through pOwner (a handle closed while held).
void FileMutexReleaseAll(BlkFileRefTag* pRef, BlkFileMutexOwnerTag* pOwner);
