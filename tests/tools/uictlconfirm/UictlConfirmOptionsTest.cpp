// ukey-uictl's options as it parses them into the request block and its own settings.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "UictlOptions.h"
#include "uiblock/NyUiConfirmParam.h"

namespace {

struct BlkParsedTag {
    EnToolParse enParse = NY_TOOL_BAD;
    std::string strError;
    BlkUictlOptionsTag options;
    tagBlkUiParam blkReq = {};
    uint32_t Field(uint32_t u4Offset) const { return NyUiParamGetU4(&blkReq, u4Offset); }
};

BlkParsedTag Parse(std::vector<std::string> vArgs) {
    vArgs.insert(vArgs.begin(), "ukey-uictl");
    std::vector<char*> vArgv;
    for (std::string& str : vArgs) {
        vArgv.push_back(&str[0]);
    }
    BlkParsedTag parsed;
    const BlkUictlCommandTag* pCommand = UictlFindCommand(vArgs.at(1));
    EXPECT_NE(nullptr, pCommand) << vArgs.at(1);
    if (pCommand != nullptr) {
        parsed.enParse =
            UictlParseOptions(static_cast<int>(vArgv.size()), vArgv.data(), 2, pCommand,
                              &parsed.options, &parsed.blkReq, &parsed.strError);
    }
    return parsed;
}

TEST(UictlConfirmOptionsTest, FieldsDefaultsAndLimitsOfEachCommand) {
    const uint32_t u4Wait = 0xFFFFFFF0;  // reads the --wait setting, not a field
    const struct {
        std::vector<std::string> vArgs;
        std::vector<std::pair<uint32_t, uint32_t>> vFields;  // offset, value
    } aCases[] = {
        {{"confirm"},
         {{0, 0},
          {4, UI_CMD_CONFIRM},
          {UI_OFS_CONFIRM_KIND, 1},
          {UI_OFS_CONFIRM_TIMEOUT, 30},
          {UI_OFS_CONFIRM_CLOSABLE, 0},
          {u4Wait, 30}}},
        {{"confirm", "--kind", "3", "--timeout", "45", "--closable", "--detail", "E06163CF",
          "--attempts=2", "--timeout=60", "--wait", "50"},
         {{UI_OFS_CONFIRM_KIND, 3},
          {UI_OFS_CONFIRM_TIMEOUT, 60},
          {UI_OFS_CONFIRM_CLOSABLE, 1},
          {UI_OFS_CONFIRM_DETAIL, UI_FP_VERIFY_FAILED},
          {UI_OFS_CONFIRM_ATTEMPTS, 2},
          {u4Wait, 50}}},
        {{"confirm", "--detail", "0xee", "--wait=90"},
         {{UI_OFS_CONFIRM_DETAIL, 0xEE}, {u4Wait, 30}}},
        {{"fingerprint"},
         {{UI_OFS_CONFIRM_KIND, UI_CTT_FINGERPRINT_VERIFY}, {u4Wait, UICTL_NO_WAIT}}},
        {{"fingerprint", "--enrol", "--json"}, {{UI_OFS_CONFIRM_KIND, UI_CTT_FINGERPRINT_ENROL}}},
        {{"fingerprint", "--enrol", "--verify"},
         {{UI_OFS_CONFIRM_KIND, UI_CTT_FINGERPRINT_VERIFY}}},
        {{"message", "--message-id", "E06163C3", "--param", "3", "--id", "9"},
         {{4, UI_CMD_MESSAGE}, {312, 0xE06163C3}, {316, 3}}},
        {{"change-pin", "--compulsory", "--min", "6", "--max=16", "--kind", "2"},
         {{4, UI_CMD_CHANGE_PIN_FORCED},
          {UI_OFS_CHANGE_MIN_LEN, 6},
          {UI_OFS_CHANGE_MAX_LEN, 16},
          {UI_OFS_CHANGE_PIN_KIND, 2}}},
    };
    for (const auto& c : aCases) {
        BlkParsedTag parsed = Parse(c.vArgs);
        ASSERT_EQ(NY_TOOL_RUN, parsed.enParse) << parsed.strError;
        for (const auto& field : c.vFields) {
            uint32_t u4Got =
                field.first == u4Wait ? parsed.options.u4WaitS : parsed.Field(field.first);
            EXPECT_EQ(field.second, u4Got) << c.vArgs.back() << " @" << field.first;
        }
    }
    EXPECT_EQ(9u, Parse({"message", "--id", "9"}).options.u4InteractionId);
}

TEST(UictlConfirmOptionsTest, TimetableOrLimitRunsTheDialogAsynchronously) {
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

TEST(UictlConfirmOptionsTest, MistakesAreRefusedWithAReason) {
    const struct {
        std::vector<std::string> vArgs;
        const char* szError;
    } aCases[] = {
        {{"confirm", "--detail", "XYZ"}, "bad value \"XYZ\" for --detail (hexadecimal)"},
        {{"confirm", "--detail", "123456789"},
         "bad value \"123456789\" for --detail (hexadecimal)"},
        {{"confirm", "--detail", "0x"}, "bad value \"0x\" for --detail (hexadecimal)"},
        {{"confirm", "--kind", "-1"}, "bad value \"-1\" for --kind"},
        {{"confirm", "--closable=1"}, "option --closable takes no value"},
        {{"fingerprint", "--kind", "3"}, "unknown option '--kind'"},
        {{"message", "--id", "E0"}, "bad value \"E0\" for --id"},
        {{"verify", "--wait", "4294967295"}, "bad value \"4294967295\" for --wait"},
        {{"confirm", "--update-after", "100"}, "bad value \"100\" for --update-after"},
        {{"confirm", "--update-after", "x:EE"}, "bad value \"x:EE\" for --update-after"},
        {{"confirm", "--update-after", "100:"}, "bad value \"100:\" for --update-after"},
        {{"confirm", "--stop-after", "soon"}, "bad value \"soon\" for --stop-after"},
        {{"confirm", "extra"}, "unexpected argument \"extra\""},
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

}  // namespace
