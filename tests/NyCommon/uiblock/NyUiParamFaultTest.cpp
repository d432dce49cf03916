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

// -1: allocations pass. n >= 0: n more succeed, the next one fails, then all pass again.
std::atomic<int> m_iFailAfter{-1};

bool TakeFailure() {
    int iLeft = m_iFailAfter.load();
    while (iLeft >= 0 && !m_iFailAfter.compare_exchange_weak(iLeft, iLeft - 1)) {
    }
    return iLeft == 0;
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

class UiParamFault : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        ASSERT_EQ(m_iHooked, 1) << "libcrypto allocated before the hook";
        for (uint32_t i = 0; i < sizeof(m_blkIn); ++i) {
            *NyUiParamBytes(&m_blkIn, i) = uint8_t(i * 11 + 3);
        }
        m_blkIn.u4Protected = UI_PARAM_PROTECTED;
        tagBlkUiParam blk = m_blkIn;  // primitives fetched and cached, as in a running server
        ASSERT_EQ(UiParamDec(&blk), NY_OK);
        m_blkIn.u4Protected = GetParam() ? UI_PARAM_CLEAR : UI_PARAM_PROTECTED;
    }
    tagBlkUiParam m_blkIn;
};

TEST_P(UiParamFault, EveryFailureLeavesTheBlockAndLogsItsText) {
    const bool bEncrypt = GetParam();
    bool bGenKeyText = false, bCipherText = false;
    for (int iAt = 0; iAt < 1000; ++iAt) {
        CNyTestLogCapture capture;
        tagBlkUiParam blk = m_blkIn;
        m_iFailAfter = iAt;
        const uint32_t u4Result = bEncrypt ? UiParamEnc(&blk) : UiParamDec(&blk);
        if (m_iFailAfter.exchange(-1) >= 0) {
            EXPECT_EQ(u4Result, NY_OK) << "the call ran out of allocations to fail";
            break;
        }
        if (u4Result == NY_OK) {
            continue;  // a failed allocation the call could do without
        }
        EXPECT_EQ(memcmp(&blk, &m_blkIn, sizeof(blk)), 0) << "allocation " << iAt;
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
    EXPECT_TRUE(bGenKeyText);
    EXPECT_TRUE(bCipherText);
}

INSTANTIATE_TEST_SUITE_P(EncryptAndDecrypt, UiParamFault, testing::Bool());

}  // namespace
