// How ukey-uictl shows an answer.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "UictlOutput.h"

namespace {

void PutText(tagBlkUiParam* pBlock, uint32_t u4Offset, const char* szText) {
    memcpy(NyUiParamBytes(pBlock, u4Offset), szText, strlen(szText) + 1);
}

TEST(UictlOutputTest, OutputFieldsFollowTheCommandType) {
    struct {
        uint32_t u4CmdType;
        const char* szExpected;
    } aCases[] = {
        {UI_CMD_VERIFY_PIN,
         "{\"enRes\":2,\"result\":\"UI_RESULT_OK\",\"pin\":\"1234\",\"pinLength\":4}\n"},
        {UI_CMD_CHANGE_PIN_FORCED,
         "{\"enRes\":2,\"result\":\"UI_RESULT_OK\",\"oldPin\":\"\",\"oldPinLength\":0,"
         "\"newPin\":\"abcd\",\"newPinLength\":4}\n"},
        {UI_CMD_UNBLOCK,
         "{\"enRes\":2,\"result\":\"UI_RESULT_OK\",\"soPin\":\"1234\",\"soPinLength\":4,"
         "\"userPin\":\"\",\"userPinLength\":0}\n"},
        {UI_CMD_CONFIRM, "{\"enRes\":2,\"result\":\"UI_RESULT_OK\"}\n"},
        {0x20000, "{\"enRes\":2,\"result\":\"UI_RESULT_OK\"}\n"},
    };
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.u4CmdType);
        tagBlkUiParam blk = {};
        blk.enRes = UI_RESULT_OK;
        blk.enUiCmdType = c.u4CmdType;
        if (c.u4CmdType == UI_CMD_VERIFY_PIN || c.u4CmdType == UI_CMD_UNBLOCK) {
            PutText(&blk, UI_OFS_VERIFY_PIN, "1234");
            NyUiParamSetU4(&blk, UI_OFS_VERIFY_PIN_LEN, 4);
        }
        if (c.u4CmdType == UI_CMD_CHANGE_PIN_FORCED) {
            PutText(&blk, UI_OFS_CHANGE_NEW_PIN, "abcd");
            NyUiParamSetU4(&blk, UI_OFS_CHANGE_NEW_PIN_LEN, 4);
        }
        EXPECT_EQ(c.szExpected, UictlFormatAnswer(&blk, true, false));
    }
}

TEST(UictlOutputTest, LabelAndChoiceFieldsSitWhereTheDialogsWriteThem) {
    tagBlkUiParam blk = {};
    blk.enUiCmdType = UI_CMD_CHANGE_LABEL;
    PutText(&blk, 328, "My Key");
    NyUiParamSetU4(&blk, 393, 6);
    PutText(&blk, 397, "pw");
    NyUiParamSetU4(&blk, 430, 2);
    EXPECT_EQ(
        "{\"enRes\":0,\"result\":\"UI_RESULT_NOT_PROCESSED\",\"name\":\"My Key\","
        "\"nameLength\":6,\"pin\":\"pw\",\"pinLength\":2}\n",
        UictlFormatAnswer(&blk, true, false));

    tagBlkUiParam blkMsg = {};
    blkMsg.enUiCmdType = UI_CMD_MESSAGE;
    blkMsg.enRes = UI_RESULT_CANCEL;
    NyUiParamSetU4(&blkMsg, 1348, 3);
    EXPECT_EQ("enRes: 5\nresult: UI_RESULT_CANCEL\nchoice: 3\n",
              UictlFormatAnswer(&blkMsg, false, false));
}

TEST(UictlOutputTest, TextFieldsAreEscapedForJsonAndBoundedByTheirField) {
    tagBlkUiParam blk = {};
    blk.enUiCmdType = UI_CMD_CHANGE_LABEL;
    PutText(&blk, 328, "a\"b\\c\td");
    std::string strJson = UictlFormatAnswer(&blk, true, false);
    EXPECT_NE(std::string::npos, strJson.find("\"name\":\"a\\\"b\\\\c\\u0009d\"")) << strJson;

    // A PIN field without its terminator stops at the field's end (33 bytes).
    tagBlkUiParam blkFull = {};
    blkFull.enUiCmdType = UI_CMD_VERIFY_PIN;
    memset(NyUiParamBytes(&blkFull, UI_OFS_VERIFY_PIN), 'x', NY_UI_PIN_FIELD_SIZE);
    NyUiParamSetU4(&blkFull, UI_OFS_VERIFY_PIN_LEN, 0x41414141);
    std::string strText = UictlFormatAnswer(&blkFull, false, false);
    EXPECT_NE(std::string::npos, strText.find("pin: " + std::string(33, 'x') + "\n")) << strText;
}

TEST(UictlOutputTest, ResultNamesAndBlockHex) {
    EXPECT_STREQ("UI_RESULT_PENDING", UictlResultName(UI_RESULT_PENDING));
    EXPECT_STREQ("UI_RESULT_START_FAILED", UictlResultName(UI_RESULT_START_FAILED));
    EXPECT_STREQ("UI_RESULT_UNKNOWN", UictlResultName(3));

    tagBlkUiParam blk = {};
    blk.enUiCmdType = 0xA1B2C3D4;
    std::string strJson = UictlFormatAnswer(&blk, true, true);
    std::string strHex = "00000000d4c3b2a1" + std::string(2 * NY_UI_PARAM_SIZE - 16, '0');
    EXPECT_NE(std::string::npos, strJson.find("\"block\":\"" + strHex + "\"}"));
}

}  // namespace
