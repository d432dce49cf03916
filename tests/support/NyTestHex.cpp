#include "support/NyTestHex.h"

#include <gtest/gtest.h>

#include <cctype>

std::vector<uint8_t> NyTestFromHex(const std::string& strHex) {
    std::string strDigits;
    for (char c : strHex) {
        if (c != ' ' && !isxdigit(uint8_t(c))) {
            ADD_FAILURE() << "not hex: " << strHex;
            return {};
        }
        strDigits += c == ' ' ? "" : std::string(1, c);
    }
    EXPECT_EQ(0u, strDigits.size() % 2) << "odd hex digit count: " << strHex;
    std::vector<uint8_t> vOut;
    for (size_t i = 0; i + 1 < strDigits.size(); i += 2) {
        vOut.push_back(uint8_t(std::stoul(strDigits.substr(i, 2), nullptr, 16)));
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
