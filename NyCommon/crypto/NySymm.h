// Symmetric cipher facade: callers name an algorithm by identifier and pass plain buffers; the
// facade checks identifier and lengths, runs the primitive (libcrypto EVP) and reports u32
// codes. No padding is ever added or removed: inputs are whole blocks, output length = input.
#pragma once

#include <cstdint>

#include "crypto/NyCryptoResult.h"
#include "runtime/NyTypes.h"

// Algorithm identifiers (one bit each).
constexpr uint32_t NY_SYMM_DES = 1;
constexpr uint32_t NY_SYMM_TDES_2KEY = 2;
constexpr uint32_t NY_SYMM_TDES_3KEY = 4;
constexpr uint32_t NY_SYMM_AES128 = 8;
constexpr uint32_t NY_SYMM_AES192 = 16;
constexpr uint32_t NY_SYMM_AES256 = 32;
constexpr uint32_t NY_SYMM_EXTERN_1 = 256;  // first registered external block cipher
constexpr uint32_t NY_SYMM_EXTERN_2 = 512;  // second registered external block cipher
constexpr uint32_t NY_SYMM_SM4 = 1024;
constexpr uint32_t NY_SYMM_RC4 = 2048;
constexpr uint32_t NY_SYMM_UNSUPPORTED_5 = 4096;  // listed (key 5, block 1); always refused
constexpr uint32_t NY_SYMM_RC2_128 = 8192;
constexpr uint32_t NY_SYMM_RC2_64 = 16384;
constexpr uint32_t NY_SYMM_RC2_40 = 32768;

// Capability flags of an external implementation.
constexpr uint32_t NY_SYMM_EXTERN_CAP_CBC = 1;

// The work function of an external block cipher. The facade has already checked identifier,
// arguments and lengths; *pu4OutLen holds the output capacity on entry.
typedef uint32_t (*PFN_NY_SYMM_EXTERN)(uint32_t u4AlgId, EnBool enCbc, EnBool enEncrypt,
                                       const uint8_t* pu1Key, const uint8_t* pu1Iv,
                                       const uint8_t* pu1In, uint32_t u4InLen, uint8_t* pu1Out,
                                       uint32_t* pu4OutLen);

struct BlkSymmExternImplTag {
    uint32_t u4AlgId;
    uint32_t u4Flags;  // NY_SYMM_EXTERN_CAP_*
    PFN_NY_SYMM_EXTERN pfnCipher;
};

// *pu4OutLen: in, the capacity of pu1Out; out, the input length (also when pu1Out is null,
// which asks for the size, and when the capacity is too small).
uint32_t NySymmEncEcb(uint32_t u4AlgId, const uint8_t* pu1Key, const uint8_t* pu1In,
                      uint32_t u4InLen, uint8_t* pu1Out, uint32_t* pu4OutLen);
uint32_t NySymmDecEcb(uint32_t u4AlgId, const uint8_t* pu1Key, const uint8_t* pu1In,
                      uint32_t u4InLen, uint8_t* pu1Out, uint32_t* pu4OutLen);
uint32_t NySymmEncCbc(uint32_t u4AlgId, const uint8_t* pu1Key, const uint8_t* pu1Iv,
                      const uint8_t* pu1In, uint32_t u4InLen, uint8_t* pu1Out, uint32_t* pu4OutLen);
uint32_t NySymmDecCbc(uint32_t u4AlgId, const uint8_t* pu1Key, const uint8_t* pu1Iv,
                      const uint8_t* pu1In, uint32_t u4InLen, uint8_t* pu1Out, uint32_t* pu4OutLen);

// Block and key size in bytes; NY_ERR_INVALID_ARGUMENT for an unknown identifier or a null
// output.
uint32_t NySymmGetInfo(uint32_t u4AlgId, uint32_t* pu4BlockSize, uint32_t* pu4KeySize);

// Registers (or, with a null function, removes) the implementation behind identifier 256 or
// 512. 0, or NY_ERR_INVALID_ARGUMENT for any other identifier.
uint32_t NySymmSetExternImpl(uint32_t u4AlgId, uint32_t u4Flags, PFN_NY_SYMM_EXTERN pfnCipher);
