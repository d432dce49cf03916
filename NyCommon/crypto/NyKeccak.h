// The Keccak sponge (Keccak-f[1600]) with a caller-chosen domain byte. libcrypto offers the
// FIPS 202 SHA-3 functions but not the original Keccak padding, which this provides.
#pragma once

#include <cstddef>
#include <cstdint>

constexpr uint8_t NY_KECCAK_PAD_ORIGINAL = 0x01;  // Keccak as submitted
constexpr uint8_t NY_KECCAK_PAD_SHA3 = 0x06;      // FIPS 202 SHA-3

// Digest of u4DigestLen bytes (28, 32, 48 or 64; capacity = 2 * digest) over pu1Data.
// False for any other digest length.
bool NyKeccakDigest(uint8_t u1Pad, uint32_t u4DigestLen, const uint8_t* pu1Data, size_t uLen,
                    uint8_t* pu1Digest);
