#include "support/NyTestHex.h"

#include <gtest/gtest.h>

#include <cctype>

std::vector<uint8_t> NyTestFromHex(const std::string& strHex) {
    std::string strDigits;
    for (char c : strHex) {
        if (c != ' ') {
            strDigits += c;
        }
    }
    std::vector<uint8_t> vOut;
    for (size_t i = 0; i + 1 < strDigits.size(); i += 2) {
        if (!isxdigit(uint8_t(strDigits[i])) || !isxdigit(uint8_t(strDigits[i + 1]))) {
            ADD_FAILURE() << "not hex: " << strHex;
            return {};
        }
        vOut.push_back(uint8_t(std::stoul(strDigits.substr(i, 2), nullptr, 16)));
    }
    if (strDigits.size() % 2 != 0) {
        ADD_FAILURE() << "odd hex digit count: " << strHex;
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
