#include "uiblock/NyTripleDesKey.h"

#include "crypto/NyHash.h"
#include "runtime/NySafe.h"

namespace {

// Held by every client as well: changing it breaks every protected exchange.
constexpr char kDeriveConstant[] = "TarnFieldKey2";
constexpr uint32_t kDeriveConstantLen = sizeof(kDeriveConstant) - 1;  // no terminator hashed

constexpr uint32_t kSha1Len = 20;
constexpr uint32_t kPartALen = 16;    // first 16 bytes of SHA-1(seed)
constexpr uint32_t kPartBOffset = 6;  // bytes 6 to 19 of SHA-1(constant)
constexpr uint32_t kPartBLen = 14;
constexpr uint32_t kTailOffset = 12;  // bytes 12 to 15 of A close the key
constexpr uint32_t kMixLen = 2 * (kPartALen + kPartBLen);

static_assert(kSha1Len + (kPartALen - kTailOffset) == NY_TDES_KEY_SIZE, "24-byte key");

struct BlkDeriveScratchTag {
    uint8_t au1D1[kSha1Len];
    uint8_t au1D2[kSha1Len];
    uint8_t au1Mix[kMixLen];  // A, B, A, B
    uint8_t au1D3[kSha1Len];
};

bool Derive(const uint8_t* pu1Seed, uint8_t* pu1Key, BlkDeriveScratchTag* pS) {
    const uint8_t* pu1Const = reinterpret_cast<const uint8_t*>(kDeriveConstant);
    if (NyHashData(NY_HASH_SHA1, pu1Seed, NY_TDES_SEED_SIZE, pS->au1D1) != kSha1Len ||
        NyHashData(NY_HASH_SHA1, pu1Const, kDeriveConstantLen, pS->au1D2) != kSha1Len) {
        return false;
    }
    uint8_t* pu1Mix = pS->au1Mix;
    for (int i = 0; i < 2; ++i) {
        NyMemCopy(pu1Mix, kPartALen, pS->au1D1, kPartALen);
        NyMemCopy(pu1Mix + kPartALen, kPartBLen, pS->au1D2 + kPartBOffset, kPartBLen);
        pu1Mix += kPartALen + kPartBLen;
    }
    if (NyHashData(NY_HASH_SHA1, pS->au1Mix, kMixLen, pS->au1D3) != kSha1Len) {
        return false;
    }
    NyMemCopy(pu1Key, kSha1Len, pS->au1D3, kSha1Len);
    NyMemCopy(pu1Key + kSha1Len, kPartALen - kTailOffset, pS->au1D1 + kTailOffset,
              kPartALen - kTailOffset);
    return true;
}

}  // namespace

bool SafeCommunication::TripleDes168GenKey(const uint8_t* pu1Seed, int32_t i4SeedLen,
                                           uint8_t* pu1Key, int32_t* pi4KeyLen) {
    if (pu1Seed == nullptr || i4SeedLen < NY_TDES_SEED_SIZE || pu1Key == nullptr ||
        pi4KeyLen == nullptr || *pi4KeyLen < NY_TDES_KEY_SIZE) {
        return false;
    }
    BlkDeriveScratchTag scratch;
    uint8_t au1Key[NY_TDES_KEY_SIZE];
    const bool bOk = Derive(pu1Seed, au1Key, &scratch);
    if (bOk) {
        NyMemCopy(pu1Key, NY_TDES_KEY_SIZE, au1Key, NY_TDES_KEY_SIZE);
        *pi4KeyLen = NY_TDES_KEY_SIZE;
    }
    NyMemSafeClear(&scratch, sizeof(scratch));
    NyMemSafeClear(au1Key, sizeof(au1Key));
    return bOk;
}

bool NyTripleDesDeriveKey(const uint8_t* pu1Seed, int32_t i4SeedLen, uint8_t* pu1Key,
                          int32_t* pi4KeyLen) {
    return SafeCommunication::TripleDes168GenKey(pu1Seed, i4SeedLen, pu1Key, pi4KeyLen);
}
