// GUID texts: 36 upper-case characters and a NUL from 16 random bytes.
#pragma once

#include <cstdint>

constexpr uint32_t NY_UUID_TEXT_SIZE = 37;

// Clears the buffer; leaves it empty when the capacity is below 37 or no random bytes can be
// had (then returns a failure code), else writes the GUID text and returns 0.
uint32_t NyGenUuid(char* szBuf, uint32_t cchBuf);
