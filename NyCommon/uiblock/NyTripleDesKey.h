// The triple-DES key that protects a UI block, derived by both sides from the block's 16-byte
// seed and a constant both hold; the key itself never crosses the shared memory.
#pragma once

#include <cstdint>

constexpr int32_t NY_TDES_SEED_SIZE = 16;
constexpr int32_t NY_TDES_KEY_SIZE = 24;

class SafeCommunication {
public:
    // Derives a 24-byte three-key triple-DES key from the first 16 bytes of pu1Seed.
    // False, nothing written, unless pu1Seed and pu1Key are non-null, i4SeedLen >= 16 and
    // *pi4KeyLen >= 24; on success *pi4KeyLen = 24. DES parity bits are left as derived.
    static bool TripleDes168GenKey(const uint8_t* pu1Seed, int32_t i4SeedLen, uint8_t* pu1Key,
                                   int32_t* pi4KeyLen);
};

// The same derivation as a flat library entry.
bool NyTripleDesDeriveKey(const uint8_t* pu1Seed, int32_t i4SeedLen, uint8_t* pu1Key,
                          int32_t* pi4KeyLen);
