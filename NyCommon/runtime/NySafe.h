// Bounded memory and string routines. Every routine takes the destination's capacity (in
// elements), never writes past it, leaves a NUL-terminated result where it writes text, and
// reports a violation to the log at level 3 as "%s failed due to %s" instead of crashing.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

// Copies cchCount bytes (ranges may overlap). 0, NY_ERR_INVALID_ARGUMENT (null dest),
// NY_ERR_BAD_ARGUMENT (null src, dest zeroed), NY_ERR_MEM_TOO_SMALL (dest zeroed).
uint32_t NyMemCpy(void* pvDest, size_t cchDest, const void* pvSrc, size_t cchCount);
// True exactly when NyMemCpy returns 0.
bool NyMemCopy(void* pvDest, size_t cchDest, const void* pvSrc, size_t cchCount);
// Overlapping copy; on a violation the destination is left untouched.
bool NyMemMove(void* pvDest, size_t cchDest, const void* pvSrc, size_t cchCount);
// Wipes a buffer in a way the compiler cannot drop (for PINs and UI blocks).
void NyMemSafeClear(void* pv, size_t cb);

bool NyStrCopy(char* szDest, size_t cchDest, const char* szSrc);
bool NyStrCat(char* szDest, size_t cchDest, const char* szSrc);
bool NyStrVPrintf(char* szDest, size_t cchDest, const char* szFormat, va_list args);
bool NyStrPrintf(char* szDest, size_t cchDest, const char* szFormat, ...)
    __attribute__((format(printf, 3, 4)));

bool NyWcsCopy(wchar_t* szDest, size_t cchDest, const wchar_t* szSrc);
bool NyWcsCat(wchar_t* szDest, size_t cchDest, const wchar_t* szSrc);
bool NyWcsVPrintf(wchar_t* szDest, size_t cchDest, const wchar_t* szFormat, va_list args);
bool NyWcsPrintf(wchar_t* szDest, size_t cchDest, const wchar_t* szFormat, ...);
