// Failure handling of the protection: each libcrypto allocation on its path is made to fail in
// turn; every failure must leave the block exactly as it was and log the agreed text.
#include <gtest/gtest.h>
#include <openssl/crypto.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "support/NyTestLogCapture.h"
#include "uiblock/NyUiParam.h"

namespace {

// Negative: allocations pass. n >= 0: n more succeed, the next one fails, then all pass again.
std::atomic<int> m_iFailAfter{-1};

bool TakeFailure() {
    return m_iFailAfter.fetch_sub(1) == 0;
}
void* FaultMalloc(size_t u, const char*, int) {
    return TakeFailure() ? nullptr : malloc(u);
}
void* FaultRealloc(void* pv, size_t u, const char*, int) {
    return TakeFailure() ? nullptr : realloc(pv, u);
}
void FaultFree(void* pv, const char*, int) {
    free(pv);
}

// Must precede libcrypto's first allocation in this process, hence a static initialiser.
const int m_iHooked = CRYPTO_set_mem_functions(FaultMalloc, FaultRealloc, FaultFree);

TEST(UiParamFault, EveryFailureLeavesTheBlockAndLogsItsText) {
    ASSERT_EQ(m_iHooked, 1) << "libcrypto allocated before the hook";
    tagBlkUiParam blkIn;
    for (uint32_t i = 0; i < sizeof(blkIn); ++i) {
        *NyUiParamBytes(&blkIn, i) = uint8_t(i * 11 + 3);
    }
    blkIn.u4Protected = UI_PARAM_PROTECTED;
    tagBlkUiParam blkWarm = blkIn;  // primitives fetched and cached, as in a running server
    ASSERT_EQ(UiParamDec(&blkWarm), NY_OK);
    for (bool bEncrypt : {true, false}) {
        blkIn.u4Protected = bEncrypt ? UI_PARAM_CLEAR : UI_PARAM_PROTECTED;
        bool bGenKeyText = false, bCipherText = false;
        for (int iAt = 0; iAt < 1000; ++iAt) {
            CNyTestLogCapture capture;
            tagBlkUiParam blk = blkIn;
            m_iFailAfter = iAt;
            const uint32_t u4Result = bEncrypt ? UiParamEnc(&blk) : UiParamDec(&blk);
            if (m_iFailAfter.exchange(-1) >= 0) {
                EXPECT_EQ(u4Result, NY_OK) << "the call ran out of allocations to fail";
                break;
            }
            if (u4Result == NY_OK) {
                continue;  // a failed allocation the call could do without
            }
            EXPECT_EQ(memcmp(&blk, &blkIn, sizeof(blk)), 0) << "allocation " << iAt;
            for (const std::string& str : capture.MessagesAt(LOG_ERROR)) {
                if (str == "EncOrDecUiParam()-> gen key failed") {
                    EXPECT_EQ(u4Result, NY_ERR_BAD_ARGUMENT);
                    bGenKeyText = true;
                } else {
                    // The encrypt path logs the same "dec failed" text.
                    EXPECT_EQ(str, "EncOrDecUiParam() dec failed u4Result = e0600003");
                    bCipherText = true;
                }
            }
        }
        EXPECT_TRUE(bGenKeyText) << bEncrypt;
        EXPECT_TRUE(bCipherText) << bEncrypt;
    }
}

}  // namespace
