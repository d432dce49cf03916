// One run of a libcrypto cipher over whole blocks, padding off.
#pragma once

#include <openssl/evp.h>

#include <cstdint>

struct BlkEvpCipherJobTag {
    const EVP_CIPHER* pCipher;
    const uint8_t* pu1Key;
    uint32_t u4KeyLen;      // set on the context only for RC2 (variable key length)
    uint32_t u4Rc2KeyBits;  // RC2 effective key bits; 0 for every other cipher
    const uint8_t* pu1Iv;   // null for ECB and for streams
    bool bEncrypt;
};

// Writes exactly u4InLen bytes to pu1Out (which may equal pu1In). False on any libcrypto
// failure.
bool NyEvpCipherRun(const BlkEvpCipherJobTag& job, const uint8_t* pu1In, uint32_t u4InLen,
                    uint8_t* pu1Out);
