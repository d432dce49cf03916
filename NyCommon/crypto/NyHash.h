// Hash facade: one-pass digests by algorithm identifier, and the sizes of each algorithm.
#pragma once

#include <cstdint>

#include "crypto/NyCryptoResult.h"

constexpr uint32_t NY_HASH_MD5 = 0x80000001;
constexpr uint32_t NY_HASH_SHA1 = 0x80000002;
constexpr uint32_t NY_HASH_SHA256 = 0x80000003;
constexpr uint32_t NY_HASH_SHA384 = 0x80000004;
constexpr uint32_t NY_HASH_SHA512 = 0x80000005;
constexpr uint32_t NY_HASH_SM3 = 0x80000006;
constexpr uint32_t NY_HASH_MD5_SHA1 = 0x80000007;  // MD5 then SHA-1, 36 bytes
constexpr uint32_t NY_HASH_RIPEMD160 = 0x80000008;
constexpr uint32_t NY_HASH_SHA3_224 = 0x80000009;
constexpr uint32_t NY_HASH_SHA3_256 = 0x8000000A;
constexpr uint32_t NY_HASH_SHA3_384 = 0x8000000B;
constexpr uint32_t NY_HASH_SHA3_512 = 0x8000000C;
// The SHA-3 sizes with the original Keccak padding (before FIPS 202 fixed the domain bits).
constexpr uint32_t NY_HASH_KECCAK_224 = 0x8000000D;
constexpr uint32_t NY_HASH_KECCAK_256 = 0x8000000E;
constexpr uint32_t NY_HASH_KECCAK_384 = 0x8000000F;
constexpr uint32_t NY_HASH_KECCAK_512 = 0x80000010;
constexpr uint32_t NY_HASH_CUSTOM = 0x800000FF;  // digest length taken from the context

constexpr uint32_t NY_HASH_MAX_DIGEST = 64;

// The part of a hash context the facade reads: the identifier and, for NY_HASH_CUSTOM, the
// digest length chosen by the caller.
struct BlkHashCtxTag {
    uint32_t u4AlgId;
    uint32_t u4DigestLen;
};

// Digest of u4DataLen bytes into pu1Digest (room for the algorithm's digest, at most
// NY_HASH_MAX_DIGEST). Returns the digest length, or 0 (nothing written) for null data, zero
// length, null output, NY_HASH_MD5_SHA1, or any identifier outside MD5 .. Keccak-512.
uint32_t NyHashData(uint32_t u4AlgId, const uint8_t* pu1Data, uint32_t u4DataLen,
                    uint8_t* pu1Digest);

// Block, internal state and digest size in bytes of the context's algorithm; any output
// pointer may be null. NY_ERR_INVALID_ARGUMENT for a null context or an unknown identifier.
uint32_t NyHashGetInfo(const BlkHashCtxTag* pCtx, uint32_t* pu4BlockSize, uint32_t* pu4StateSize,
                       uint32_t* pu4DigestSize);
// The context's identifier; NY_ERR_INVALID_ARGUMENT for a null argument.
uint32_t NyHashGetAlgId(const BlkHashCtxTag* pCtx, uint32_t* pu4AlgId);
