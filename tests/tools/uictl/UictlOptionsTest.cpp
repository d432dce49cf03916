// ukey-uictl's options as it parses them into the request block and its own settings, and its
// answers as it prints them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "UictlOptions.h"
#include "UictlOutput.h"
#include "support/NyTestRun.h"
#include "uiblock/NyUiConfirmParam.h"

namespace {

struct BlkParsedTag {
    EnToolParse enParse = NY_TOOL_BAD;
    std::string strError;
    BlkUictlOptionsTag options;
    tagBlkUiParam blkReq = {};
    uint32_t Field(uint32_t u4Offset) const { return NyUiParamGetU4(&blkReq, u4Offset); }
};

BlkParsedTag Parse(const std::vector<std::string>& vArgs) {
    CNyTestArgv argv(vArgs);
    BlkParsedTag parsed;
    const BlkUictlCommandTag* pCommand = UictlFindCommand(vArgs.at(0));
    EXPECT_NE(nullptr, pCommand) << vArgs.at(0);
    if (pCommand != nullptr) {
        parsed.enParse = UictlParseOptions(argv.Argc(), argv.Argv(), 2, pCommand, &parsed.options,
                                           &parsed.blkReq, &parsed.strError);
    }
    return parsed;
}

// "command kind timeout closable detail attempts wait" of a parsed request.
std::string Fields(const std::vector<std::string>& vArgs) {
    BlkParsedTag parsed = Parse(vArgs);
    EXPECT_EQ(NY_TOOL_RUN, parsed.enParse) << parsed.strError;
    char sz[128];
    snprintf(sz, sizeof(sz), "%X %u %u %u %X %u %d", parsed.blkReq.enUiCmdType,
             parsed.Field(UI_OFS_CONFIRM_KIND), parsed.Field(UI_OFS_CONFIRM_TIMEOUT),
             parsed.Field(UI_OFS_CONFIRM_CLOSABLE), parsed.Field(UI_OFS_CONFIRM_DETAIL),
             parsed.Field(UI_OFS_CONFIRM_ATTEMPTS), static_cast<int>(parsed.options.u4WaitS));
    return sz;
}

TEST(UictlOptionsTest, FieldsDefaultsAndLimitsOfEachCommand) {
    const std::pair<std::vector<std::string>, const char*> aCases[] = {
        {{"confirm"}, "10004 1 30 0 0 0 30"},
        {{"confirm", "--kind", "3", "--timeout", "45", "--closable", "--detail", "E06163CF",
          "--attempts=2", "--timeout=60", "--wait", "50"},
         "10004 3 60 1 E06163CF 2 50"},
        {{"confirm", "--detail", "0xee", "--wait=90"}, "10004 1 30 0 EE 0 30"},
        {{"fingerprint"}, "10004 16 0 0 0 0 -1"},
        {{"fingerprint", "--enrol", "--json"}, "10004 15 0 0 0 0 -1"},
        {{"fingerprint", "--enrol", "--verify"}, "10004 16 0 0 0 0 -1"},
    };
    for (const auto& c : aCases) {
        EXPECT_EQ(c.second, Fields(c.first)) << c.first.back();
    }
    BlkParsedTag message =
        Parse({"message", "--message-id", "E06163C3", "--param", "3", "--id", "9"});
    EXPECT_EQ(0xE06163C3u, message.Field(312));
    EXPECT_EQ(3u, message.Field(316));
    EXPECT_EQ(9u, message.options.u4InteractionId);
    BlkParsedTag change =
        Parse({"change-pin", "--compulsory", "--min", "6", "--max=16", "--kind", "2"});
    EXPECT_EQ(UI_CMD_CHANGE_PIN_FORCED, change.blkReq.enUiCmdType);
    EXPECT_EQ(6u, change.Field(UI_OFS_CHANGE_MIN_LEN));
    EXPECT_EQ(16u, change.Field(UI_OFS_CHANGE_MAX_LEN));
    EXPECT_EQ(2u, change.Field(UI_OFS_CHANGE_PIN_KIND));
}

TEST(UictlOptionsTest, TimetableOrLimitRunsTheDialogAsynchronously) {
    BlkParsedTag parsed = Parse({"fingerprint", "--enrol", "--update-after", "1000:EF",
                                 "--update-after=250:0x000000EA", "--stop-after", "3000"});
    ASSERT_EQ(NY_TOOL_RUN, parsed.enParse) << parsed.strError;
    ASSERT_EQ(2u, parsed.options.vUpdates.size());
    EXPECT_EQ(1000u, parsed.options.vUpdates[0].u4AfterMs);
    EXPECT_EQ(0xEFu, parsed.options.vUpdates[0].u4Detail);
    EXPECT_EQ(250u, parsed.options.vUpdates[1].u4AfterMs);
    EXPECT_EQ(0xEAu, parsed.options.vUpdates[1].u4Detail);
    EXPECT_EQ(3000u, parsed.options.u4StopAfterMs);
    for (const auto& vArgs :
         std::vector<std::vector<std::string>>{{"fingerprint", "--stop-after", "1"},
                                               {"new-pin", "--terminate-after", "500"},
                                               {"verify", "--wait", "5"},
                                               {"confirm"},
                                               {"raw", "--async"}}) {
        BlkParsedTag async = Parse(vArgs);
        EXPECT_TRUE(async.options.bAsync) << vArgs[0];
        EXPECT_EQ(UI_MODE_ASYNC, async.blkReq.u4Mode) << vArgs[0];
    }
    EXPECT_FALSE(Parse({"new-pin"}).options.bAsync);
}

TEST(UictlOptionsTest, MistakesAreRefusedWithAReason) {
    const struct {
        std::vector<std::string> vArgs;
        const char* szError;
    } aCases[] = {
        {{"confirm", "--detail", "XYZ"}, "bad value \"XYZ\" for --detail (hexadecimal)"},
        {{"confirm", "--detail", "123456789"},
         "bad value \"123456789\" for --detail (hexadecimal)"},
        {{"confirm", "--detail", "0x"}, "bad value \"0x\" for --detail (hexadecimal)"},
        {{"confirm", "--kind", "-1"}, "bad value \"-1\" for --kind"},
        {{"fingerprint", "--kind", "3"}, "unknown option '--kind'"},
        {{"message", "--id", "E0"}, "bad value \"E0\" for --id"},
        {{"verify", "--wait", "4294967295"}, "bad value \"4294967295\" for --wait"},
        {{"confirm", "--update-after", "100"}, "bad value \"100\" for --update-after"},
        {{"confirm", "--update-after", "x:EE"}, "bad value \"x:EE\" for --update-after"},
        {{"confirm", "--update-after", "100:"}, "bad value \"100:\" for --update-after"},
        {{"confirm", "--stop-after", "soon"}, "bad value \"soon\" for --stop-after"},
        {{"confirm", "extra"}, "unexpected argument \"extra\""},
        {{"raw", "--u32", "4095=1"}, "offset 4095 lies outside the 4096-byte block"},
        {{"raw", "--u32", "12"}, "bad value \"12\" for --u32"},
        {{"raw", "--protect", "0011"}, "bad value \"0011\" for --protect"},
        {{"message", "--message-id", "xyz"}, "bad value \"xyz\" for --message-id"},
        {{"verify", "--timeout", "5"}, "unknown option '--timeout'"},
        {{"raw", "--update-after", "1:EE"},
         "--update-after feeds the confirm and fingerprint dialogs only"},
    };
    for (const auto& c : aCases) {
        BlkParsedTag parsed = Parse(c.vArgs);
        EXPECT_EQ(NY_TOOL_BAD, parsed.enParse) << c.vArgs.back();
        EXPECT_EQ(c.szError, parsed.strError) << c.vArgs.back();
    }
}

TEST(UictlOptionsTest, AnswersAreEscapedBoundedByTheirFieldsAndNamed) {
    tagBlkUiParam blk = {};
    blk.enUiCmdType = UI_CMD_VERIFY_PIN;
    // A PIN without its terminator stops at the field's end (33 bytes); text is escaped for JSON.
    memset(NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN), 'x', NY_UI_PIN_FIELD_SIZE);
    NyUiParamSetU4(&blk, UI_OFS_VERIFY_PIN_LEN, 0x41414141);
    EXPECT_EQ("enRes: 0\nresult: UI_RESULT_NOT_PROCESSED\npin: " + std::string(33, 'x') +
                  "\npinLength: 1094795585\nmain: M\n",
              UictlFormatAnswer(&blk, false, false, "M"));
    memcpy(NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN), "a\"b\\c\td", 8);
    EXPECT_EQ(
        "{\"enRes\":0,\"result\":\"UI_RESULT_NOT_PROCESSED\",\"pin\":\"a\\\"b\\\\c\\u0009d\","
        "\"pinLength\":1094795585}\n",
        UictlFormatAnswer(&blk, true, false));
    EXPECT_STREQ("UI_RESULT_PENDING", UictlResultName(UI_RESULT_PENDING));
    EXPECT_STREQ("UI_RESULT_UNKNOWN", UictlResultName(3));
}

}  // namespace
