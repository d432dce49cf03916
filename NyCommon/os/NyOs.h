// Sleeps, tick counts and process facts.
#pragma once

#include <cstdint>

uint32_t NyOsSleep(uint32_t u4Ms);
// Milliseconds of the monotonic clock; the 32-bit form is the low half.
uint64_t NyOsGetTickCount64();
uint32_t NyOsGetTickCount();
uint32_t NyOsGetCurrentPid();
uint32_t NyOsGetCurrentTid();
uint32_t NyOsGetLastError();
