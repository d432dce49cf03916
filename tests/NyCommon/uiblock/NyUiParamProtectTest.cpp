// Protection of the UI block: the key derivation, which bytes are enciphered under which key,
// the flag handling and round trips.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "support/NyTestHex.h"
#include "uiblock/NyTripleDesKey.h"
#include "uiblock/NyUiParam.h"

namespace {

// Seed 00 01 .. 0f, other bytes 0xA5, protected byte i = (7 * i) & 0xFF.
tagBlkUiParam MakeBlock(uint32_t u4Flag) {
    tagBlkUiParam blk;
    memset(&blk, 0xA5, sizeof(blk));
    for (uint32_t i = 0; i < NY_UI_KEY_SEED_SIZE; ++i) {
        blk.au1KeySeed[i] = uint8_t(i);
    }
    for (uint32_t i = 0; i < NY_UI_PROTECTED_SIZE; ++i) {
        *NyUiParamBytes(&blk, NY_UI_PROTECTED_OFFSET + i) = uint8_t(i * 7);
    }
    blk.u4Protected = u4Flag;
    return blk;
}

std::vector<uint8_t> Range(const tagBlkUiParam& blk, uint32_t u4From, uint32_t u4To) {
    return std::vector<uint8_t>(NyUiParamBytes(&blk, u4From), NyUiParamBytes(&blk, u4To));
}

// Expected blocks: three-key triple DES, ECB, under the key Python's hashlib derives for this
// seed (42aeb40c...185c2cc9), enciphered with a separate DES tool.
TEST(UiParamProtect, EnciphersExactlyTheProtectedRegionRoundTripsAndHonoursTheFlag) {
    const tagBlkUiParam blkPlain = MakeBlock(UI_PARAM_CLEAR);
    tagBlkUiParam blk = blkPlain;
    ASSERT_EQ(UiParamEnc(&blk), NY_OK);
    EXPECT_EQ(blk.u4Protected, UI_PARAM_PROTECTED);
    EXPECT_EQ(NyTestToHex(Range(blk, 312, 320)), "5f05ca924d4ce89e");
    EXPECT_EQ(NyTestToHex(Range(blk, 3408, 3416)), "5e0b22f0e1be86b8");
    EXPECT_EQ(Range(blk, 0, 296), Range(blkPlain, 0, 296));
    EXPECT_EQ(Range(blk, 300, 312), Range(blkPlain, 300, 312));
    EXPECT_EQ(Range(blk, 3416, 4096), Range(blkPlain, 3416, 4096));

    const tagBlkUiParam blkProtected = blk;
    ASSERT_EQ(UiParamDec(&blk), NY_OK);
    EXPECT_EQ(Range(blk, 0, 4096), Range(blkPlain, 0, 4096));
    ASSERT_EQ(UiParamEnc(&blk), NY_OK);
    EXPECT_EQ(Range(blk, 0, 4096), Range(blkProtected, 0, 4096));
    // The flag decides whether the block is touched.
    const struct {
        bool bEncrypt;
        uint32_t u4FlagIn;
        bool bTransforms;
        uint32_t u4FlagOut;
    } aCases[] = {{true, 0, true, 1},   {true, 1, false, 1}, {true, 2, true, 1},
                  {false, 0, false, 0}, {false, 1, true, 0}, {false, 2, true, 0}};
    for (const auto& c : aCases) {
        const tagBlkUiParam blkIn = MakeBlock(c.u4FlagIn);
        tagBlkUiParam blk = blkIn;
        ASSERT_EQ(c.bEncrypt ? UiParamEnc(&blk) : UiParamDec(&blk), NY_OK);
        EXPECT_EQ(blk.u4Protected, c.u4FlagOut) << c.bEncrypt << " flag " << c.u4FlagIn;
        EXPECT_EQ(Range(blk, 312, 3416) != Range(blkIn, 312, 3416), c.bTransforms)
            << c.bEncrypt << " flag " << c.u4FlagIn;
    }
    EXPECT_EQ(UiParamEnc(nullptr), NY_ERR_BAD_ARGUMENT);
    EXPECT_EQ(UiParamDec(nullptr), NY_ERR_BAD_ARGUMENT);
}

// Computed outside this code base with Python's hashlib:
//   A = sha1(seed).digest()[:16]; B = sha1(b"TarnFieldKey2").digest()[6:20]
//   key = sha1(A + B + A + B).digest() + A[12:16]
const std::pair<const char*, const char*> kKeyVectors[] = {
    {"000102030405060708090a0b0c0d0e0f", "42aeb40c6b321e89f37ed3ebf0436f77fc7ebdfa185c2cc9"},
    {"00000000000000000000000000000000", "9a2e485096c106666aaa4959f5b9573a7e669836a15e160d"},
    {"8f3a5c217e90b4d6c1f02a9e3b7d5468", "5a4a3578b8818f06d492ec193d0c1aa98fa2a082d42c4361"},
};

TEST(TripleDesKey, DerivesTheIndependentlyComputedKeys) {
    for (const auto& v : kKeyVectors) {
        std::vector<uint8_t> vSeed = NyTestFromHex(v.first);
        uint8_t au1Key[NY_TDES_KEY_SIZE] = {};
        int32_t i4Len = NY_TDES_KEY_SIZE;
        ASSERT_TRUE(SafeCommunication::TripleDes168GenKey(vSeed.data(), 16, au1Key, &i4Len));
        EXPECT_EQ(NyTestToHex(au1Key, sizeof(au1Key)), v.second);

        vSeed.insert(vSeed.end(), {0xFF, 0xEE, 0xDD, 0xCC});  // ignored tail
        std::vector<uint8_t> vKey(32, 0xCC);
        i4Len = 32;
        ASSERT_TRUE(NyTripleDesDeriveKey(vSeed.data(), 20, vKey.data(), &i4Len));
        EXPECT_EQ(i4Len, NY_TDES_KEY_SIZE);
        EXPECT_EQ(NyTestToHex(vKey), std::string(v.second) + "cccccccccccccccc");
    }
}

}  // namespace
