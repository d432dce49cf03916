// Failure handling of the protection: every libcrypto allocation on its path is made to fail
// in turn; each failure must leave the block exactly as it was and log the agreed text.
#include <gtest/gtest.h>
#include <openssl/crypto.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>

#include "log/NyLogRecord.h"
#include "support/NyTestLogCapture.h"
#include "uiblock/NyUiParam.h"

namespace {

// -1: allocations pass. n >= 0: the allocation after n more succeeds fails, then pass again.
std::atomic<int> m_iFailAfter{-1};

bool TakeFailure() {
    int iLeft = m_iFailAfter.load();
    while (iLeft >= 0) {
        if (m_iFailAfter.compare_exchange_weak(iLeft, iLeft - 1)) {
            return iLeft == 0;
        }
    }
    return false;
}

void* FaultMalloc(size_t uSize, const char*, int) {
    return TakeFailure() ? nullptr : malloc(uSize);
}
void* FaultRealloc(void* pv, size_t uSize, const char*, int) {
    return TakeFailure() ? nullptr : realloc(pv, uSize);
}
void FaultFree(void* pv, const char*, int) {
    free(pv);
}

// Must precede libcrypto's first allocation in this process, hence a static initialiser.
const int m_iHooked = CRYPTO_set_mem_functions(FaultMalloc, FaultRealloc, FaultFree);

tagBlkUiParam MakeBlock(uint32_t u4Flag) {
    tagBlkUiParam blk;
    for (uint32_t i = 0; i < sizeof(blk); ++i) {
        NyUiParamBytes(&blk, i)[0] = uint8_t(i * 11 + 3);
    }
    blk.u4Protected = u4Flag;
    return blk;
}

struct SweepResult {
    int iFailures = 0;
    bool bGenKeyText = false;
    bool bCipherText = false;
};

// Fails allocation 0, 1, 2, ... of one call until the call runs out of allocations to fail.
SweepResult Sweep(bool bEncrypt) {
    SweepResult r;
    const tagBlkUiParam blkIn = MakeBlock(bEncrypt ? UI_PARAM_CLEAR : UI_PARAM_PROTECTED);
    for (int iAt = 0; iAt < 1000; ++iAt) {
        CNyTestLogCapture capture;
        tagBlkUiParam blk = blkIn;
        m_iFailAfter = iAt;
        const uint32_t u4Result = bEncrypt ? UiParamEnc(&blk) : UiParamDec(&blk);
        const bool bInjected = m_iFailAfter.exchange(-1) < 0;
        if (!bInjected) {
            EXPECT_EQ(u4Result, NY_OK);
            break;
        }
        if (u4Result == NY_OK) {
            continue;  // the failed allocation was not on a path that matters
        }
        r.iFailures++;
        EXPECT_EQ(memcmp(&blk, &blkIn, sizeof(blk)), 0) << "allocation " << iAt;
        for (const std::string& str : capture.MessagesAt(LOG_ERROR)) {
            if (str == "EncOrDecUiParam()-> gen key failed") {
                EXPECT_EQ(u4Result, NY_ERR_BAD_ARGUMENT);
                r.bGenKeyText = true;
            } else if (str == "EncOrDecUiParam() dec failed u4Result = e0600003") {
                r.bCipherText = true;
            } else {
                ADD_FAILURE() << "unexpected error text: " << str;
            }
        }
    }
    return r;
}

class UiParamFault : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(m_iHooked, 1) << "libcrypto allocated before the hook";
        // Fetch and cache the primitives first, as a running server would have.
        tagBlkUiParam blk = MakeBlock(UI_PARAM_CLEAR);
        ASSERT_EQ(UiParamEnc(&blk), NY_OK);
    }
};

TEST_F(UiParamFault, EncryptFailuresLeaveTheBlockAndLogTheSharedText) {
    const SweepResult r = Sweep(true);
    EXPECT_GT(r.iFailures, 0);
    EXPECT_TRUE(r.bGenKeyText);
    EXPECT_TRUE(r.bCipherText) << "the encrypt path logs the \"dec failed\" text as well";
}

TEST_F(UiParamFault, DecryptFailuresLeaveTheBlockAndLogTheirText) {
    const SweepResult r = Sweep(false);
    EXPECT_GT(r.iFailures, 0);
    EXPECT_TRUE(r.bGenKeyText);
    EXPECT_TRUE(r.bCipherText);
}

}  // namespace
