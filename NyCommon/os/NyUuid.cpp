#include "os/NyUuid.h"

#include <string.h>

#include "crypto/NyRand.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"

uint32_t NyGenUuid(char* szBuf, uint32_t cchBuf) {
    if (szBuf == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    memset(szBuf, 0, cchBuf);
    if (cchBuf < NY_UUID_TEXT_SIZE) {
        return NY_ERR_BUFFER_TOO_SMALL;
    }
    // All 128 bits random: no version or variant bits are set.
    uint8_t u1[16] = {};
    uint32_t u4Result = tinyRandBytesEx(u1, sizeof(u1));
    if (u4Result != NY_OK) {
        return u4Result;
    }
    NyStrPrintf(szBuf, cchBuf,
                "%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X", u1[0],
                u1[1], u1[2], u1[3], u1[4], u1[5], u1[6], u1[7], u1[8], u1[9], u1[10], u1[11],
                u1[12], u1[13], u1[14], u1[15]);
    return NY_OK;
}
