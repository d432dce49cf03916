// Random bytes for the library (GUIDs, keys): drawn from libcrypto's generator, which seeds
// itself from the kernel, reseeds after a fork and is safe from any thread.
#pragma once

#include <cstdint>

// 0; NY_ERR_INVALID_ARGUMENT for a null buffer or a length that is not positive;
// NY_ERR_RANDOM_FAILED when the generator cannot deliver (the buffer is then zeroed or partial).
uint32_t tinyRandBytesEx(void* pvOut, int32_t i4Len);
// Adds caller material to the generator. NY_ERR_INVALID_ARGUMENT as above.
uint32_t tinyRandSeed(const void* pvSeed, int32_t i4Len);
// tinyRandBytesEx with the result dropped; nothing happens for a null buffer or length 0.
void NyGetRand(void* pvOut, int32_t i4Len);
