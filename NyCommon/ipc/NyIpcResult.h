// Result codes of the named objects (events, mutexes, shared memory) and the file layer beneath
// them. The channel layer returns these too; its own codes live in comm/NyCommResult.h.
#pragma once

#include <cstdint>

constexpr uint32_t NY_ERR_LOCK_FAILED = 0xE0600001;    // unexpected lock failure
constexpr uint32_t NY_ERR_TIMEOUT = 0xE060000B;        // time-out; zero-time-out wait found nothing
constexpr uint32_t NY_ERR_NOT_OWNER = 0xE0600014;      // release by a thread that holds no lock
constexpr uint32_t NY_ERR_CREATE_FAILED = 0xE0600015;  // an OS object could not be created
constexpr uint32_t NY_ERR_UNLOCK_FAILED = 0xE0600016;  // record unlock failed
constexpr uint32_t NY_ERR_OBJECT_ABSENT = 0xE0600017;  // a named object to open does not exist
constexpr uint32_t NY_ERR_SEMAPHORE_FAILED = 0xE060001A;  // a semaphore operation failed
constexpr uint32_t NY_ERR_WRONG_HANDLE = 0xE060001C;      // handle of the wrong object kind
