// Hex text to bytes and back, for known-answer tables written as published.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Spaces are ignored; an odd digit count or a non-hex character fails the calling test.
std::vector<uint8_t> NyTestFromHex(const std::string& strHex);
// Lower-case hex.
std::string NyTestToHex(const uint8_t* pu1Data, size_t uLen);
std::string NyTestToHex(const std::vector<uint8_t>& vData);
