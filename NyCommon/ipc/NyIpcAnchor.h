// The per-process anchor: a small POSIX shared-memory object "/ny.%08x.%d" (hash of the
// executable's path as UnixName2Key computes it without prefix, process id) through which every
// copy of this library loaded into one process finds the same file table. Its 32-bit words: tag
// 0x53484400; state (0 new, 1 ready, 2 being torn down); reference count (copies attached); spin
// lock (0 free, 1 taken); table address; process id. On 64-bit builds the table's address does
// not fit the address word: that word holds its low half and a seventh word its high half, so
// every copy in the process (all of one build width) reads the same full address.
#pragma once

#include <cstdint>

constexpr uint32_t NY_ANCHOR_TAG = 0x53484400;
constexpr uint32_t NY_ANCHOR_NAME_SIZE = 64;

constexpr uint32_t NY_ANCHOR_STATE_NEW = 0;
constexpr uint32_t NY_ANCHOR_STATE_READY = 1;
constexpr uint32_t NY_ANCHOR_STATE_TEARDOWN = 2;

struct BlkIpcAnchorTag {
    uint32_t u4Tag;
    uint32_t u4State;
    uint32_t u4RefCount;
    uint32_t u4SpinLock;
    uint32_t u4TableAddr;
    uint32_t u4Pid;
#if UINTPTR_MAX > 0xFFFFFFFFu
    uint32_t u4TableAddrHigh;
    uint32_t u4Reserved;
#endif
};
#if UINTPTR_MAX > 0xFFFFFFFFu
static_assert(sizeof(BlkIpcAnchorTag) == 32, "anchor size on 64-bit builds");
#else
static_assert(sizeof(BlkIpcAnchorTag) == 24, "anchor size");
#endif

struct BlkFileTableTag;

// Attach this copy of the library to the process's anchor and file table (creating both when it
// is the first copy) / detach it. The last copy to leave removes the anchor and frees the table
// if no file is open in it. Failures are logged at level 3 and return NY_ERR_UNEXPECTED.
// Every process attaches at load and detaches at normal exit; the library start and stop attach
// and detach explicitly, and any later use attaches again on demand.
uint32_t UnixIpcInit();
uint32_t UnixIpcDeinit();
// The process's file table, attaching first if needed; null when that fails.
BlkFileTableTag* UnixIpcFileTable();
// "/ny.%08x.%d" for this executable and process.
bool GetSHDataName(char* szName, uint32_t cchName);
