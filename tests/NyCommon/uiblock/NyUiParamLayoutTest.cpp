// The UI block's unaligned field accessors, a full-length PIN field, and the size-query copy.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "runtime/NySafe.h"
#include "uiblock/NyUiParam.h"

namespace {

std::vector<uint8_t> Bytes(const tagBlkUiParam& blk) {
    const uint8_t* pu1 = reinterpret_cast<const uint8_t*>(&blk);
    return std::vector<uint8_t>(pu1, pu1 + sizeof(blk));
}

// The length fields behind the 33-byte PIN fields are unaligned on purpose.
TEST(UiParamU4, WritesLittleEndianAtUnalignedOffsetsAndTouchesNothingElse) {
    const uint32_t aOffsets[] = {UI_OFS_VERIFY_PIN_LEN,       UI_OFS_CHANGE_OLD_PIN_LEN,
                                 UI_OFS_UNBLOCK_USER_PIN_LEN, UI_OFS_CHANGE_NEW_PIN_LEN,
                                 UI_OFS_VERIFY_PIN_KIND,      NY_UI_PARAM_SIZE - 4};
    for (uint32_t u4Offset : aOffsets) {
        tagBlkUiParam blk;
        memset(&blk, 0xAB, sizeof(blk));
        std::vector<uint8_t> vExpected = Bytes(blk);
        vExpected[u4Offset] = 0x04;
        vExpected[u4Offset + 1] = 0x03;
        vExpected[u4Offset + 2] = 0x02;
        vExpected[u4Offset + 3] = 0x01;
        NyUiParamSetU4(&blk, u4Offset, 0x01020304);
        EXPECT_EQ(Bytes(blk), vExpected) << u4Offset;
        EXPECT_EQ(NyUiParamGetU4(&blk, u4Offset), 0x01020304u) << u4Offset;
        if (u4Offset + 1 <= NY_UI_PARAM_SIZE - 4) {
            EXPECT_EQ(NyUiParamGetU4(&blk, u4Offset + 1), 0xAB010203u) << u4Offset;
        }
    }
}

TEST(UiParamU4, OffsetsPastTheBlockReadZeroAndWriteNothing) {
    tagBlkUiParam blk;
    memset(&blk, 0xAB, sizeof(blk));
    const std::vector<uint8_t> vBefore = Bytes(blk);
    for (uint32_t u4Offset : {NY_UI_PARAM_SIZE - 3, NY_UI_PARAM_SIZE, 0xFFFFFFFFu}) {
        EXPECT_EQ(NyUiParamGetU4(&blk, u4Offset), 0u) << u4Offset;
        NyUiParamSetU4(&blk, u4Offset, 0x11111111);
    }
    EXPECT_EQ(Bytes(blk), vBefore);
    EXPECT_EQ(NyUiParamGetU4(nullptr, 0), 0u);
}

TEST(UiParamU4, HeaderFieldsAreTheWordsAtTheirOffsets) {
    tagBlkUiParam blk = {};
    blk.enRes = UI_RESULT_CANCEL;
    blk.enUiCmdType = UI_CMD_CHANGE_LABEL;
    blk.u4Mode = UI_MODE_ASYNC;
    blk.u4Protected = UI_PARAM_PROTECTED;
    EXPECT_EQ(NyUiParamGetU4(&blk, 0), 5u);
    EXPECT_EQ(NyUiParamGetU4(&blk, 4), 0x10008u);
    EXPECT_EQ(NyUiParamGetU4(&blk, 8), 1u);
    EXPECT_EQ(NyUiParamGetU4(&blk, 296), 1u);
}

TEST(UiParamPin, AThirtyTwoCharacterPinEndsInTheFieldsLastByte) {
    tagBlkUiParam blk;
    memset(&blk, 0xAB, sizeof(blk));
    const char szPin[] = "0123456789abcdef0123456789ABCDEF";
    ASSERT_EQ(strlen(szPin), NY_UI_PIN_MAX_LEN);
    char* szField = reinterpret_cast<char*>(NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN));
    ASSERT_TRUE(NyStrCopy(szField, NY_UI_PIN_FIELD_SIZE, szPin));
    NyUiParamSetU4(&blk, UI_OFS_VERIFY_PIN_LEN, uint32_t(strlen(szField)));
    EXPECT_EQ(*NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN + NY_UI_PIN_MAX_LEN), 0);
    EXPECT_STREQ(szField, szPin);
    EXPECT_EQ(NyUiParamGetU4(&blk, UI_OFS_VERIFY_PIN_LEN), 32u);
    EXPECT_EQ(*NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN_LEN + 4), 0xAB);
}

struct ReturnCase {
    const char* szName;
    bool bNullOut;
    bool bNullLen;
    uint32_t u4Capacity;
    uint32_t u4Expected;
    uint32_t u4ExpectedLen;
    bool bCopied;
};

TEST(UiParamReturnData, FollowsTheSizeQueryConvention) {
    const ReturnCase aCases[] = {
        {"null size pointer", false, true, 4096, NY_ERR_INVALID_ARGUMENT, 0, false},
        {"size query", true, false, 0, NY_OK, 4096, false},
        {"one byte short", false, false, 4095, NY_ERR_BUFFER_TOO_SMALL, 4096, false},
        {"exact", false, false, 4096, NY_OK, 4096, true},
        {"larger", false, false, 5000, NY_OK, 4096, true},
    };
    tagBlkUiParam blk;
    for (uint32_t i = 0; i < sizeof(blk); ++i) {
        NyUiParamBytes(&blk, i)[0] = uint8_t(i * 3);
    }
    for (const ReturnCase& c : aCases) {
        std::vector<uint8_t> vOut(5000, 0xEE);
        uint32_t u4Len = c.u4Capacity;
        EXPECT_EQ(NyGetReturnData(&blk, sizeof(blk), c.bNullOut ? nullptr : vOut.data(),
                                  c.bNullLen ? nullptr : &u4Len),
                  c.u4Expected)
            << c.szName;
        if (!c.bNullLen) {
            EXPECT_EQ(u4Len, c.u4ExpectedLen) << c.szName;
        }
        EXPECT_EQ(memcmp(vOut.data(), &blk, sizeof(blk)) == 0, c.bCopied) << c.szName;
        EXPECT_EQ(vOut[4096], 0xEE) << c.szName;
    }
}

TEST(UiParamReturnData, ANullSourceIsRefused) {
    uint8_t au1Out[16];
    uint32_t u4Len = sizeof(au1Out);
    EXPECT_EQ(NyGetReturnData(nullptr, 16, au1Out, &u4Len), NY_ERR_BAD_ARGUMENT);
}

}  // namespace
