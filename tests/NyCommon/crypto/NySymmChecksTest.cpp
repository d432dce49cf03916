// Argument checks of the cipher facade, their order, the size query and the special cases.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "crypto/NySymm.h"
#include "log/NyLogRecord.h"
#include "support/NyTestLogCapture.h"

namespace {

const uint8_t kKey[32] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16,
                          17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32};
const uint8_t kIv[16] = {0xA5};

struct CheckCase {
    const char* szName;
    uint32_t u4AlgId;
    bool bNullKey;
    bool bNullIn;
    bool bNullOutLen;
    bool bNullOut;
    uint32_t u4InLen;
    uint32_t u4OutCapacity;
    uint32_t u4Expected;
    uint32_t u4ExpectedOutLen;  // checked when the out-length pointer is given
};

const CheckCase kChecks[] = {
    {"unknown identifier", 3, false, false, false, false, 16, 16, NY_ERR_INVALID_ARGUMENT, 16},
    {"identifier zero", 0, false, false, false, false, 16, 16, NY_ERR_INVALID_ARGUMENT, 16},
    {"unknown beats missing arguments", 64, true, true, false, true, 0, 0, NY_ERR_INVALID_ARGUMENT,
     0},
    {"null key", NY_SYMM_AES128, true, false, false, false, 16, 16, NY_ERR_INVALID_ARGUMENT, 16},
    {"null input", NY_SYMM_AES128, false, true, false, false, 16, 16, NY_ERR_INVALID_ARGUMENT, 16},
    {"null out length", NY_SYMM_AES128, false, false, true, false, 16, 16, NY_ERR_INVALID_ARGUMENT,
     0},
    {"zero length", NY_SYMM_AES128, false, false, false, false, 0, 16, NY_ERR_INVALID_ARGUMENT, 16},
    {"AES partial block", NY_SYMM_AES128, false, false, false, false, 24, 32,
     NY_ERR_SYMM_NOT_BLOCKS, 32},
    {"triple DES 3100 bytes", NY_SYMM_TDES_3KEY, false, false, false, false, 3100, 3104,
     NY_ERR_SYMM_NOT_BLOCKS, 3104},
    {"partial block beats size query", NY_SYMM_DES, false, false, false, true, 12, 0,
     NY_ERR_SYMM_NOT_BLOCKS, 0},
    {"size query", NY_SYMM_TDES_3KEY, false, false, false, true, 3104, 0, NY_OK, 3104},
    {"size query of the refused identifier", NY_SYMM_UNSUPPORTED_5, false, false, false, true, 7, 0,
     NY_OK, 7},
    {"output too small", NY_SYMM_AES256, false, false, false, false, 48, 32,
     NY_ERR_BUFFER_TOO_SMALL, 48},
    {"refused identifier", NY_SYMM_UNSUPPORTED_5, false, false, false, false, 5, 5,
     NY_ERR_INVALID_ARGUMENT, 5},
    {"RC4 any length", NY_SYMM_RC4, false, false, false, false, 7, 7, NY_OK, 7},
    {"RC2 partial block", NY_SYMM_RC2_40, false, false, false, false, 9, 16, NY_ERR_SYMM_NOT_BLOCKS,
     16},
    {"triple DES 3104 bytes", NY_SYMM_TDES_3KEY, false, false, false, false, 3104, 4000, NY_OK,
     3104},
};

// Parameterised test names show the row.
void PrintTo(const CheckCase& v, std::ostream* pOs) {
    *pOs << v.szName;
}

class SymmChecks : public testing::TestWithParam<CheckCase> {};

TEST_P(SymmChecks, ReturnsTheCodeOfTheFirstFailingCheck) {
    const CheckCase& c = GetParam();
    std::vector<uint8_t> vIn(c.u4InLen + 1, 0x33);
    std::vector<uint8_t> vOut(c.u4OutCapacity + 1, 0xEE);
    uint32_t u4OutLen = c.u4OutCapacity;
    const uint32_t u4Result = NySymmEncEcb(
        c.u4AlgId, c.bNullKey ? nullptr : kKey, c.bNullIn ? nullptr : vIn.data(), c.u4InLen,
        c.bNullOut ? nullptr : vOut.data(), c.bNullOutLen ? nullptr : &u4OutLen);
    EXPECT_EQ(u4Result, c.u4Expected) << c.szName;
    if (!c.bNullOutLen) {
        EXPECT_EQ(u4OutLen, c.u4ExpectedOutLen) << c.szName;
    }
    if (c.u4Expected != NY_OK) {
        EXPECT_EQ(vOut, std::vector<uint8_t>(c.u4OutCapacity + 1, 0xEE))
            << c.szName << ": output written on failure";
    } else if (!c.bNullOut) {
        EXPECT_EQ(vOut[c.u4InLen], 0xEE) << c.szName << ": wrote past the input length";
    }
}

INSTANTIATE_TEST_SUITE_P(Table, SymmChecks, testing::ValuesIn(kChecks));

TEST(SymmEntries, DecryptAndCbcEntriesApplyTheSameChecks) {
    uint8_t au1In[24] = {};
    uint8_t au1Out[24] = {};
    uint32_t u4Len = sizeof(au1Out);
    EXPECT_EQ(NySymmDecEcb(NY_SYMM_AES128, kKey, au1In, 24, au1Out, &u4Len),
              NY_ERR_SYMM_NOT_BLOCKS);
    EXPECT_EQ(NySymmEncCbc(NY_SYMM_DES, kKey, kIv, au1In, 20, au1Out, &u4Len),
              NY_ERR_SYMM_NOT_BLOCKS);
    u4Len = 8;
    EXPECT_EQ(NySymmDecCbc(NY_SYMM_DES, kKey, kIv, au1In, 16, au1Out, &u4Len),
              NY_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(u4Len, 16u);
    EXPECT_EQ(NySymmDecCbc(0x12345, kKey, kIv, au1In, 16, au1Out, &u4Len), NY_ERR_INVALID_ARGUMENT);
}

TEST(SymmEntries, CbcOfABlockCipherNeedsAnIv) {
    uint8_t au1In[16] = {};
    uint8_t au1Out[16] = {};
    uint32_t u4Len = sizeof(au1Out);
    EXPECT_EQ(NySymmEncCbc(NY_SYMM_AES128, kKey, nullptr, au1In, 16, au1Out, &u4Len),
              NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NySymmDecCbc(NY_SYMM_RC2_64, kKey, nullptr, au1In, 16, au1Out, &u4Len),
              NY_ERR_INVALID_ARGUMENT);
}

TEST(SymmRc4, RefusesAnIvAndWritesNothing) {
    uint8_t au1In[5] = {1, 2, 3, 4, 5};
    uint8_t au1Out[5] = {9, 9, 9, 9, 9};
    uint32_t u4Len = sizeof(au1Out);
    EXPECT_EQ(NySymmEncCbc(NY_SYMM_RC4, kKey, kIv, au1In, 5, au1Out, &u4Len), NY_ERR_SYMM_RC4_IV);
    const uint8_t au1Untouched[5] = {9, 9, 9, 9, 9};
    EXPECT_EQ(0, memcmp(au1Out, au1Untouched, 5));
}

TEST(SymmRc4, CbcEntryWithoutIvRunsTheStreamAndDecryptIsTheInverse) {
    uint8_t au1Plain[37];
    for (size_t i = 0; i < sizeof(au1Plain); ++i) {
        au1Plain[i] = uint8_t(i * 7);
    }
    uint8_t au1Ecb[37], au1Cbc[37], au1Back[37];
    uint32_t u4Len = 37;
    ASSERT_EQ(NySymmEncEcb(NY_SYMM_RC4, kKey, au1Plain, 37, au1Ecb, &u4Len), NY_OK);
    ASSERT_EQ(NySymmEncCbc(NY_SYMM_RC4, kKey, nullptr, au1Plain, 37, au1Cbc, &u4Len), NY_OK);
    EXPECT_EQ(0, memcmp(au1Ecb, au1Cbc, 37));
    ASSERT_EQ(NySymmDecEcb(NY_SYMM_RC4, kKey, au1Ecb, 37, au1Back, &u4Len), NY_OK);
    EXPECT_EQ(0, memcmp(au1Back, au1Plain, 37));
}

// Callers encipher buffers in place (the UI block's protected region, for one).
TEST(SymmInPlace, SameBufferForInputAndOutputGivesTheSameResult) {
    const uint32_t aAlgs[] = {NY_SYMM_DES, NY_SYMM_TDES_3KEY, NY_SYMM_AES256,
                              NY_SYMM_SM4, NY_SYMM_RC2_64,    NY_SYMM_RC4};
    for (uint32_t u4AlgId : aAlgs) {
        std::vector<uint8_t> vPlain(64);
        for (size_t i = 0; i < vPlain.size(); ++i) {
            vPlain[i] = uint8_t(i * 13 + 1);
        }
        std::vector<uint8_t> vSeparate(64), vInPlace = vPlain;
        uint32_t u4Len = 64;
        ASSERT_EQ(NySymmEncEcb(u4AlgId, kKey, vPlain.data(), 64, vSeparate.data(), &u4Len), 0u);
        ASSERT_EQ(NySymmEncEcb(u4AlgId, kKey, vInPlace.data(), 64, vInPlace.data(), &u4Len), 0u);
        EXPECT_EQ(vInPlace, vSeparate) << u4AlgId;
        ASSERT_EQ(NySymmDecEcb(u4AlgId, kKey, vInPlace.data(), 64, vInPlace.data(), &u4Len), 0u);
        EXPECT_EQ(vInPlace, vPlain) << u4AlgId;
    }
}

struct InfoCase {
    uint32_t u4AlgId, u4Key, u4Block;
};

TEST(SymmGetInfo, GivesKeyAndBlockSizeOfEveryIdentifier) {
    const InfoCase aCases[] = {{1, 8, 8},      {2, 16, 8},    {4, 24, 8},    {8, 16, 16},
                               {16, 24, 16},   {32, 32, 16},  {256, 16, 16}, {512, 16, 16},
                               {1024, 16, 16}, {2048, 16, 1}, {4096, 5, 1},  {8192, 16, 8},
                               {16384, 8, 8},  {32768, 5, 8}};
    for (const InfoCase& c : aCases) {
        uint32_t u4Block = 0, u4Key = 0;
        ASSERT_EQ(NySymmGetInfo(c.u4AlgId, &u4Block, &u4Key), NY_OK) << c.u4AlgId;
        EXPECT_EQ(u4Key, c.u4Key) << c.u4AlgId;
        EXPECT_EQ(u4Block, c.u4Block) << c.u4AlgId;
    }
    uint32_t u4Block = 0, u4Key = 0;
    EXPECT_EQ(NySymmGetInfo(64, &u4Block, &u4Key), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NySymmGetInfo(8, nullptr, &u4Key), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NySymmGetInfo(8, &u4Block, nullptr), NY_ERR_INVALID_ARGUMENT);
}

TEST(SymmLog, AFailureLogsItsResultCodeAtLevelTwo) {
    CNyTestLogCapture capture;
    uint8_t au1In[12] = {};
    uint8_t au1Out[16] = {};
    uint32_t u4Len = sizeof(au1Out);
    ASSERT_EQ(NySymmEncEcb(NY_SYMM_DES, kKey, au1In, 12, au1Out, &u4Len), NY_ERR_SYMM_NOT_BLOCKS);
    const std::vector<std::string> vInfo = capture.MessagesAt(LOG_INFO);
    ASSERT_EQ(vInfo.size(), 1u);
    EXPECT_EQ(vInfo[0], "u4Result = E0600004");
}

}  // namespace
