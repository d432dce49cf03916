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
