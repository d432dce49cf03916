// ukey-uictl run as a program, against servers it starts or joins (none can show a dialog).
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "CNyUiClient.h"
#include "NyTestServer.h"
#include "NyVersion.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"
#include "support/NyTestRun.h"

namespace {

BlkTestRunTag RunUictl(std::vector<std::string> vArgs, const char* szDisplay = nullptr) {
    szDisplay != nullptr ? setenv("DISPLAY", szDisplay, 1) : unsetenv("DISPLAY");
    vArgs.insert(vArgs.begin(), NyTestBinPath("ukey-uictl"));
    return NyTestRun(vArgs);
}

TEST(UictlCommandTest, RawStartsItsOwnServerShowsTheWholeAnswerAndKeepsItWhenAsked) {
    BlkTestRunTag run =
        RunUictl({"raw", "--cmd", "0x20000", "--u32=400=0xDEADBEEF", "--json", "--keep"});
    ASSERT_EQ(0, run.iExit) << run.strOutput;
    EXPECT_EQ(0u, run.strOutput.find("{\"enRes\":0,\"result\":\"UI_RESULT_NOT_PROCESSED\","));
    size_t nBlock = run.strOutput.find("\"block\":\"");
    ASSERT_NE(std::string::npos, nBlock);
    std::string strHex = run.strOutput.substr(nBlock + 9, 2 * 4096);
    EXPECT_EQ("0000000000000200", strHex.substr(0, 16));
    EXPECT_EQ("efbeadde", strHex.substr(2 * 400, 8));
    size_t nMain = run.strOutput.find("\",\"main\":\"");
    ASSERT_NE(std::string::npos, nMain) << run.strOutput;
    std::string strMain = run.strOutput.substr(nMain + 10, run.strOutput.rfind('"') - nMain - 10);
    // The kept server answers under that name.
    CNyUiClient client;
    ASSERT_EQ(NY_OK, client.JoinServer(strMain.c_str())) << strMain;
    ASSERT_EQ(NY_OK, client.OpenSession(1));
    ASSERT_GT(client.ServerPid(), 1u);
    EXPECT_EQ(0, kill(static_cast<pid_t>(client.ServerPid()), SIGTERM));
}

TEST(UictlCommandTest, JoinedServerAnswersAndTheExitStatusTellsTheAnswer) {
    CNyTestServer server;
    ASSERT_TRUE(server.Started());
    struct {
        std::vector<std::string> vArgs;
        int iExit;
        std::string strExpected;
    } aCases[] = {
        {{"raw", "--cmd", "2", "--json"}, 0, "{\"enRes\":2,\"result\":\"UI_RESULT_OK\","},
        {{"raw", "--cmd", "2", "--protect", "00112233445566778899aabbccddeeff"},
         0,
         "enRes: 2\nresult: UI_RESULT_OK\n"},
        {{"raw", "--cmd", "0x10001", "--async", "--json"},
         0,
         "\"result\":\"UI_RESULT_START_FAILED\""},
        {{"raw", "--cmd", "0x10009", "--mode", "1"}, 0, "enRes: 0\n"},
        // Without a display the server cannot run dialogs.
        {{"verify", "--async", "--json"}, 4, "could not show the dialog"},
        {{"verify", "--id", "7"}, 3, "result: UI_RESULT_NOT_PROCESSED\n"},
    };
    for (auto& c : aCases) {
        c.vArgs.insert(c.vArgs.end(), {"--main", server.MainName()});
        BlkTestRunTag run = RunUictl(c.vArgs);
        EXPECT_EQ(c.iExit, run.iExit) << run.strOutput;
        EXPECT_TRUE(NyTestContains(run.strOutput, c.strExpected)) << run.strOutput;
    }
    EXPECT_TRUE(server.Stop());
}

TEST(UictlCommandTest, MistakesAndMissingPiecesAreSaidWithTheirOwnExitStatus) {
    std::string strMissing = NyTestUniqueName("nobody");
    struct {
        std::vector<std::string> vArgs;
        const char* szDisplay;
        int iExit;
        std::string strExpected;
    } aCases[] = {
        {{}, nullptr, 2, "ukey-uictl: no command given\nTry 'ukey-uictl --help'.\n"},
        {{"frobnicate"}, nullptr, 2, "ukey-uictl: unknown command \"frobnicate\"\nTry"},
        {{"raw", "--cmd"}, nullptr, 2, "option --cmd needs a value\nTry"},
        {{"raw", "--main", strMissing}, nullptr, 5, "(error 0xE0600017)"},
        {{"raw", "--server", "/nonexistent/ukey-uiserver"},
         nullptr,
         5,
         "cannot start the UI server \"/nonexistent/ukey-uiserver\""},
        {{"verify"}, nullptr, 4, "ukey-uictl: no display to show the dialog on"},
        {{"verify", "--server", "/nonexistent/ukey-uiserver"},
         ":99",
         4,
         "resources are missing (no folder /nonexistent/res)"},
        {{"--version"}, nullptr, 0, "ukey-uictl " NY_VERSION_STRING "\n"},
    };
    for (const auto& c : aCases) {
        BlkTestRunTag run = RunUictl(c.vArgs, c.szDisplay);
        EXPECT_EQ(c.iExit, run.iExit) << run.strOutput;
        EXPECT_TRUE(NyTestContains(run.strOutput, c.strExpected)) << run.strOutput;
    }
}

}  // namespace
