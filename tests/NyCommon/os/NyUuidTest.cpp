#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <set>
#include <string>

#include "os/NyUuid.h"
#include "runtime/NyResult.h"

namespace {

bool IsGuidText(const std::string& str) {
    if (str.size() != 36) {
        return false;
    }
    for (size_t i = 0; i < str.size(); ++i) {
        bool bDash = i == 8 || i == 13 || i == 18 || i == 23;
        char c = str[i];
        if (bDash ? c != '-' : !(isdigit(c) || (c >= 'A' && c <= 'F'))) {
            return false;
        }
    }
    return true;
}

}  // namespace

// Below 37 characters the buffer is left empty; from 37 on it holds the GUID text and NULs.
TEST(NyUuid, CapacityOf37OrMoreHoldsTheGuidTextAndLessLeavesTheBufferEmpty) {
    for (uint32_t cch : {1u, 36u, 37u, 64u}) {
        char szBuf[65];
        memset(szBuf, 'x', sizeof(szBuf));
        const uint32_t cchText = cch < 37 ? 0 : 36;
        EXPECT_EQ(NyGenUuid(szBuf, cch) == NY_OK, cchText != 0) << cch;
        EXPECT_TRUE(cchText == 0 || IsGuidText(std::string(szBuf, 36))) << szBuf;
        EXPECT_EQ(std::string(szBuf + cchText, cch - cchText), std::string(cch - cchText, '\0'));
        EXPECT_EQ(szBuf[cch], 'x') << "cleared past the capacity";
    }
    EXPECT_EQ(NyGenUuid(nullptr, 37), NY_ERR_INVALID_ARGUMENT);
}

TEST(NyUuid, EveryCallDiffersAndNoVersionBitsAreForced) {
    std::set<std::string> setGuids;
    std::set<char> setVersionDigits;
    std::set<char> setVariantDigits;
    for (int i = 0; i < 200; ++i) {
        char szBuf[37];
        ASSERT_EQ(NyGenUuid(szBuf, sizeof(szBuf)), NY_OK);
        setGuids.insert(szBuf);
        setVersionDigits.insert(szBuf[14]);
        setVariantDigits.insert(szBuf[19]);
    }
    EXPECT_EQ(setGuids.size(), 200u);
    // With all 128 bits random, 200 GUIDs show well over four values in either position.
    EXPECT_GT(setVersionDigits.size(), 4u);
    EXPECT_GT(setVariantDigits.size(), 4u);
}
