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

TEST(NyUuid, CapacityBelow37LeavesTheBufferEmpty) {
    for (uint32_t cch : {1u, 8u, 36u}) {
        char szBuf[64];
        memset(szBuf, 'x', sizeof(szBuf));
        EXPECT_NE(NyGenUuid(szBuf, cch), NY_OK) << cch;
        EXPECT_EQ(std::string(szBuf, cch), std::string(cch, '\0')) << cch;
        EXPECT_EQ(szBuf[cch], 'x') << "cleared past the capacity";
    }
    EXPECT_EQ(NyGenUuid(nullptr, 37), NY_ERR_INVALID_ARGUMENT);
}

TEST(NyUuid, Capacity37OrMoreHoldsTheGuidText) {
    for (uint32_t cch : {37u, 38u, 64u}) {
        char szBuf[65];
        memset(szBuf, 'x', sizeof(szBuf));
        ASSERT_EQ(NyGenUuid(szBuf, cch), NY_OK) << cch;
        EXPECT_TRUE(IsGuidText(szBuf)) << szBuf;
        EXPECT_EQ(std::string(szBuf + 36, cch - 36), std::string(cch - 36, '\0')) << cch;
        EXPECT_EQ(szBuf[cch], 'x');
    }
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
