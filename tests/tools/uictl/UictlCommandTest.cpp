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
        const char* szDisplay;
    } aCases[] = {
        {{"raw", "--cmd", "2", "--json", "MAIN"},
         0,
         "{\"enRes\":2,\"result\":\"UI_RESULT_OK\",",
         nullptr},
        {{"raw", "--cmd", "2", "--protect", "00112233445566778899aabbccddeeff", "MAIN"},
         0,
         "enRes: 2\nresult: UI_RESULT_OK\n",
         nullptr},
        {{"raw", "--cmd", "0x10001", "--async", "MAIN"},
         0,
         "result: UI_RESULT_START_FAILED\n",
         nullptr},
        {{"raw", "--cmd", "0x10009", "--mode", "1", "MAIN"}, 0, "enRes: 0\n", nullptr},
        {{"verify", "--async", "MAIN"}, 4, "could not show the dialog", nullptr},
        {{"verify", "--id", "7", "MAIN"}, 3, "result: UI_RESULT_NOT_PROCESSED\n", nullptr},
        {{}, 2, "ukey-uictl: no command given\nTry 'ukey-uictl --help'.\n", nullptr},
        {{"frobnicate"}, 2, "ukey-uictl: unknown command \"frobnicate\"\nTry", nullptr},
        {{"raw", "--cmd"}, 2, "option --cmd needs a value\nTry", nullptr},
        {{"raw", "--main", strMissing}, 5, "(error 0xE0600017)", nullptr},
        {{"raw", "--server", szNoRes},
         5,
         "cannot start the UI server \"/nonexistent/ukey-uiserver\"",
         nullptr},
        {{"verify"}, 4, "ukey-uictl: no display to show the dialog on", nullptr},
        {{"verify", "--server", szNoRes},
         4,
         "resources are missing (no folder /nonexistent/res)",
         ":99"},
        {{"--version"}, 0, "ukey-uictl " NY_VERSION_STRING "\n", nullptr},
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
