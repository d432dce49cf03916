// ukey-uictl run as a program, against servers it starts or joins.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "NyTestServer.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"

namespace {

struct BlkRunTag {
    int iExit;
    std::string strOutput;  // stdout and stderr together
};

BlkRunTag RunUictl(const std::vector<std::string>& vArgs) {
    unsetenv("DISPLAY");
    std::string strOut = "/tmp/" + NyTestUniqueName("uictl") + ".out";
    std::vector<std::string> vArgv = {NyTestBinPath("ukey-uictl")};
    vArgv.insert(vArgv.end(), vArgs.begin(), vArgs.end());
    pid_t pid = NyTestSpawn(vArgv, strOut);
    BlkRunTag run;
    run.iExit = NyTestWaitChild(pid, 30000);
    std::ifstream file(strOut);
    std::stringstream ss;
    ss << file.rdbuf();
    run.strOutput = ss.str();
    unlink(strOut.c_str());
    return run;
}

bool Contains(const std::string& strText, const std::string& strPart) {
    return strText.find(strPart) != std::string::npos;
}

TEST(UictlCommandTest, RawStartsItsOwnServerAndShowsTheWholeAnswer) {
    BlkRunTag run = RunUictl({"raw", "--cmd", "0x20000", "--u32", "400=0xDEADBEEF", "--json"});
    ASSERT_EQ(0, run.iExit) << run.strOutput;
    EXPECT_TRUE(Contains(run.strOutput, "{\"enRes\":0,\"result\":\"UI_RESULT_NOT_PROCESSED\","))
        << run.strOutput;
    size_t nBlock = run.strOutput.find("\"block\":\"");
    ASSERT_NE(std::string::npos, nBlock);
    std::string strHex = run.strOutput.substr(nBlock + 9, 2 * 4096);
    EXPECT_EQ(
        "00000000"
        "00000200",
        strHex.substr(0, 16));
    EXPECT_EQ("efbeadde", strHex.substr(2 * 400, 8));
}

TEST(UictlCommandTest, JoinedServerCarriesOutCommandsPlainAndProtected) {
    CNyTestServer server;
    ASSERT_TRUE(server.Started());
    struct {
        std::vector<std::string> vArgs;
        std::string strExpected;
    } aCases[] = {
        {{"raw", "--cmd", "2", "--json"}, "{\"enRes\":2,\"result\":\"UI_RESULT_OK\","},
        {{"raw", "--cmd", "2", "--protect", "00112233445566778899aabbccddeeff"},
         "enRes: 2\nresult: UI_RESULT_OK\n"},
        {{"raw", "--cmd", "0x10001", "--async", "--json"},
         "{\"enRes\":1,\"result\":\"UI_RESULT_START_FAILED\",\"pin\":\"\",\"pinLength\":0,"},
        {{"raw", "--cmd", "0x10009", "--mode", "1"}, "enRes: 0\n"},
    };
    for (auto& c : aCases) {
        c.vArgs.insert(c.vArgs.end(), {"--main", server.MainName()});
        BlkRunTag run = RunUictl(c.vArgs);
        EXPECT_EQ(0, run.iExit) << run.strOutput;
        EXPECT_TRUE(Contains(run.strOutput, c.strExpected)) << run.strOutput;
    }
    EXPECT_TRUE(server.Stop());
}

TEST(UictlCommandTest, MistakesAreExplainedWithANonZeroExit) {
    std::string strMissing = NyTestUniqueName("nobody");
    struct {
        std::vector<std::string> vArgs;
        int iExit;
        std::string strExpected;
    } aCases[] = {
        {{}, 2, "no command given"},
        {{"frobnicate"}, 2, "unknown command \"frobnicate\""},
        {{"raw", "--u32", "4095=1"}, 2, "outside the 4096-byte block"},
        {{"raw", "--u32", "12"}, 2, "bad value \"12\" for --u32"},
        {{"raw", "--protect", "0011"}, 2, "bad value \"0011\" for --protect"},
        {{"raw", "--cmd"}, 2, "option --cmd needs a value"},
        {{"raw", "--main", strMissing}, 1, "(error 0xE0600017)"},
        {{"raw", "--server", "/nonexistent/ukey-uiserver"},
         1,
         "cannot start the UI server \"/nonexistent/ukey-uiserver\""},
    };
    for (const auto& c : aCases) {
        BlkRunTag run = RunUictl(c.vArgs);
        EXPECT_EQ(c.iExit, run.iExit) << run.strOutput;
        EXPECT_TRUE(Contains(run.strOutput, c.strExpected)) << run.strOutput;
    }
}

}  // namespace
