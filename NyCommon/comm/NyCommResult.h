// Result codes of the request/response channel. The codes of the objects beneath it (time-out,
// object missing, semaphore failure, ...) pass through unchanged; they are in ipc/NyIpcResult.h.
#pragma once

#include <cstdint>

#include "ipc/NyIpcResult.h"
#include "runtime/NyResult.h"

// Handle not in this process's channel table, server not connected, or table update failed.
constexpr uint32_t NY_ERR_COMM_NOT_CONNECTED = 0xE060000C;
// Request longer than the channel's data area (length + 256 > region size).
constexpr uint32_t NY_ERR_COMM_REQUEST_TOO_LARGE = NY_ERR_MEM_TOO_SMALL;
