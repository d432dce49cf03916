// Argument checks of the cipher facade in their order, the size query and the special cases.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "crypto/NySymm.h"

namespace {

const uint8_t kKey[32] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17};
const uint8_t kIv[16] = {0xA5};
constexpr uint32_t kInvalid = NY_ERR_INVALID_ARGUMENT;
constexpr uint32_t kNotBlocks = NY_ERR_SYMM_NOT_BLOCKS;
constexpr uint32_t kTooSmall = NY_ERR_BUFFER_TOO_SMALL;

struct CheckCase {
    const char* szName;
    uint32_t u4AlgId;
    bool bCbcNoIv;  // the CBC entry without an IV; otherwise ECB
    bool bNullKey, bNullIn, bNullOutLen, bNullOut;
    uint32_t u4InLen, u4Capacity, u4Expected, u4ExpectedLen;
};
void PrintTo(const CheckCase& c, std::ostream* pOs) {
    *pOs << c.szName;
}

const CheckCase kChecks[] = {
    {"unknown identifier", 3, false, false, false, false, false, 16, 16, kInvalid, 16},
    {"unknown beats missing", 64, false, true, true, false, true, 0, 0, kInvalid, 0},
    {"null key", NY_SYMM_AES128, false, true, false, false, false, 16, 16, kInvalid, 16},
    {"null input", NY_SYMM_AES128, false, false, true, false, false, 16, 16, kInvalid, 16},
    {"null out length", NY_SYMM_AES128, false, false, false, true, false, 16, 16, kInvalid, 16},
    {"zero length", NY_SYMM_AES128, false, false, false, false, false, 0, 16, kInvalid, 16},
    {"3DES 3100 bytes", NY_SYMM_TDES_3KEY, false, false, false, false, false, 3100, 3104,
     kNotBlocks, 3104},
    {"partial block beats size query", NY_SYMM_RC2_40, false, false, false, false, true, 12, 0,
     kNotBlocks, 0},
    {"size query", NY_SYMM_TDES_3KEY, false, false, false, false, true, 3104, 0, 0, 3104},
    {"size query, refused id", NY_SYMM_UNSUPPORTED_5, false, false, false, false, true, 7, 0, 0, 7},
    {"output too small", NY_SYMM_AES256, false, false, false, false, false, 48, 32, kTooSmall, 48},
    {"refused identifier", NY_SYMM_UNSUPPORTED_5, false, false, false, false, false, 5, 5, kInvalid,
     5},
    {"CBC without IV", NY_SYMM_AES128, true, false, false, false, false, 16, 16, kInvalid, 16},
    {"RC4 via CBC without IV", NY_SYMM_RC4, true, false, false, false, false, 7, 7, 0, 7},
    {"3DES 3104 bytes", NY_SYMM_TDES_3KEY, false, false, false, false, false, 3104, 4000, 0, 3104},
};

class SymmChecks : public testing::TestWithParam<CheckCase> {};

TEST_P(SymmChecks, ReturnsTheCodeOfTheFirstFailingCheckAndWritesOnlyOnSuccess) {
    const CheckCase& c = GetParam();
    std::vector<uint8_t> vIn(c.u4InLen + 1, 0x33), vOut(c.u4Capacity + 1, 0xEE);
    uint32_t u4Len = c.u4Capacity;
    const uint8_t* pu1Key = c.bNullKey ? nullptr : kKey;
    const uint8_t* pu1In = c.bNullIn ? nullptr : vIn.data();
    uint8_t* pu1Out = c.bNullOut ? nullptr : vOut.data();
    uint32_t* pu4Len = c.bNullOutLen ? nullptr : &u4Len;
    EXPECT_EQ(c.bCbcNoIv
                  ? NySymmEncCbc(c.u4AlgId, pu1Key, nullptr, pu1In, c.u4InLen, pu1Out, pu4Len)
                  : NySymmEncEcb(c.u4AlgId, pu1Key, pu1In, c.u4InLen, pu1Out, pu4Len),
              c.u4Expected);
    EXPECT_EQ(u4Len, c.u4ExpectedLen);
    const bool bWritten = vOut != std::vector<uint8_t>(c.u4Capacity + 1, 0xEE);
    EXPECT_EQ(bWritten, c.u4Expected == NY_OK && pu1Out != nullptr);
    EXPECT_EQ(vOut[c.u4Capacity], 0xEE) << "wrote past the output";
}

INSTANTIATE_TEST_SUITE_P(Table, SymmChecks, testing::ValuesIn(kChecks));

// Callers encipher in place (the UI block's protected region, for one).
TEST(SymmInPlace, SameBufferForInputAndOutputGivesTheSameResultAndRc4RefusesAnIv) {
    for (uint32_t u4AlgId : {NY_SYMM_DES, NY_SYMM_TDES_3KEY, NY_SYMM_AES256, NY_SYMM_SM4,
                             NY_SYMM_RC2_64, NY_SYMM_RC4}) {
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
    uint8_t au1In[5] = {1, 2, 3, 4, 5}, au1Out[5] = {};  // RC4 refuses an IV, writes nothing
    uint32_t u4Len = sizeof(au1Out);
    EXPECT_EQ(NySymmDecCbc(NY_SYMM_RC4, kKey, kIv, au1In, 5, au1Out, &u4Len), NY_ERR_SYMM_RC4_IV);
    EXPECT_EQ(std::vector<uint8_t>(au1Out, au1Out + 5), std::vector<uint8_t>(5, 0));
}

// Key sizes are checked against every vector by the known answers; block sizes here.
TEST(SymmGetInfo, GivesBlockSizesAndRefusesUnknownIdentifiers) {
    const std::pair<uint32_t, uint32_t> aBlocks[] = {
        {NY_SYMM_DES, 8}, {NY_SYMM_AES192, 16}, {NY_SYMM_SM4, 16},
        {NY_SYMM_RC4, 1}, {NY_SYMM_RC2_40, 8},  {NY_SYMM_UNSUPPORTED_5, 1}};
    uint32_t u4Block = 0, u4Key = 0;
    for (const auto& b : aBlocks) {
        ASSERT_EQ(NySymmGetInfo(b.first, &u4Block, &u4Key), NY_OK);
        EXPECT_EQ(u4Block, b.second) << b.first;
    }
    EXPECT_EQ(NySymmGetInfo(64, &u4Block, &u4Key), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NySymmGetInfo(8, nullptr, &u4Key), NY_ERR_INVALID_ARGUMENT);
}

}  // namespace
