// The UI block's unaligned field accessors, a full-length PIN field, and the size-query copy.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "runtime/NySafe.h"
#include "uiblock/NyUiParam.h"

namespace {

std::vector<uint8_t> Bytes(const tagBlkUiParam& blk) {
    return std::vector<uint8_t>(NyUiParamBytes(&blk, 0), NyUiParamBytes(&blk, sizeof(blk)));
}

TEST(UiParamLayout, LittleEndianFieldsAtUnalignedOffsetsAndAFullLengthPin) {
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
    // A thirty-two character PIN ends in its field's last byte, before the length field.
    tagBlkUiParam blk;
    memset(&blk, 0xAB, sizeof(blk));
    const char szPin[] = "0123456789abcdef0123456789ABCDEF";
    char* szField = reinterpret_cast<char*>(NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN));
    ASSERT_TRUE(NyStrCopy(szField, NY_UI_PIN_FIELD_SIZE, szPin));
    NyUiParamSetU4(&blk, UI_OFS_VERIFY_PIN_LEN, uint32_t(strlen(szField)));
    EXPECT_EQ(*NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN + 32), 0);
    EXPECT_STREQ(szField, szPin);
    EXPECT_EQ(NyUiParamGetU4(&blk, UI_OFS_VERIFY_PIN_LEN), 32u);
    EXPECT_EQ(*NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN_LEN + 4), 0xAB);
}

TEST(UiParamReturnData, FollowsTheSizeQueryConvention) {
    enum : int { NO_SRC = 1, NO_OUT = 2, NO_LEN = 4 };  // arguments a row passes as null
    const struct {
        int iNull;
        uint32_t u4Capacity, u4Expected;
    } aCases[] = {{NO_LEN, 4096, NY_ERR_INVALID_ARGUMENT},
                  {NO_SRC, 4096, NY_ERR_BAD_ARGUMENT},
                  {NO_OUT, 0, NY_OK},
                  {0, 4095, NY_ERR_BUFFER_TOO_SMALL},
                  {0, 4096, NY_OK},
                  {0, 5000, NY_OK}};
    tagBlkUiParam blk;
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
