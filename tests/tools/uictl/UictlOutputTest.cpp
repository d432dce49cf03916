// How ukey-uictl shows an answer.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "UictlOutput.h"

namespace {

void PutText(tagBlkUiParam* pBlock, uint32_t u4Offset, const char* szText) {
    memcpy(NyUiParamBytes(pBlock, u4Offset), szText, strlen(szText) + 1);
}

TEST(UictlOutputTest, OutputFieldsFollowTheCommandTypeAndSitWhereTheDialogsWriteThem) {
    tagBlkUiParam blk = {};
    blk.enRes = UI_RESULT_OK;
    blk.enUiCmdType = UI_CMD_CHANGE_PIN_FORCED;
    PutText(&blk, UI_OFS_CHANGE_NEW_PIN, "abcd");
    NyUiParamSetU4(&blk, UI_OFS_CHANGE_NEW_PIN_LEN, 4);
    EXPECT_EQ(
        "{\"enRes\":2,\"result\":\"UI_RESULT_OK\",\"oldPin\":\"\",\"oldPinLength\":0,"
        "\"newPin\":\"abcd\",\"newPinLength\":4}\n",
        UictlFormatAnswer(&blk, true, false));
    blk.enUiCmdType = UI_CMD_CONFIRM;
    EXPECT_EQ("{\"enRes\":2,\"result\":\"UI_RESULT_OK\"}\n", UictlFormatAnswer(&blk, true, false));

    tagBlkUiParam blkLabel = {};
    blkLabel.enUiCmdType = UI_CMD_CHANGE_LABEL;
    PutText(&blkLabel, 328, "a\"b\\c\td");
    NyUiParamSetU4(&blkLabel, 393, 6);
    PutText(&blkLabel, 397, "pw");
    NyUiParamSetU4(&blkLabel, 430, 2);
    EXPECT_EQ(
        "{\"enRes\":0,\"result\":\"UI_RESULT_NOT_PROCESSED\",\"name\":\"a\\\"b\\\\c\\u0009d\","
        "\"nameLength\":6,\"pin\":\"pw\",\"pinLength\":2,\"main\":\"UKeyUiMain-1\"}\n",
        UictlFormatAnswer(&blkLabel, true, false, "UKeyUiMain-1"));

    tagBlkUiParam blkMsg = {};
    blkMsg.enUiCmdType = UI_CMD_MESSAGE;
    blkMsg.enRes = UI_RESULT_CANCEL;
    NyUiParamSetU4(&blkMsg, 1348, 3);
    EXPECT_EQ("enRes: 5\nresult: UI_RESULT_CANCEL\nchoice: 3\nmain: M\n",
              UictlFormatAnswer(&blkMsg, false, false, "M"));
}

TEST(UictlOutputTest, TextFieldsAreBoundedByTheirFieldAndTheBlockIsHex) {
    // A PIN field without its terminator stops at the field's end (33 bytes).
    tagBlkUiParam blk = {};
    blk.enUiCmdType = UI_CMD_VERIFY_PIN;
    memset(NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN), 'x', NY_UI_PIN_FIELD_SIZE);
    NyUiParamSetU4(&blk, UI_OFS_VERIFY_PIN_LEN, 0x41414141);
    EXPECT_EQ("enRes: 0\nresult: UI_RESULT_NOT_PROCESSED\npin: " + std::string(33, 'x') +
                  "\npinLength: 1094795585\n",
              UictlFormatAnswer(&blk, false, false));

    EXPECT_STREQ("UI_RESULT_PENDING", UictlResultName(UI_RESULT_PENDING));
    EXPECT_STREQ("UI_RESULT_START_FAILED", UictlResultName(UI_RESULT_START_FAILED));
    EXPECT_STREQ("UI_RESULT_UNKNOWN", UictlResultName(3));
    tagBlkUiParam blkRaw = {};
    blkRaw.enUiCmdType = 0xA1B2C3D4;
    std::string strHex = "00000000d4c3b2a1" + std::string(2 * NY_UI_PARAM_SIZE - 16, '0');
    EXPECT_EQ("{\"enRes\":0,\"result\":\"UI_RESULT_NOT_PROCESSED\",\"block\":\"" + strHex + "\"}\n",
              UictlFormatAnswer(&blkRaw, true, true));
}

}  // namespace
