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

// Which arguments a row passes as null, and whether it calls the CBC entry without an IV.
enum : uint32_t { CBC = 1, NO_KEY = 2, NO_IN = 4, NO_LEN = 8, NO_OUT = 16 };

TEST(SymmChecks, ReturnsTheCodeOfTheFirstFailingCheckAndWritesOnlyOnSuccess) {
    const struct {
        uint32_t u4AlgId, u4Flags, u4InLen, u4Capacity, u4Expected, u4ExpectedLen;
    } aCases[] = {
        {3, 0, 16, 16, kInvalid, 16},                      // unknown identifier
        {64, NO_KEY | NO_IN | NO_OUT, 0, 0, kInvalid, 0},  // unknown beats missing
        {NY_SYMM_AES128, NO_KEY, 16, 16, kInvalid, 16},
        {NY_SYMM_AES128, NO_IN, 16, 16, kInvalid, 16},
        {NY_SYMM_AES128, NO_LEN, 16, 16, kInvalid, 16},
        {NY_SYMM_AES128, 0, 0, 16, kInvalid, 16},  // zero length
        {NY_SYMM_TDES_3KEY, 0, 3100, 3104, kNotBlocks, 3104},
        {NY_SYMM_RC2_40, NO_OUT, 12, 0, kNotBlocks, 0},  // partial block beats size query
        {NY_SYMM_TDES_3KEY, NO_OUT, 3104, 0, 0, 3104},   // size query
        {NY_SYMM_UNSUPPORTED_5, NO_OUT, 7, 0, 0, 7},     // size query of a refused identifier
        {NY_SYMM_AES256, 0, 48, 32, kTooSmall, 48},
        {NY_SYMM_UNSUPPORTED_5, 0, 5, 5, kInvalid, 5},
        {NY_SYMM_AES128, CBC, 16, 16, kInvalid, 16},
        {NY_SYMM_RC4, CBC, 7, 7, 0, 7},  // RC4 needs no IV
        {NY_SYMM_TDES_3KEY, 0, 3104, 4000, 0, 3104},
    };
    for (const auto& c : aCases) {
        std::vector<uint8_t> vIn(c.u4InLen + 1, 0x33), vOut(c.u4Capacity + 1, 0xEE);
        uint32_t u4Len = c.u4Capacity;
        const uint8_t* pu1Key = (c.u4Flags & NO_KEY) ? nullptr : kKey;
        const uint8_t* pu1In = (c.u4Flags & NO_IN) ? nullptr : vIn.data();
        uint8_t* pu1Out = (c.u4Flags & NO_OUT) ? nullptr : vOut.data();
        uint32_t* pu4Len = (c.u4Flags & NO_LEN) ? nullptr : &u4Len;
        EXPECT_EQ((c.u4Flags & CBC)
                      ? NySymmEncCbc(c.u4AlgId, pu1Key, nullptr, pu1In, c.u4InLen, pu1Out, pu4Len)
                      : NySymmEncEcb(c.u4AlgId, pu1Key, pu1In, c.u4InLen, pu1Out, pu4Len),
                  c.u4Expected)
            << c.u4AlgId << " flags " << c.u4Flags << " length " << c.u4InLen;
        EXPECT_EQ(u4Len, c.u4ExpectedLen) << c.u4AlgId << " length " << c.u4InLen;
        const bool bWritten = vOut != std::vector<uint8_t>(c.u4Capacity + 1, 0xEE);
        EXPECT_EQ(bWritten, c.u4Expected == NY_OK && pu1Out != nullptr) << c.u4AlgId;
        EXPECT_EQ(vOut[c.u4Capacity], 0xEE) << "wrote past the output";
    }
}

// Callers encipher in place (the UI block's protected region, for one). Key sizes are checked
// against every vector by the known answers; block sizes here.
TEST(SymmInPlace, SameBufferGivesTheSameResultBlockSizesAndRc4RefusesAnIv) {
    std::vector<uint8_t> vPlain(64);
    for (size_t i = 0; i < vPlain.size(); ++i) {
        vPlain[i] = uint8_t(i * 13 + 1);
    }
    const std::pair<uint32_t, uint32_t> aBlocks[] = {{NY_SYMM_DES, 8},     {NY_SYMM_TDES_3KEY, 8},
                                                     {NY_SYMM_AES192, 16}, {NY_SYMM_SM4, 16},
                                                     {NY_SYMM_RC2_40, 8},  {NY_SYMM_RC4, 1}};
    uint32_t u4Block = 0, u4Key = 0, u4Len = 64;
    for (const auto& b : aBlocks) {
        ASSERT_EQ(NySymmGetInfo(b.first, &u4Block, &u4Key), NY_OK);
        EXPECT_EQ(u4Block, b.second) << b.first;
        std::vector<uint8_t> vSeparate(64), vInPlace = vPlain;
        ASSERT_EQ(NySymmEncEcb(b.first, kKey, vPlain.data(), 64, vSeparate.data(), &u4Len), 0u);
        ASSERT_EQ(NySymmEncEcb(b.first, kKey, vInPlace.data(), 64, vInPlace.data(), &u4Len), 0u);
        EXPECT_EQ(vInPlace, vSeparate) << b.first;
        ASSERT_EQ(NySymmDecEcb(b.first, kKey, vInPlace.data(), 64, vInPlace.data(), &u4Len), 0u);
        EXPECT_EQ(vInPlace, vPlain) << b.first;
    }
    uint8_t au1In[5] = {1, 2, 3, 4, 5}, au1Out[5] = {};  // RC4 refuses an IV, writes nothing
    u4Len = sizeof(au1Out);
    EXPECT_EQ(NySymmDecCbc(NY_SYMM_RC4, kKey, kIv, au1In, 5, au1Out, &u4Len), NY_ERR_SYMM_RC4_IV);
    EXPECT_EQ(std::vector<uint8_t>(au1Out, au1Out + 5), std::vector<uint8_t>(5, 0));
    ASSERT_EQ(NySymmGetInfo(NY_SYMM_UNSUPPORTED_5, &u4Block, &u4Key), NY_OK);
    EXPECT_EQ(u4Block, 1u);
    EXPECT_EQ(NySymmGetInfo(64, &u4Block, &u4Key), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NySymmGetInfo(8, nullptr, &u4Key), NY_ERR_INVALID_ARGUMENT);
}

}  // namespace
