// Protection of the UI block: which bytes are enciphered, under which key, the flag handling,
// round trips and the log texts.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "support/NyTestHex.h"
#include "uiblock/NyUiParam.h"

namespace {

// Seed 00 01 .. 0f, every header and tail byte 0xA5, protected byte i = (7 * i) & 0xFF.
tagBlkUiParam MakeBlock(uint32_t u4Flag) {
    tagBlkUiParam blk;
    memset(&blk, 0xA5, sizeof(blk));
    for (uint32_t i = 0; i < NY_UI_KEY_SEED_SIZE; ++i) {
        blk.au1KeySeed[i] = uint8_t(i);
    }
    for (uint32_t i = 0; i < NY_UI_PROTECTED_SIZE; ++i) {
        NyUiParamBytes(&blk, NY_UI_PROTECTED_OFFSET)[i] = uint8_t(i * 7);
    }
    blk.u4Protected = u4Flag;
    return blk;
}

std::vector<uint8_t> Range(const tagBlkUiParam& blk, uint32_t u4From, uint32_t u4To) {
    const uint8_t* pu1 = NyUiParamBytes(&blk, 0);
    return std::vector<uint8_t>(pu1 + u4From, pu1 + u4To);
}

bool SameBlock(const tagBlkUiParam& a, const tagBlkUiParam& b) {
    return memcmp(&a, &b, sizeof(a)) == 0;
}

// Expected cipher blocks: three-key triple DES, ECB, under the key that Python's hashlib gives
// for this seed (42aeb40c...185c2cc9), computed with a separate DES tool.
TEST(UiParamProtect, EnciphersExactlyTheProtectedRegionUnderTheSeedKey) {
    const tagBlkUiParam blkPlain = MakeBlock(UI_PARAM_CLEAR);
    tagBlkUiParam blk = blkPlain;
    ASSERT_EQ(UiParamEnc(&blk), NY_OK);
    EXPECT_EQ(blk.u4Protected, UI_PARAM_PROTECTED);
    EXPECT_EQ(NyTestToHex(Range(blk, 312, 320)), "5f05ca924d4ce89e");
    EXPECT_EQ(NyTestToHex(Range(blk, 3408, 3416)), "5e0b22f0e1be86b8");
    EXPECT_EQ(Range(blk, 0, 296), Range(blkPlain, 0, 296));
    EXPECT_EQ(Range(blk, 300, 312), Range(blkPlain, 300, 312));
    EXPECT_EQ(Range(blk, 3416, 4096), Range(blkPlain, 3416, 4096));
}

TEST(UiParamProtect, DecryptRestoresTheBlockAndClearsTheFlag) {
    const tagBlkUiParam blkPlain = MakeBlock(UI_PARAM_CLEAR);
    tagBlkUiParam blk = blkPlain;
    ASSERT_EQ(UiParamEnc(&blk), NY_OK);
    ASSERT_EQ(UiParamDec(&blk), NY_OK);
    EXPECT_TRUE(SameBlock(blk, blkPlain));
}

TEST(UiParamProtect, DecryptingAndReEncryptingGivesTheSameCipherText) {
    tagBlkUiParam blk = MakeBlock(UI_PARAM_CLEAR);
    ASSERT_EQ(UiParamEnc(&blk), NY_OK);
    const tagBlkUiParam blkProtected = blk;
    ASSERT_EQ(UiParamDec(&blk), NY_OK);
    ASSERT_EQ(UiParamEnc(&blk), NY_OK);
    EXPECT_TRUE(SameBlock(blk, blkProtected));
}

TEST(UiParamProtect, TheSeedSelectsTheKey) {
    tagBlkUiParam blkA = MakeBlock(UI_PARAM_CLEAR);
    tagBlkUiParam blkB = MakeBlock(UI_PARAM_CLEAR);
    blkB.au1KeySeed[15] ^= 0x80;
    ASSERT_EQ(UiParamEnc(&blkA), NY_OK);
    ASSERT_EQ(UiParamEnc(&blkB), NY_OK);
    EXPECT_NE(Range(blkA, 312, 3416), Range(blkB, 312, 3416));
    // A block deciphered under another seed does not come back.
    memcpy(blkB.au1KeySeed, blkA.au1KeySeed, NY_UI_KEY_SEED_SIZE);
    ASSERT_EQ(UiParamDec(&blkB), NY_OK);
    EXPECT_NE(Range(blkB, 312, 3416), Range(MakeBlock(UI_PARAM_CLEAR), 312, 3416));
}

struct FlagCase {
    bool bEncrypt;
    uint32_t u4FlagIn;
    bool bTransforms;
    uint32_t u4FlagOut;
};

TEST(UiParamProtect, FlagDecidesWhetherTheBlockIsTouched) {
    const FlagCase aCases[] = {
        {true, 0, true, 1},   {true, 1, false, 1}, {true, 2, true, 1},
        {false, 0, false, 0}, {false, 1, true, 0}, {false, 2, true, 0},
    };
    for (const FlagCase& c : aCases) {
        const tagBlkUiParam blkIn = MakeBlock(c.u4FlagIn);
        tagBlkUiParam blk = blkIn;
        ASSERT_EQ(c.bEncrypt ? UiParamEnc(&blk) : UiParamDec(&blk), NY_OK);
        EXPECT_EQ(blk.u4Protected, c.u4FlagOut) << c.bEncrypt << " flag " << c.u4FlagIn;
        EXPECT_EQ(Range(blk, 312, 3416) != Range(blkIn, 312, 3416), c.bTransforms)
            << c.bEncrypt << " flag " << c.u4FlagIn;
        EXPECT_EQ(Range(blk, 0, 296), Range(blkIn, 0, 296));
    }
}

TEST(UiParamProtect, WorksOnABlockAtAnOddAddress) {
    std::vector<uint8_t> vBuf(sizeof(tagBlkUiParam) + 1);
    const tagBlkUiParam blkPlain = MakeBlock(UI_PARAM_CLEAR);
    memcpy(vBuf.data() + 1, &blkPlain, sizeof(blkPlain));
    auto* pBlk = reinterpret_cast<tagBlkUiParam*>(vBuf.data() + 1);
    ASSERT_EQ(UiParamEnc(pBlk), NY_OK);
    EXPECT_EQ(NyTestToHex(vBuf.data() + 1 + 312, 8), "5f05ca924d4ce89e");
    ASSERT_EQ(UiParamDec(pBlk), NY_OK);
    EXPECT_EQ(0, memcmp(vBuf.data() + 1, &blkPlain, sizeof(blkPlain)));
}

TEST(UiParamProtect, ANullBlockIsRefused) {
    EXPECT_EQ(UiParamEnc(nullptr), NY_ERR_BAD_ARGUMENT);
    EXPECT_EQ(UiParamDec(nullptr), NY_ERR_BAD_ARGUMENT);
}

}  // namespace
