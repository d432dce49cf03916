#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <vector>

#include "crypto/NyRand.h"
#include "runtime/NyResult.h"
#include "support/NyTestProcess.h"

namespace {

std::vector<uint8_t> Draw(int32_t i4Len) {
    std::vector<uint8_t> vOut(static_cast<size_t>(i4Len));
    EXPECT_EQ(tinyRandBytesEx(vOut.data(), i4Len), NY_OK);
    return vOut;
}

}  // namespace

TEST(NyRand, RefusesEmptyRequestsAndFillsAnySize) {
    uint8_t au1Buf[8];
    memset(au1Buf, 0xAA, sizeof(au1Buf));
    EXPECT_EQ(tinyRandBytesEx(nullptr, 8), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(tinyRandBytesEx(au1Buf, 0), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(tinyRandBytesEx(au1Buf, -1), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(tinyRandSeed(nullptr, 8), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(tinyRandSeed(au1Buf, 0), NY_ERR_INVALID_ARGUMENT);
    NyGetRand(nullptr, 8);
    NyGetRand(au1Buf, 0);
    EXPECT_EQ(std::vector<uint8_t>(au1Buf, au1Buf + 8), std::vector<uint8_t>(8, 0xAA));
    // Requests of any size are filled and differ.
    for (int32_t i4Len : {16, 17, 33, 1000, 70000}) {
        std::vector<uint8_t> vFirst = Draw(i4Len);
        EXPECT_NE(vFirst, Draw(i4Len)) << i4Len;
        // The last 16 bytes are random too (a short final block is still drawn).
        EXPECT_NE(std::vector<uint8_t>(vFirst.end() - 16, vFirst.end()),
                  std::vector<uint8_t>(16, 0))
            << i4Len;
    }
    EXPECT_EQ(tinyRandSeed("caller material", 15), NY_OK);
    NyGetRand(au1Buf, sizeof(au1Buf));
    EXPECT_NE(std::vector<uint8_t>(au1Buf, au1Buf + 8), std::vector<uint8_t>(8, 0xAA));
}

TEST(NyRand, ForkedChildDoesNotRepeatItsParent) {
    Draw(16);  // the generator is seeded before the fork
    int aiPipe[2];
    ASSERT_EQ(pipe(aiPipe), 0);
    pid_t pid = NyTestForkChild([&] {
        uint8_t au1Child[16];
        if (tinyRandBytesEx(au1Child, 16) != NY_OK) {
            return 1;
        }
        return write(aiPipe[1], au1Child, 16) == 16 ? 0 : 2;
    });
    ASSERT_GT(pid, 0);
    std::vector<uint8_t> vParent = Draw(16);
    EXPECT_EQ(NyTestWaitChild(pid, 10000), 0);
    std::vector<uint8_t> vChild(16);
    EXPECT_EQ(read(aiPipe[0], vChild.data(), 16), 16);
    close(aiPipe[0]);
    close(aiPipe[1]);
    EXPECT_NE(vChild, vParent);
}
