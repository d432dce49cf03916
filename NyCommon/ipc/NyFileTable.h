// The per-process file table: the open files (one BlkFileRefTag per path) and the per-path
// transactions that serialise the threads of one process while they open or close a path.
// Plain C layout on the heap, shared by every copy of the library in the process (see
// NyIpcAnchor.h), so it holds no C++ library types.
#pragma once

#include <pthread.h>

#include <cstdint>

struct BlkFileRefTag;

constexpr uint32_t NY_FILE_TABLE_TAG = 0x4C425446;  // "FTBL"

struct BlkFileTransTag {
    char* szPath;
    uint32_t u4Users;         // threads inside or waiting for this path's transaction
    pthread_mutex_t* pMutex;  // recursive; held for the whole transaction
    BlkFileTransTag* pNext;
};

struct BlkFileTableTag {
    uint32_t u4Tag;
    uint32_t u4Pid;            // process that owns the table (updated in a forked child)
    BlkFileTableTag* pSelf;    // with the tag, tells a live table from stale memory
    pthread_mutex_t mtxTable;  // recursive; guards both lists
    BlkFileRefTag* pRefs;
    BlkFileTransTag* pTrans;
    BlkFileRefTag* pOrphans;  // inherited over fork(): usable, closable, never found by path
};

BlkFileTableTag* FileTableCreate();
// Frees the table if it holds no open file; false (nothing freed) otherwise.
bool FileTableDestroy(BlkFileTableTag* pTable);

// Starts the transaction of a path (waits for other threads' transactions on it). Null when out
// of memory.
BlkFileTransTag* FileTransBegin(BlkFileTableTag* pTable, const char* szPath);
void FileTransEnd(BlkFileTableTag* pTable, BlkFileTransTag* pTrans);

BlkFileRefTag* FileTableFind(BlkFileTableTag* pTable, const char* szPath);
bool FileTableContains(BlkFileTableTag* pTable, const BlkFileRefTag* pRef);
void FileTableAdd(BlkFileTableTag* pTable, BlkFileRefTag* pRef);
void FileTableRemove(BlkFileTableTag* pTable, BlkFileRefTag* pRef);
// When pRef is an orphan: drops one reference to it and, at the last, takes it out of the table
// (*pbLast true: the caller closes and frees it). False when pRef is no orphan.
bool FileTableDropOrphan(BlkFileTableTag* pTable, BlkFileRefTag* pRef, bool* pbLast);

// Around fork(): the parent holds the table's mutex while forking. The child, where no other
// thread survives, gets fresh mutexes and forgets transactions in flight. Record locks are not
// inherited, so the child is no user of the parent's files: their references become orphans,
// which inherited handles may still lock and close, while opening a name in the child makes a
// reference (and share lock) of its own.
void FileTableForkPrepare(BlkFileTableTag* pTable);
void FileTableForkParent(BlkFileTableTag* pTable);
void FileTableForkChild(BlkFileTableTag* pTable);
