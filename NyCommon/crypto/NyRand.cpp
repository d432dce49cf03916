#include "crypto/NyRand.h"

#include <openssl/crypto.h>
#include <string.h>

#include "crypto/NyRandPool.h"
#include "log/NyLog.h"
#include "os/NyOs.h"
#include "runtime/NyResult.h"

namespace {

constexpr size_t NY_RAND_FRESH_SIZE = 48;
constexpr size_t NY_RAND_FRESH_POOL_OFFSET = 16;

void NyPutBigEndian32(uint8_t* pu1, uint32_t u4Value) {
    pu1[0] = static_cast<uint8_t>(u4Value >> 24);
    pu1[1] = static_cast<uint8_t>(u4Value >> 16);
    pu1[2] = static_cast<uint8_t>(u4Value >> 8);
    pu1[3] = static_cast<uint8_t>(u4Value);
}

// Tick count, pid and tid (most significant byte first), four zero bytes, then 32 pool bytes.
bool NyRandStirFresh() {
    uint8_t au1Fresh[NY_RAND_FRESH_SIZE] = {};
    NyPutBigEndian32(au1Fresh, NyOsGetTickCount());
    NyPutBigEndian32(au1Fresh + 4, NyOsGetCurrentPid());
    NyPutBigEndian32(au1Fresh + 8, NyOsGetCurrentTid());
    bool bOk = tinycrypto::RAND_bytes(au1Fresh + NY_RAND_FRESH_POOL_OFFSET,
                                      NY_RAND_FRESH_SIZE - NY_RAND_FRESH_POOL_OFFSET) == 1 &&
               tinycrypto::RAND_seed(au1Fresh, sizeof(au1Fresh)) == 1;
    OPENSSL_cleanse(au1Fresh, sizeof(au1Fresh));
    return bOk;
}

}  // namespace

uint32_t tinyRandBytesEx(void* pvOut, int32_t i4Len) {
    if (pvOut == nullptr || i4Len <= 0) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    memset(pvOut, 0, static_cast<size_t>(i4Len));
    if (!NyRandStirFresh() ||
        tinycrypto::RAND_bytes(static_cast<unsigned char*>(pvOut), i4Len) != 1) {
        NY_LOG_RESULT(NY_ERR_RANDOM_FAILED);
        return NY_ERR_RANDOM_FAILED;
    }
    return NY_OK;
}

uint32_t tinyRandSeed(const void* pvSeed, int32_t i4Len) {
    if (pvSeed == nullptr || i4Len <= 0) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    tinycrypto::RAND_seed(pvSeed, i4Len);
    return NY_OK;
}

void NyGetRand(void* pvOut, int32_t i4Len) {
    if (pvOut == nullptr || i4Len == 0) {
        return;
    }
    tinyRandBytesEx(pvOut, i4Len);
}
