// Log time stamps: 100-ns intervals since 1601-01-01 UTC, from the wall clock in microseconds.
#pragma once

#include <cstdint>

constexpr uint64_t NY_LOG_EPOCH_1601 = 0x019DB1DED53E8000ULL;  // 1970-01-01 in 100-ns units

constexpr uint64_t NyLogTimeFromUnix(uint64_t u8Seconds, uint64_t u8Microseconds) {
    return u8Seconds * 10000000ULL + u8Microseconds * 10ULL + NY_LOG_EPOCH_1601;
}

// The wall clock now, in the units above.
uint64_t NyLogTimeNow();
