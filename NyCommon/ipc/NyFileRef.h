// Files shared between processes under NY_IPC_DIRECTORY: one descriptor per file per process,
// kept in the per-process file table, with fcntl record locks on bytes 0-2:
//   byte 0  exclusive  sync lock   briefly, while a process creates, joins or closes the file
//   byte 1  shared     share lock  by every process that has the file open
//   byte 2  exclusive  mutex lock  by the process that owns the named mutex / region lock
#pragma once

#include <pthread.h>

#include <cstdint>

#include "ipc/NyIpcName.h"

// One per path per process, owned by the file table. Plain C layout: every copy of the library
// loaded into the process shares these records through the table.
struct BlkFileRefTag {
    char szPath[NY_IPC_PATH_SIZE];
    int iFd;
    uint32_t u4Length;
    uint32_t u4RefCount;      // users in this process
    pthread_mutex_t* pMutex;  // recursive; taken in front of the byte-2 lock
    uint32_t u4LockDepth;     // holds of the byte-2 lock through all handles of this file
    BlkFileRefTag* pNext;     // table chaining
};

// u4Length > 0: create or join a file of at least that length (a file left by dead users is
// taken over as created and, with bZeroFill, reads as zeros). u4Length 0: open a file that
// another live process uses. pu4Created (may be null) is 1 when this call created or took over
// the file. A second open of one path in a process returns the same reference (created 0).
// Null on failure.
BlkFileRefTag* FileOpen(const char* szPath, uint32_t u4Length, bool bZeroFill,
                        uint32_t* pu4Created);
// Drops one reference; the last one in the process closes the descriptor and removes the file
// when no other process uses it. NY_ERR_INVALID_ARGUMENT for a reference not in the table.
uint32_t FileClose(BlkFileRefTag* pRef);
