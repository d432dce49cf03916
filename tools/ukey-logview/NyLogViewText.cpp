#include "NyLogViewText.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "runtime/NyConvert.h"
#include "runtime/NyResult.h"

namespace {

constexpr const char* NY_UTF8_REPLACEMENT = "\xEF\xBF\xBD";

// Length of the valid UTF-8 sequence at p (no overlongs, surrogates or values past U+10FFFF),
// 0 when there is none.
size_t Utf8SequenceLength(const unsigned char* p, size_t cchLeft) {
    unsigned char c = p[0];
    if (c < 0x80) {
        return 1;
    }
    size_t cchSeq = 0;
    unsigned char u1Min = 0x80;
    unsigned char u1Max = 0xBF;
    if (c >= 0xC2 && c <= 0xDF) {
        cchSeq = 2;
    } else if (c >= 0xE0 && c <= 0xEF) {
        cchSeq = 3;
        u1Min = c == 0xE0 ? 0xA0 : 0x80;
        u1Max = c == 0xED ? 0x9F : 0xBF;
    } else if (c >= 0xF0 && c <= 0xF4) {
        cchSeq = 4;
        u1Min = c == 0xF0 ? 0x90 : 0x80;
        u1Max = c == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (cchSeq > cchLeft || p[1] < u1Min || p[1] > u1Max) {
        return 0;
    }
    for (size_t i = 2; i < cchSeq; ++i) {
        if ((p[i] & 0xC0) != 0x80) {
            return 0;
        }
    }
    return cchSeq;
}

bool Gb18030ToUtf8(const std::string& str, std::string& strOut) {
    uint32_t u4Wide = 0;
    if (NyMultiByteToWideChar(str.c_str(), NY_CP_GB18030, nullptr, &u4Wide) != NY_OK) {
        return false;
    }
    std::vector<wchar_t> vWide(u4Wide);
    if (NyMultiByteToWideChar(str.c_str(), NY_CP_GB18030, vWide.data(), &u4Wide) != NY_OK) {
        return false;
    }
    uint32_t u4Utf8 = 0;
    if (NyWideCharToMultiByte(vWide.data(), NY_CP_UTF8, nullptr, &u4Utf8) != NY_OK) {
        return false;
    }
    std::vector<char> vUtf8(u4Utf8);
    if (NyWideCharToMultiByte(vWide.data(), NY_CP_UTF8, vUtf8.data(), &u4Utf8) != NY_OK) {
        return false;
    }
    strOut.assign(vUtf8.data());
    return true;
}

std::string ReplaceInvalid(const std::string& str) {
    std::string strOut;
    const unsigned char* p = reinterpret_cast<const unsigned char*>(str.data());
    for (size_t i = 0; i < str.size();) {
        size_t cch = Utf8SequenceLength(p + i, str.size() - i);
        if (cch == 0) {
            strOut += NY_UTF8_REPLACEMENT;
            ++i;
        } else {
            strOut.append(str, i, cch);
            i += cch;
        }
    }
    return strOut;
}

}  // namespace

std::string NyLogViewToUtf8(const char* pch, size_t cch) {
    std::string str(pch, strnlen(pch, cch));
    std::string strValid = ReplaceInvalid(str);
    std::string strConverted;
    if (strValid != str && Gb18030ToUtf8(str, strConverted)) {
        return strConverted;
    }
    return strValid;
}

std::string NyLogViewJsonString(const std::string& strUtf8) {
    std::string strOut = "\"";
    for (unsigned char c : strUtf8) {
        switch (c) {
            case '"':
                strOut += "\\\"";
                break;
            case '\\':
                strOut += "\\\\";
                break;
            case '\n':
                strOut += "\\n";
                break;
            case '\r':
                strOut += "\\r";
                break;
            case '\t':
                strOut += "\\t";
                break;
            default:
                if (c < 0x20 || c == 0x7F) {
                    char szEscape[8];
                    snprintf(szEscape, sizeof(szEscape), "\\u%04x", c);
                    strOut += szEscape;
                } else {
                    strOut += static_cast<char>(c);
                }
        }
    }
    return strOut + "\"";
}
