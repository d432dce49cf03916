// The per-process anchor: a small POSIX shared-memory object "/ny.%08x.%d" (hash of the
// executable's path, process id) through which every copy of this library loaded into one
// process finds the same file table. Words, unsigned 32-bit: tag 0x53484400; state (0 new,
// 1 ready, 2 being torn down); reference count; spin lock; table address; process id.
#pragma once

#include <cstdint>

constexpr uint32_t NY_ANCHOR_TAG = 0x53484400;
constexpr uint32_t NY_ANCHOR_NAME_SIZE = 64;

struct BlkFileTableTag;

// Set up / tear down this copy's attachment to the process's anchor and file table. Counted:
// the last copy to leave frees the table and removes the anchor. Failures are logged at level 3
// and return NY_ERR_UNEXPECTED.
uint32_t UnixIpcInit();
uint32_t UnixIpcDeinit();
// The process's file table, attaching on first use; null when that fails.
BlkFileTableTag* UnixIpcFileTable();
// "/ny.%08x.%d" for this executable and process.
bool GetSHDataName(char* szName, uint32_t cchName);
