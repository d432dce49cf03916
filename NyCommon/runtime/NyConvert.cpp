#include "runtime/NyConvert.h"

#include <errno.h>
#include <iconv.h>
#include <string.h>
#include <wchar.h>

#include "log/NyLog.h"
#include "runtime/NyResult.h"

namespace {

const char* const NY_WIDE_CHARSET = "UTF-32LE";

const char* NyCodePageCharset(uint32_t u4CodePage) {
    switch (u4CodePage) {
        case NY_CP_UTF8_DEFAULT:
        case NY_CP_UTF8:
            return "UTF-8";
        case NY_CP_GB18030:
            return "GB18030";
        case NY_CP_BIG5:
            return "CP950";
        default:
            return nullptr;
    }
}

// Output of one conversion: written into the caller's buffer while it fits, counted always,
// so that one pass both converts and answers the size query without allocating.
struct BlkConvertOutTag {
    char* pu1Out;
    size_t cbCapacity;
    size_t cbNeeded;
};

void NyConvertEmit(BlkConvertOutTag& out, const char* pu1Chunk, size_t cbChunk) {
    if (out.pu1Out != nullptr && out.cbNeeded + cbChunk <= out.cbCapacity) {
        memcpy(out.pu1Out + out.cbNeeded, pu1Chunk, cbChunk);
    }
    out.cbNeeded += cbChunk;
}

// Converts cbIn bytes (the terminating NUL included) from szFrom to szTo.
uint32_t NyIconvRun(const char* szFrom, const char* szTo, const char* pu1In, size_t cbIn,
                    BlkConvertOutTag& out) {
    iconv_t hConv = iconv_open(szTo, szFrom);
    if (hConv == reinterpret_cast<iconv_t>(-1)) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    char* pIn = const_cast<char*>(pu1In);
    uint32_t u4Result = NY_OK;
    while (cbIn > 0) {
        char au1Chunk[256];
        char* pChunk = au1Chunk;
        size_t cbRoom = sizeof(au1Chunk);
        size_t rc = iconv(hConv, &pIn, &cbIn, &pChunk, &cbRoom);
        NyConvertEmit(out, au1Chunk, sizeof(au1Chunk) - cbRoom);
        if (rc == static_cast<size_t>(-1) && errno != E2BIG) {
            u4Result = NY_ERR_BAD_ARGUMENT;  // invalid or incomplete input sequence
            break;
        }
    }
    iconv_close(hConv);
    return u4Result;
}

// Shared body of both directions; sizes in units of cbUnit bytes.
uint32_t NyConvertText(const char* szFrom, const char* szTo, const char* pu1In, size_t cbIn,
                       void* pvOut, uint32_t* pu4Len, size_t cbUnit) {
    BlkConvertOutTag out = {static_cast<char*>(pvOut), 0, 0};
    if (pvOut != nullptr) {
        out.cbCapacity = static_cast<size_t>(*pu4Len) * cbUnit;
    }
    uint32_t u4Result = NyIconvRun(szFrom, szTo, pu1In, cbIn, out);
    if (u4Result == NY_OK) {
        *pu4Len = static_cast<uint32_t>(out.cbNeeded / cbUnit);
        if (pvOut != nullptr && out.cbNeeded > out.cbCapacity) {
            u4Result = NY_ERR_BUFFER_TOO_SMALL;
        }
    }
    if (u4Result != NY_OK && pvOut != nullptr && out.cbCapacity >= cbUnit) {
        memset(pvOut, 0, cbUnit);  // never leave a partial, unterminated text behind
    }
    if (u4Result != NY_OK) {
        NY_LOG_RESULT(u4Result);
    }
    return u4Result;
}

// Input text and length are required; the code page must be one of ours.
uint32_t NyConvertCheck(const void* pvIn, const uint32_t* pu4Len, uint32_t u4CodePage,
                        const char** pszCharset) {
    uint32_t u4Result = NY_OK;
    if (pvIn == nullptr || pu4Len == nullptr) {
        u4Result = NY_ERR_BAD_ARGUMENT;
    } else if ((*pszCharset = NyCodePageCharset(u4CodePage)) == nullptr) {
        u4Result = NY_ERR_INVALID_ARGUMENT;
    }
    if (u4Result != NY_OK) {
        NY_LOG_RESULT(u4Result);
    }
    return u4Result;
}

}  // namespace

void NyHex2Asc(const void* pvData, uint32_t u4Len, char* szOut) {
    static const char s_szDigits[] = "0123456789ABCDEF";
    const uint8_t* pu1Data = static_cast<const uint8_t*>(pvData);
    for (uint32_t i = 0; i < u4Len; ++i) {
        szOut[2 * i] = s_szDigits[pu1Data[i] >> 4];
        szOut[2 * i + 1] = s_szDigits[pu1Data[i] & 0x0F];
    }
    szOut[2 * static_cast<size_t>(u4Len)] = 0;
}

uint32_t NyWideCharToMultiByte(const wchar_t* szWide, uint32_t u4CodePage, char* szOut,
                               uint32_t* pu4Len) {
    const char* szCharset = nullptr;
    uint32_t u4Result = NyConvertCheck(szWide, pu4Len, u4CodePage, &szCharset);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    size_t cbIn = (wcslen(szWide) + 1) * sizeof(wchar_t);
    return NyConvertText(NY_WIDE_CHARSET, szCharset, reinterpret_cast<const char*>(szWide), cbIn,
                         szOut, pu4Len, sizeof(char));
}

uint32_t NyMultiByteToWideChar(const char* szMulti, uint32_t u4CodePage, wchar_t* szOut,
                               uint32_t* pu4Len) {
    const char* szCharset = nullptr;
    uint32_t u4Result = NyConvertCheck(szMulti, pu4Len, u4CodePage, &szCharset);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    return NyConvertText(szCharset, NY_WIDE_CHARSET, szMulti, strlen(szMulti) + 1, szOut, pu4Len,
                         sizeof(wchar_t));
}
