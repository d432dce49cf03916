// Text conversions: hex dumps and iconv-based wide/multibyte conversion.
#pragma once

#include <cstdint>

// Code pages accepted by the conversions.
constexpr uint32_t NY_CP_UTF8_DEFAULT = 0;
constexpr uint32_t NY_CP_UTF8 = 65001;
constexpr uint32_t NY_CP_GB18030 = 54936;
constexpr uint32_t NY_CP_BIG5 = 950;

// Two upper-case hex digits per byte, then a NUL. szOut must hold 2 * u4Len + 1 bytes.
void NyHex2Asc(const void* pvData, uint32_t u4Len, char* szOut);

// Wide (UTF-32LE) to the narrow charset of u4CodePage. *pu4Len: in, the capacity of szOut in
// bytes; out, the size needed or written including the NUL. A null szOut asks for the size;
// a too-small capacity returns NY_ERR_BUFFER_TOO_SMALL with the size needed.
uint32_t NyWideCharToMultiByte(const wchar_t* szWide, uint32_t u4CodePage, char* szOut,
                               uint32_t* pu4Len);
// Narrow to wide; *pu4Len counts wide characters including the NUL, otherwise as above.
uint32_t NyMultiByteToWideChar(const char* szMulti, uint32_t u4CodePage, wchar_t* szOut,
                               uint32_t* pu4Len);
