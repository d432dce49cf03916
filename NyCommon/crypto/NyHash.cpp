#include "crypto/NyHash.h"

#include "crypto/NyCryptoProvider.h"
#include "crypto/NyKeccak.h"
#include "runtime/NySafe.h"

namespace {

struct BlkHashAlgTag {
    uint32_t u4AlgId;
    uint32_t u4DigestSize;
    uint32_t u4BlockSize;
    uint32_t u4StateSize;   // the chaining state the algorithm carries between blocks
    const char* szEvpName;  // null: the original Keccak, computed here
};

const BlkHashAlgTag m_aHashAlgs[] = {
    {NY_HASH_MD5, 16, 64, 16, "MD5"},
    {NY_HASH_SHA1, 20, 64, 20, "SHA1"},
    {NY_HASH_SHA256, 32, 64, 32, "SHA256"},
    {NY_HASH_SHA384, 48, 128, 64, "SHA384"},
    {NY_HASH_SHA512, 64, 128, 64, "SHA512"},
    {NY_HASH_SM3, 32, 64, 32, "SM3"},
    {NY_HASH_MD5_SHA1, 36, 64, 36, "MD5-SHA1"},
    {NY_HASH_RIPEMD160, 20, 64, 20, "RIPEMD160"},
    {NY_HASH_SHA3_224, 28, 144, 200, "SHA3-224"},
    {NY_HASH_SHA3_256, 32, 136, 200, "SHA3-256"},
    {NY_HASH_SHA3_384, 48, 104, 200, "SHA3-384"},
    {NY_HASH_SHA3_512, 64, 72, 200, "SHA3-512"},
    {NY_HASH_KECCAK_224, 28, 144, 200, nullptr},
    {NY_HASH_KECCAK_256, 32, 136, 200, nullptr},
    {NY_HASH_KECCAK_384, 48, 104, 200, nullptr},
    {NY_HASH_KECCAK_512, 64, 72, 200, nullptr},
};

// The caller-defined digest: its length comes from the context.
constexpr uint32_t kCustomBlockSize = 64;

const BlkHashAlgTag* FindHashAlg(uint32_t u4AlgId) {
    for (const BlkHashAlgTag& alg : m_aHashAlgs) {
        if (alg.u4AlgId == u4AlgId) {
            return &alg;
        }
    }
    return nullptr;
}

bool DigestWithEvp(const BlkHashAlgTag& alg, const uint8_t* pu1Data, uint32_t u4DataLen,
                   uint8_t* pu1Digest) {
    const EVP_MD* pMd = NyCryptoDigest(alg.szEvpName);
    unsigned int u4Len = 0;
    return pMd != nullptr && EVP_Digest(pu1Data, u4DataLen, pu1Digest, &u4Len, pMd, nullptr) == 1 &&
           u4Len == alg.u4DigestSize;
}

}  // namespace

uint32_t NyHashData(uint32_t u4AlgId, const uint8_t* pu1Data, uint32_t u4DataLen,
                    uint8_t* pu1Digest) {
    if (pu1Data == nullptr || u4DataLen == 0 || pu1Digest == nullptr ||
        u4AlgId == NY_HASH_MD5_SHA1) {
        return 0;
    }
    const BlkHashAlgTag* pAlg = FindHashAlg(u4AlgId);
    if (pAlg == nullptr) {
        return 0;
    }
    uint8_t au1Digest[NY_HASH_MAX_DIGEST];
    const bool bOk = pAlg->szEvpName != nullptr
                         ? DigestWithEvp(*pAlg, pu1Data, u4DataLen, au1Digest)
                         : NyKeccakDigest(NY_KECCAK_PAD_ORIGINAL, pAlg->u4DigestSize, pu1Data,
                                          u4DataLen, au1Digest);
    if (bOk) {
        NyMemCopy(pu1Digest, pAlg->u4DigestSize, au1Digest, pAlg->u4DigestSize);
    }
    NyMemSafeClear(au1Digest, sizeof(au1Digest));
    return bOk ? pAlg->u4DigestSize : 0;
}

uint32_t NyHashGetInfo(const BlkHashCtxTag* pCtx, uint32_t* pu4BlockSize, uint32_t* pu4StateSize,
                       uint32_t* pu4DigestSize) {
    if (pCtx == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    uint32_t u4Block = kCustomBlockSize;
    uint32_t u4State = pCtx->u4DigestLen;
    uint32_t u4Digest = pCtx->u4DigestLen;
    if (pCtx->u4AlgId != NY_HASH_CUSTOM) {
        const BlkHashAlgTag* pAlg = FindHashAlg(pCtx->u4AlgId);
        if (pAlg == nullptr) {
            return NY_ERR_INVALID_ARGUMENT;
        }
        u4Block = pAlg->u4BlockSize;
        u4State = pAlg->u4StateSize;
        u4Digest = pAlg->u4DigestSize;
    }
    if (pu4BlockSize != nullptr) {
        *pu4BlockSize = u4Block;
    }
    if (pu4StateSize != nullptr) {
        *pu4StateSize = u4State;
    }
    if (pu4DigestSize != nullptr) {
        *pu4DigestSize = u4Digest;
    }
    return NY_OK;
}

uint32_t NyHashGetAlgId(const BlkHashCtxTag* pCtx, uint32_t* pu4AlgId) {
    if (pCtx == nullptr || pu4AlgId == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    *pu4AlgId = pCtx->u4AlgId;
    return NY_OK;
}
