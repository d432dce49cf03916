// The options of the confirm and fingerprint commands, and the timetable options, as
// ukey-uictl parses them into the request block.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "UictlOptions.h"
#include "uiblock/NyUiConfirmParam.h"

namespace {

struct BlkParsedTag {
    bool bOk = false;
    std::string strError;
    BlkUictlOptionsTag options;
    tagBlkUiParam blkReq = {};
};

BlkParsedTag Parse(const std::vector<std::string>& vArgs) {
    std::vector<std::string> vArgv = {"ukey-uictl"};
    vArgv.insert(vArgv.end(), vArgs.begin(), vArgs.end());
    std::vector<char*> vPointers;
    for (std::string& str : vArgv) {
        vPointers.push_back(&str[0]);
    }
    BlkParsedTag parsed;
    const BlkUictlCommandTag* pCommand = UictlFindCommand(vArgs.at(0));
    EXPECT_NE(nullptr, pCommand) << vArgs.at(0);
    if (pCommand != nullptr) {
        parsed.bOk = UictlParseOptions(static_cast<int>(vPointers.size()), vPointers.data(), 2,
                                       pCommand, &parsed.options, &parsed.blkReq, &parsed.strError);
    }
    return parsed;
}

uint32_t Field(const BlkParsedTag& parsed, uint32_t u4Offset) {
    return NyUiParamGetU4(&parsed.blkReq, u4Offset);
}

}  // namespace

TEST(UictlConfirmOptionsTest, ConfirmFieldsDefaultsAndItsOwnTimeout) {
    BlkParsedTag bare = Parse({"confirm"});
    ASSERT_TRUE(bare.bOk) << bare.strError;
    EXPECT_EQ(UI_CMD_CONFIRM, bare.blkReq.enUiCmdType);
    EXPECT_EQ(1u, Field(bare, UI_OFS_CONFIRM_KIND));
    EXPECT_EQ(30u, Field(bare, UI_OFS_CONFIRM_TIMEOUT));
    EXPECT_EQ(0u, Field(bare, UI_OFS_CONFIRM_CLOSABLE));
    EXPECT_NE(UI_MODE_ASYNC, bare.blkReq.u4Mode);

    BlkParsedTag full = Parse({"confirm", "--kind", "3", "--timeout", "45", "--closable",
                               "--detail", "E06163CF", "--attempts=2", "--timeout=60"});
    ASSERT_TRUE(full.bOk) << full.strError;
    EXPECT_EQ(3u, Field(full, UI_OFS_CONFIRM_KIND));
    EXPECT_EQ(60u, Field(full, UI_OFS_CONFIRM_TIMEOUT));  // the last one given
    EXPECT_EQ(1u, Field(full, UI_OFS_CONFIRM_CLOSABLE));
    EXPECT_EQ(UI_FP_VERIFY_FAILED, Field(full, UI_OFS_CONFIRM_DETAIL));
    EXPECT_EQ(2u, Field(full, UI_OFS_CONFIRM_ATTEMPTS));
    // --timeout is the device's time-out here, not the limit of the status polls.
    EXPECT_EQ(NY_CLIENT_WAIT_FOREVER, full.options.u4TimeoutMs);

    BlkParsedTag hex = Parse({"confirm", "--detail", "0xee"});
    ASSERT_TRUE(hex.bOk) << hex.strError;
    EXPECT_EQ(0xEEu, Field(hex, UI_OFS_CONFIRM_DETAIL));
}

TEST(UictlConfirmOptionsTest, FingerprintVerifiesUnlessToldToEnrol) {
    const struct {
        std::vector<std::string> vArgs;
        uint32_t u4Kind;
    } aCases[] = {
        {{"fingerprint"}, UI_CTT_FINGERPRINT_VERIFY},
        {{"fingerprint", "--enrol"}, UI_CTT_FINGERPRINT_ENROL},
        {{"fingerprint", "--verify"}, UI_CTT_FINGERPRINT_VERIFY},
        {{"fingerprint", "--enrol", "--json"}, UI_CTT_FINGERPRINT_ENROL},
    };
    for (const auto& test : aCases) {
        BlkParsedTag parsed = Parse(test.vArgs);
        ASSERT_TRUE(parsed.bOk) << parsed.strError;
        EXPECT_EQ(UI_CMD_CONFIRM, parsed.blkReq.enUiCmdType);
        EXPECT_EQ(test.u4Kind, Field(parsed, UI_OFS_CONFIRM_KIND)) << test.vArgs.back();
    }
    // Without its own --timeout, the common one limits the polls as for every command.
    BlkParsedTag polled = Parse({"fingerprint", "--timeout", "5000"});
    ASSERT_TRUE(polled.bOk) << polled.strError;
    EXPECT_EQ(5000u, polled.options.u4TimeoutMs);
}

TEST(UictlConfirmOptionsTest, TimetableIsCollectedAndRunsTheDialogAsynchronously) {
    BlkParsedTag parsed = Parse({"fingerprint", "--enrol", "--update-after", "1000:EF",
                                 "--update-after=250:0x000000EA", "--stop-after", "3000"});
    ASSERT_TRUE(parsed.bOk) << parsed.strError;
    ASSERT_EQ(2u, parsed.options.vUpdates.size());
    EXPECT_EQ(1000u, parsed.options.vUpdates[0].u4AfterMs);
    EXPECT_EQ(0xEFu, parsed.options.vUpdates[0].u4Detail);
    EXPECT_EQ(250u, parsed.options.vUpdates[1].u4AfterMs);
    EXPECT_EQ(0xEAu, parsed.options.vUpdates[1].u4Detail);
    EXPECT_EQ(3000u, parsed.options.u4StopAfterMs);
    EXPECT_TRUE(parsed.options.bAsync);
    EXPECT_EQ(UI_MODE_ASYNC, parsed.blkReq.u4Mode);

    // A stop alone works for any dialog.
    BlkParsedTag stopped = Parse({"new-pin", "--stop-after", "500"});
    ASSERT_TRUE(stopped.bOk) << stopped.strError;
    EXPECT_EQ(UI_MODE_ASYNC, stopped.blkReq.u4Mode);
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
        {{"confirm", "--timeout"}, "option --timeout needs a value"},
        {{"confirm", "--closable=1"}, "--closable takes no value"},
        {{"fingerprint", "--enrol=yes"}, "--enrol takes no value"},
        {{"fingerprint", "--kind", "3"}, "unknown option --kind"},
        {{"confirm", "--update-after", "100"}, "bad value \"100\" for --update-after"},
        {{"confirm", "--update-after", "x:EE"}, "bad value \"x:EE\" for --update-after"},
        {{"confirm", "--update-after", "100:"}, "bad value \"100:\" for --update-after"},
        {{"confirm", "--stop-after", "soon"}, "bad value \"soon\" for --stop-after"},
        {{"raw", "--update-after", "1:EE"},
         "--update-after feeds the confirm and fingerprint dialogs only"},
    };
    for (const auto& test : aCases) {
        BlkParsedTag parsed = Parse(test.vArgs);
        EXPECT_FALSE(parsed.bOk) << test.vArgs.back();
        EXPECT_EQ(test.szError, parsed.strError) << test.vArgs.back();
    }
}
