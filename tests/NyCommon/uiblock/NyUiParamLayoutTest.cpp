// The UI block's unaligned field accessors, a full-length PIN field, and the size-query copy.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "uiblock/NyUiParam.h"

namespace {

std::vector<uint8_t> Bytes(const tagBlkUiParam& blk) {
    return std::vector<uint8_t>(NyUiParamBytes(&blk, 0), NyUiParamBytes(&blk, sizeof(blk)));
}

TEST(UiParamLayout, LittleEndianFieldsAtUnalignedOffsetsAFullLengthPinAndTheCopyOut) {
    for (uint32_t u4Offset : {UI_OFS_VERIFY_PIN_LEN, UI_OFS_CHANGE_OLD_PIN_LEN,
                              UI_OFS_UNBLOCK_USER_PIN_LEN, UI_OFS_CHANGE_NEW_PIN_LEN, 4092u}) {
        tagBlkUiParam blk;
        memset(&blk, 0xAB, sizeof(blk));
        std::vector<uint8_t> vExpected = Bytes(blk);
        for (uint32_t i = 0; i < 4; ++i) {
            vExpected[u4Offset + i] = uint8_t(4 - i);
        }
        NyUiParamSetU4(&blk, u4Offset, 0x01020304);
        EXPECT_EQ(Bytes(blk), vExpected) << u4Offset;
        EXPECT_EQ(NyUiParamGetU4(&blk, u4Offset), 0x01020304u) << u4Offset;
        EXPECT_EQ(NyUiParamGetU4(&blk, u4Offset - 1), 0x020304ABu) << u4Offset;
        NyUiParamSetU4(&blk, 4093, 0);
        NyUiParamSetU4(&blk, 0xFFFFFFFF, 0);
        EXPECT_EQ(Bytes(blk), vExpected) << "wrote past the block";
        EXPECT_EQ(NyUiParamGetU4(&blk, 4093), 0u);
    }
    // A thirty-two character PIN and its NUL fill its field right up to the length field.
    EXPECT_EQ(NY_UI_PIN_FIELD_SIZE, 33u);
    EXPECT_EQ(UI_OFS_VERIFY_PIN + NY_UI_PIN_FIELD_SIZE, UI_OFS_VERIFY_PIN_LEN);
    tagBlkUiParam blk;
    // Copying the block out follows the size-query convention.
    enum : int { NO_SRC = 1, NO_OUT = 2, NO_LEN = 4 };  // arguments a row passes as null
    const uint32_t kInvalid = NY_ERR_INVALID_ARGUMENT, kBad = NY_ERR_BAD_ARGUMENT;
    const struct {
        int iNull;
        uint32_t u4Capacity, u4Expected;
    } aCases[] = {{NO_LEN, 4096, kInvalid},           {NO_SRC, 4096, kBad}, {NO_OUT, 0, NY_OK},
                  {0, 4095, NY_ERR_BUFFER_TOO_SMALL}, {0, 4096, NY_OK},     {0, 5000, NY_OK}};
    for (uint32_t i = 0; i < sizeof(blk); ++i) {
        *NyUiParamBytes(&blk, i) = uint8_t(i * 3);
    }
    for (const auto& c : aCases) {
        std::vector<uint8_t> vOut(5000, 0xEE);
        uint32_t u4Len = c.u4Capacity;
        EXPECT_EQ(NyGetReturnData((c.iNull & NO_SRC) ? nullptr : &blk, sizeof(blk),
                                  (c.iNull & NO_OUT) ? nullptr : vOut.data(),
                                  (c.iNull & NO_LEN) ? nullptr : &u4Len),
                  c.u4Expected)
            << c.iNull << " capacity " << c.u4Capacity;
        EXPECT_EQ(u4Len, (c.iNull & NO_LEN) ? c.u4Capacity : 4096u) << c.u4Capacity;
        const bool bCopied = memcmp(vOut.data(), &blk, sizeof(blk)) == 0;
        EXPECT_EQ(bCopied, c.u4Expected == NY_OK && !(c.iNull & NO_OUT)) << c.u4Capacity;
        EXPECT_EQ(vOut[4096], 0xEE) << c.u4Capacity;
    }
}

}  // namespace
