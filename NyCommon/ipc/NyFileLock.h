// fcntl record locks with a time-out.
#pragma once

#include <fcntl.h>

#include <cstdint>

// Byte offsets of the locks (see NyFileRef.h).
constexpr off_t NY_FILE_SYNC_BYTE = 0;
constexpr off_t NY_FILE_SHARE_BYTE = 1;
constexpr off_t NY_FILE_MUTEX_BYTE = 2;

// Description of a one-byte lock (F_RDLCK, F_WRLCK or F_UNLCK) at u8Offset.
struct flock FileByteLockDesc(off_t u8Offset, short iType);
// Places the lock described by pLock (F_RDLCK or F_WRLCK; anything else NY_ERR_INVALID_ARGUMENT).
// NY_WAIT_INFINITE blocks; otherwise the time-out counts non-blocking attempts about 1 ms apart,
// and running out of them gives NY_ERR_TIMEOUT. Unexpected failures: NY_ERR_LOCK_FAILED.
uint32_t FileRecordLockGet(int iFd, struct flock* pLock, uint32_t u4TimeoutMs);
// Takes (blocking) / releases a one-byte lock of the given type at u8Offset.
uint32_t FileByteLock(int iFd, off_t u8Offset, short iType);
uint32_t FileByteUnlock(int iFd, off_t u8Offset);
// True when another process holds a lock that conflicts with an exclusive lock on the byte.
bool FileByteUsedByOthers(int iFd, off_t u8Offset);
