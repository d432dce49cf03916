#include "crypto/NyRand.h"

#include <openssl/rand.h>
#include <string.h>

#include "log/NyLog.h"
#include "runtime/NyResult.h"

uint32_t tinyRandBytesEx(void* pvOut, int32_t i4Len) {
    if (pvOut == nullptr || i4Len <= 0) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    memset(pvOut, 0, static_cast<size_t>(i4Len));
    // libcrypto mixes its own fresh material into every request, so the caller's tick count,
    // pid and tid need not be stirred in first.
    if (RAND_bytes(static_cast<unsigned char*>(pvOut), i4Len) != 1) {
        NY_LOG_RESULT(NY_ERR_RANDOM_FAILED);
        return NY_ERR_RANDOM_FAILED;
    }
    return NY_OK;
}

uint32_t tinyRandSeed(const void* pvSeed, int32_t i4Len) {
    if (pvSeed == nullptr || i4Len <= 0) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    RAND_seed(pvSeed, i4Len);
    return NY_OK;
}

void NyGetRand(void* pvOut, int32_t i4Len) {
    if (pvOut == nullptr || i4Len == 0) {
        return;
    }
    tinyRandBytesEx(pvOut, i4Len);
}
