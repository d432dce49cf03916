// Atomic 32-bit operations and a spin lock on a word.
#pragma once

#include <cstdint>

// Spin lock: CAS 0 -> 1, sleeping 10 ms after each failed attempt; release CAS 1 -> 0.
void NyAtomicGetLock(volatile uint32_t* pu4Word);
void NyAtomicReleaseLock(volatile uint32_t* pu4Word);
// Return the previous value; a null pointer returns 0.
uint32_t NyAtomicAdd32(volatile uint32_t* pu4Word, uint32_t u4Value);
uint32_t NyAtomicSub32(volatile uint32_t* pu4Word, uint32_t u4Value);
// Compare-and-swap: success / the previous value.
bool NyAtomicCAS32(volatile uint32_t* pu4Word, uint32_t u4Expected, uint32_t u4Desired);
uint32_t NyAtomicCASVal32(volatile uint32_t* pu4Word, uint32_t u4Expected, uint32_t u4Desired);
