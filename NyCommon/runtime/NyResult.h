// Result codes shared by every module: unsigned 32-bit, 0 = success.
// A module with codes of its own keeps them in its own header (for example comm/NyCommResult.h).
#pragma once

#include <cstdint>

constexpr uint32_t NY_OK = 0;
constexpr uint32_t NY_ERR_OUT_OF_MEMORY = 0xE0600002;
constexpr uint32_t NY_ERR_BAD_ARGUMENT = 0xE0600003;   // bad or missing argument, malformed data
constexpr uint32_t NY_ERR_MEM_TOO_SMALL = 0xE0600004;  // NyMemCpy: destination smaller than count
constexpr uint32_t NY_ERR_BUFFER_TOO_SMALL = 0xE0600005;  // the needed size is returned
constexpr uint32_t NY_ERR_INVALID_ARGUMENT = 0xE0600007;  // invalid or unsupported argument
constexpr uint32_t NY_ERR_NOT_FOUND = 0xE0600008;
constexpr uint32_t NY_ERR_GLOBAL_REFUSED = 0xE0600013;  // "global" objects refused on this platform
constexpr uint32_t NY_ERR_RANDOM_FAILED = 0xE0600018;   // the random pool failed to deliver
constexpr uint32_t NY_ERR_NOT_INITIALISED = 0xE060001D;
constexpr uint32_t NY_ERR_UNEXPECTED = 0xE0FFFFFF;  // unexpected system failure
