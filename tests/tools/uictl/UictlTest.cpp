// ukey-uictl: its options as it parses them into the request block and its own settings, its
// answers as it prints them, and the program against servers it starts or joins (none of them
// can show a dialog).
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>

#include "CNyUiClient.h"
#include "NyTestServer.h"
#include "NyVersion.h"
#include "UictlOptions.h"
#include "UictlOutput.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"
#include "support/NyTestRun.h"
#include "uiblock/NyUiConfirmParam.h"

namespace {

// What a command line sets: "type mode | the words at 312, 316, 320, 324, 328, 3412 | wait
// stop interaction id", then " +MS:DETAIL" for each update, numbers in hexadecimal; or why it
// was refused.
std::string Fields(const std::vector<std::string>& vArgs) {
    CNyTestArgv argv(vArgs);
    BlkUictlOptionsTag options;
    tagBlkUiParam blk = {};
    std::string strError;
    const BlkUictlCommandTag* pCommand = UictlFindCommand(vArgs.at(0));
    if (pCommand == nullptr || UictlParseOptions(argv.Argc(), argv.Argv(), 2, pCommand, &options,
                                                 &blk, &strError) != NY_TOOL_RUN) {
        return strError;
    }
    EXPECT_EQ(options.bAsync, blk.u4Mode == UI_MODE_ASYNC) << vArgs[0];
    auto Field = [&blk](uint32_t u4Offset) { return NyUiParamGetU4(&blk, u4Offset); };
    char sz[128];
    snprintf(sz, sizeof(sz), "%X %X | %X %X %X %X %X %X | %X %X %X", blk.enUiCmdType, blk.u4Mode,
             Field(312), Field(316), Field(320), Field(324), Field(328), Field(3412),
             options.u4WaitS, options.u4StopAfterMs, options.u4InteractionId);
    std::string strFields = sz;
    for (const BlkUictlUpdateTag& update : options.vUpdates) {
        snprintf(sz, sizeof(sz), " +%u:%X", update.u4AfterMs, update.u4Detail);
        strFields += sz;
    }
    return strFields;
}

TEST(UictlOptionsTest, EachCommandSetsItsFieldsDefaultsAndLimitsOrSaysWhyNot) {
    const std::string strNone = " | FFFFFFFF FFFFFFFF 1";
    const std::pair<std::vector<std::string>, std::string> aCases[] = {
        // A confirmation ends with its countdown unless --wait ends it earlier.
        {{"confirm"}, "10004 1 | 1 0 0 0 0 1E | 1E FFFFFFFF 1"},
        {{"confirm", "--kind", "3", "--timeout", "45", "--closable", "--detail", "E06163CF",
          "--attempts=2", "--timeout=60", "--wait", "50"},
         "10004 1 | 3 1 0 E06163CF 2 3C | 32 FFFFFFFF 1"},
        {{"confirm", "--detail", "0xee", "--wait=90"}, "10004 1 | 1 0 0 EE 0 1E | 1E FFFFFFFF 1"},
        {{"fingerprint"}, "10004 0 | 10 0 0 0 0 0" + strNone},
        {{"fingerprint", "--enrol", "--stop-after", "1"}, "10004 1 | F 0 0 0 0 0 | FFFFFFFF 1 1"},
        {{"message", "--message-id", "E06163C3", "--param", "3", "--id", "9"},
         "10003 0 | E06163C3 3 0 0 0 0 | FFFFFFFF FFFFFFFF 9"},
        {{"fingerprint", "--update-after", "1000:EF", "--update-after=250:0x000000EA"},
         "10004 1 | 10 0 0 0 0 0 | FFFFFFFF FFFFFFFF 1 +1000:EF +250:EA"},
        {{"change-pin", "--compulsory", "--min", "6", "--max=16", "--kind", "2"},
         "10006 0 | 2 6 10 0 0 0" + strNone},
        {{"new-pin", "--terminate-after", "500", "--min", "4"},
         "10002 1 | 4 0 0 0 0 0 | FFFFFFFF 1F4 1"},
        {{"verify", "--wait", "5", "--max", "8"}, "10001 1 | 0 8 0 0 0 0 | 5 FFFFFFFF 1"},
        {{"unblock", "--min", "4", "--max", "9"}, "10007 0 | 4 9 0 0 0 0" + strNone},
        {{"label", "--pin-min", "1", "--pin-max", "2", "--name-min", "3", "--name-max", "4"},
         "10008 0 | 1 2 3 4 0 0" + strNone},
        {{"raw", "--async", "--cmd", "7", "--u32", "3412=0x10"}, "7 1 | 0 0 0 0 0 10" + strNone},
        // Mistakes.
        {{"confirm", "--detail", "XYZ"}, "bad value \"XYZ\" for --detail (hexadecimal)"},
        {{"confirm", "--detail", "123456789"},
         "bad value \"123456789\" for --detail (hexadecimal)"},
        {{"confirm", "--detail", "0x"}, "bad value \"0x\" for --detail (hexadecimal)"},
        {{"confirm", "--kind", "-1"}, "bad value \"-1\" for --kind"},
        {{"fingerprint", "--kind", "3"}, "unknown option '--kind'"},
        {{"message", "--id", "E0"}, "bad value \"E0\" for --id"},
        {{"verify", "--wait", "4294967295"}, "bad value \"4294967295\" for --wait"},
        {{"confirm", "--update-after", "100"}, "bad value \"100\" for --update-after"},
        {{"confirm", "--update-after", "100:"}, "bad value \"100:\" for --update-after"},
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
        EXPECT_EQ(c.second, Fields(c.first)) << c.first.back();
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

BlkTestRunTag RunUictl(std::vector<std::string> vArgs, const char* szDisplay = nullptr) {
    szDisplay != nullptr ? setenv("DISPLAY", szDisplay, 1) : unsetenv("DISPLAY");
    vArgs.insert(vArgs.begin(), NyTestBinPath("ukey-uictl"));
    return NyTestRun(vArgs);
}

TEST(UictlCommandTest, RawStartsItsOwnServerShowsTheWholeAnswerAndKeepsItWhenAsked) {
    BlkTestRunTag run =
        RunUictl({"raw", "--cmd", "0x20000", "--u32=400=0xDEADBEEF", "--json", "--keep"});
    ASSERT_EQ(0, run.iExit) << run.strOutput;
    std::string strHex(2 * NY_UI_PARAM_SIZE, '0');
    strHex.replace(8, 8, "00000200").replace(2 * 400, 8, "efbeadde");
    ASSERT_EQ(
        0u, run.strOutput.find("{\"enRes\":0,\"result\":\"UI_RESULT_NOT_PROCESSED\",\"block\":\"" +
                               strHex + "\",\"main\":\""));
    size_t nMain = run.strOutput.find("\",\"main\":\"");
    std::string strMain = run.strOutput.substr(nMain + 10, run.strOutput.rfind('"') - nMain - 10);
    // The kept server answers under that name.
    CNyUiClient client;
    ASSERT_EQ(NY_OK, client.JoinServer(strMain.c_str())) << strMain;
    ASSERT_EQ(NY_OK, client.OpenSession(1));
    ASSERT_GT(client.ServerPid(), 1u);
    EXPECT_EQ(0, kill(static_cast<pid_t>(client.ServerPid()), SIGTERM));
}

// Rows with "MAIN" join a server that cannot show dialogs (no display).
TEST(UictlCommandTest, TheExitStatusTellsTheAnswerAndMistakesAndMissingPiecesAreSaid) {
    CNyTestServer server;
    ASSERT_TRUE(server.Started());
    std::string strMissing = NyTestUniqueName("nobody");
    const char* const szNoRes = "/nonexistent/ukey-uiserver";
    struct {
        std::vector<std::string> vArgs;
        int iExit;
        std::string strExpected;
        const char* szDisplay = nullptr;
    } aCases[] = {
        {{"raw", "--cmd", "2", "--json", "MAIN"}, 0, "{\"enRes\":2,\"result\":\"UI_RESULT_OK\","},
        {{"raw", "--cmd", "2", "--protect", "00112233445566778899aabbccddeeff", "MAIN"},
         0,
         "enRes: 2\nresult: UI_RESULT_OK\n"},
        {{"raw", "--cmd", "0x10001", "--async", "MAIN"}, 0, "result: UI_RESULT_START_FAILED\n"},
        {{"raw", "--cmd", "0x10009", "--mode", "1", "MAIN"}, 0, "enRes: 0\n"},
        {{"verify", "--async", "MAIN"}, 4, "could not show the dialog"},
        {{"verify", "--id", "7", "MAIN"}, 3, "result: UI_RESULT_NOT_PROCESSED\n"},
        {{}, 2, "ukey-uictl: no command given\nTry 'ukey-uictl --help'.\n"},
        {{"frobnicate"}, 2, "ukey-uictl: unknown command \"frobnicate\"\nTry"},
        {{"raw", "--main", strMissing}, 5, "(error 0xE0600017)"},
        {{"raw", "--server", szNoRes},
         5,
         "cannot start the UI server \"/nonexistent/ukey-uiserver\""},
        {{"verify"}, 4, "ukey-uictl: no display to show the dialog on"},
        {{"verify", "--server", szNoRes},
         4,
         "resources are missing (no folder /nonexistent/res)",
         ":99"},
        {{"--version"}, 0, "ukey-uictl " NY_VERSION_STRING "\n"},
    };
    for (auto& c : aCases) {
        for (std::string& strArg : c.vArgs) {
            strArg = strArg == "MAIN" ? "--main=" + server.MainName() : strArg;
        }
        BlkTestRunTag run = RunUictl(c.vArgs, c.szDisplay);
        EXPECT_EQ(c.iExit, run.iExit) << run.strOutput;
        EXPECT_TRUE(NyTestContains(run.strOutput, c.strExpected)) << run.strOutput;
    }
    EXPECT_TRUE(server.Stop());
}

}  // namespace
