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

// What a command line sets: "type mode | the words at 312, 316, 320, 324, 328, 3412 | wait
// stop", numbers in hexadecimal.
std::string Fields(const std::vector<std::string>& vArgs) {
    BlkParsedTag parsed = Parse(vArgs);
    EXPECT_EQ(NY_TOOL_RUN, parsed.enParse) << parsed.strError;
    EXPECT_EQ(parsed.options.bAsync, parsed.blkReq.u4Mode == UI_MODE_ASYNC) << vArgs[0];
    char sz[128];
    snprintf(sz, sizeof(sz), "%X %X | %X %X %X %X %X %X | %X %X", parsed.blkReq.enUiCmdType,
             parsed.blkReq.u4Mode, parsed.Field(312), parsed.Field(316), parsed.Field(320),
             parsed.Field(324), parsed.Field(328), parsed.Field(3412), parsed.options.u4WaitS,
             parsed.options.u4StopAfterMs);
    return sz;
}

TEST(UictlOptionsTest, EachCommandSetsItsFieldsDefaultsAndLimits) {
    const std::string strNone = " | FFFFFFFF FFFFFFFF";
    const std::pair<std::vector<std::string>, std::string> aCases[] = {
        // A confirmation ends with its countdown unless --wait ends it earlier.
        {{"confirm"}, "10004 1 | 1 0 0 0 0 1E | 1E FFFFFFFF"},
        {{"confirm", "--kind", "3", "--timeout", "45", "--closable", "--detail", "E06163CF",
          "--attempts=2", "--timeout=60", "--wait", "50"},
         "10004 1 | 3 1 0 E06163CF 2 3C | 32 FFFFFFFF"},
        {{"confirm", "--detail", "0xee", "--wait=90"}, "10004 1 | 1 0 0 EE 0 1E | 1E FFFFFFFF"},
        {{"fingerprint"}, "10004 0 | 10 0 0 0 0 0" + strNone},
        {{"fingerprint", "--enrol", "--stop-after", "1"}, "10004 1 | F 0 0 0 0 0 | FFFFFFFF 1"},
        {{"fingerprint", "--enrol", "--verify"}, "10004 0 | 10 0 0 0 0 0" + strNone},
        {{"message", "--message-id", "E06163C3", "--param", "3", "--id", "9"},
         "10003 0 | E06163C3 3 0 0 0 0" + strNone},
        {{"change-pin", "--compulsory", "--min", "6", "--max=16", "--kind", "2"},
         "10006 0 | 2 6 10 0 0 0" + strNone},
        {{"new-pin", "--terminate-after", "500", "--min", "4"},
         "10002 1 | 4 0 0 0 0 0 | FFFFFFFF 1F4"},
        {{"verify", "--wait", "5", "--max", "8"}, "10001 1 | 0 8 0 0 0 0 | 5 FFFFFFFF"},
        {{"unblock", "--min", "4", "--max", "9"}, "10007 0 | 4 9 0 0 0 0" + strNone},
        {{"label", "--pin-min", "1", "--pin-max", "2", "--name-min", "3", "--name-max", "4"},
         "10008 0 | 1 2 3 4 0 0" + strNone},
        {{"raw", "--async", "--cmd", "7", "--u32", "3412=0x10"}, "7 1 | 0 0 0 0 0 10" + strNone},
    };
    for (const auto& c : aCases) {
        EXPECT_EQ(c.second, Fields(c.first)) << c.first.back();
    }
    EXPECT_EQ(9u, Parse({"message", "--id", "9"}).options.u4InteractionId);
    BlkParsedTag parsed =
        Parse({"fingerprint", "--update-after", "1000:EF", "--update-after=250:0x000000EA"});
    ASSERT_EQ(2u, parsed.options.vUpdates.size());
    EXPECT_EQ(1000u, parsed.options.vUpdates[0].u4AfterMs);
    EXPECT_EQ(0xEFu, parsed.options.vUpdates[0].u4Detail);
    EXPECT_EQ(250u, parsed.options.vUpdates[1].u4AfterMs);
    EXPECT_EQ(0xEAu, parsed.options.vUpdates[1].u4Detail);
    EXPECT_TRUE(parsed.options.bAsync);
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
