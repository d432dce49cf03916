// Handles of the named objects. Each is an opaque pointer to a heap record owned by the caller
// from its create/open until the matching close/destroy. Every record starts with a 32-bit tag
// that each call checks: a handle of another kind gives NY_ERR_WRONG_HANDLE, a null handle
// NY_ERR_INVALID_ARGUMENT. The handle types are plain pointers on purpose, so a handle of any
// kind can be stored in a generic slot (the channel uses its region handle as channel handle).
#pragma once

#include <cstdint>

typedef void* NY_EVENT_HANDLE;
typedef void* NY_MUTEX_HANDLE;
typedef void* NY_SHM_HANDLE;

// Tags at the start of each record.
constexpr uint32_t NY_EVENT_TAG = 0x4553454D;  // the bytes "MESE" in memory order
constexpr uint32_t NY_MUTEX_TAG = 0x004D5458;
constexpr uint32_t NY_SHM_TAG = 0x5353484D;

// NY_ERR_INVALID_ARGUMENT for a null handle, NY_ERR_WRONG_HANDLE when its record does not start
// with u4Tag, else 0.
uint32_t NyIpcCheckHandle(const void* h, uint32_t u4Tag);

// Time-out value that waits forever.
constexpr uint32_t NY_WAIT_INFINITE = 0xFFFFFFFF;
