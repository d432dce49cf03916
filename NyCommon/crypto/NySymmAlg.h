// The table of symmetric algorithm identifiers: sizes, family and the libcrypto primitive.
#pragma once

#include <cstdint>

enum EnSymmFamily : uint32_t {
    SYMM_FAMILY_BLOCK = 0,  // DES, AES and SM4: libcrypto ECB/CBC routines
    SYMM_FAMILY_EXTERN,     // a registered external implementation
    SYMM_FAMILY_RC4,
    SYMM_FAMILY_RC2,
    SYMM_FAMILY_NONE,  // listed but without an implementation
};

struct BlkSymmAlgTag {
    uint32_t u4AlgId;
    uint32_t u4KeySize;
    uint32_t u4BlockSize;
    EnSymmFamily enFamily;
    const char* szEcb;  // libcrypto names of the ECB and CBC routines (RC4: the stream)
    const char* szCbc;
};

// The entry for an identifier, or null when it is not one of ours.
const BlkSymmAlgTag* _CheckAlgId(uint32_t u4AlgId);
