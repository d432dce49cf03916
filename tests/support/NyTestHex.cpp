#include "support/NyTestHex.h"

#include <gtest/gtest.h>

namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

}  // namespace

std::vector<uint8_t> NyTestFromHex(const std::string& strHex) {
    std::string strDigits;
    for (char c : strHex) {
        if (c != ' ') {
            strDigits += c;
        }
    }
    std::vector<uint8_t> vOut;
    if (strDigits.size() % 2 != 0) {
        ADD_FAILURE() << "odd hex digit count: " << strHex;
        return vOut;
    }
    for (size_t i = 0; i < strDigits.size(); i += 2) {
        const int iHigh = HexDigit(strDigits[i]);
        const int iLow = HexDigit(strDigits[i + 1]);
        if (iHigh < 0 || iLow < 0) {
            ADD_FAILURE() << "not hex: " << strHex;
            return {};
        }
        vOut.push_back(uint8_t(iHigh << 4 | iLow));
    }
    return vOut;
}

std::string NyTestToHex(const uint8_t* pu1Data, size_t uLen) {
    static const char kDigits[] = "0123456789abcdef";
    std::string str;
    for (size_t i = 0; i < uLen; ++i) {
        str += kDigits[pu1Data[i] >> 4];
        str += kDigits[pu1Data[i] & 15];
    }
    return str;
}

std::string NyTestToHex(const std::vector<uint8_t>& vData) {
    return NyTestToHex(vData.data(), vData.size());
}
