// ukey-uictl's verify and message commands against a server on the test display, answered the
// way a person answers them, and their bad options refused.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "NyE2eEnv.h"
#include "support/CNyTestChild.h"
#include "support/NyTestNames.h"
#include "support/NyTestX11.h"

namespace {

constexpr unsigned int NY_TXT_VERIFY = 0x21007A;  // window titles
constexpr unsigned int NY_TXT_ADMIN_VERIFY = 0x210106;
constexpr unsigned int NY_TXT_MESSAGE = 0x0021009C;
constexpr unsigned int NY_TXT_OK = 0x00210011;  // buttons
constexpr unsigned int NY_TXT_YES = 0x00210013;
constexpr unsigned int NY_TXT_NO = 0x00210014;
const std::string NY_RETRY =
    "您的UKey密码输入有误，还有 3 次机会，请核对后重新输入，是否继续重试？";

// What the person sees and does in the dialog, and what ukey-uictl then prints.
struct BlkUictlCaseTag {
    std::vector<std::string> vArgs;
    unsigned int u4Title;   // of the dialog that must come (0: none, a usage error)
    std::string strLabel;   // a text it must show ("" for none)
    std::string strPin;     // typed into the PIN entry ("" for none)
    unsigned int u4Button;  // clicked (0 for none)
    std::vector<std::string> vExpected;
};

void Answer(pid_t pidServer, const BlkUictlCaseTag& c) {
    const std::string strTitle = "^" + NyGuiTestText(c.u4Title) + "$";
    EXPECT_FALSE(NyTestWaitWindow(strTitle, NY_E2E_WAIT_MS).empty());
    BlkTestAccessibleTag button;
    if (!c.strLabel.empty()) {
        EXPECT_TRUE(NyTestWaitAccessible(pidServer, "label", c.strLabel, NY_E2E_WAIT_MS));
    }
    if (!c.strPin.empty()) {
        NyE2eEnterPin(pidServer, c.strPin);
    }
    if (c.u4Button != 0 && NyTestWaitAccessible(pidServer, "push button", NyGuiTestText(c.u4Button),
                                                NY_E2E_WAIT_MS, &button)) {
        NyTestClickAt(button.CentreX(), button.CentreY());
    }
    EXPECT_TRUE(NyTestWaitNoWindow(strTitle, NY_E2E_WAIT_MS));
}

}  // namespace

TEST(E2eUictlTest, EachCommandPrintsWhatThePersonAnswered) {
    const BlkUictlCaseTag aCases[] = {
        // The maximum cuts the typed PIN to 8.
        {{"verify", "--min", "4", "--max", "8"},
         NY_TXT_VERIFY,
         "",
         "abcdefghij",
         0,
         {"\"enRes\":2", "\"pin\":\"abcdefgh\"", "\"pinLength\":8"}},
        {{"verify", "--async", "--min", "1", "--max", "16", "--poll", "50"},
         NY_TXT_VERIFY,
         "",
         "polled",
         0,
         {"\"enRes\":2", "\"pin\":\"polled\""}},
        // Kind 2 asks for the administrator's PIN; nobody answers: the terminate's answer.
        {{"verify", "--kind", "2", "--async", "--terminate-after", "1500"},
         NY_TXT_ADMIN_VERIFY,
         "",
         "",
         0,
         {"stopped after 1500 ms", "\"enRes\":2"}},
        {{"message", "--message-id", "E06163C3", "--param", "0"},
         NY_TXT_MESSAGE,
         NY_RETRY,
         "",
         NY_TXT_YES,
         {"\"enRes\":2", "\"choice\":1"}},
        {{"message", "--message-id", "E06163C3", "--param", "0"},
         NY_TXT_MESSAGE,
         NY_RETRY,
         "",
         NY_TXT_NO,
         {"\"enRes\":5", "\"choice\":2"}},
        {{"message", "--message-id", "0", "--param", "7", "--async"},
         NY_TXT_MESSAGE,
         "操作成功！",
         "",
         NY_TXT_OK,
         {"\"enRes\":2", "\"choice\":0"}},
        {{"verify", "--min", "six"}, 0, "", "", 0, {"Try 'ukey-uictl --help'."}},
        {{"verify", "--colour", "red"}, 0, "", "", 0, {"Try 'ukey-uictl --help'."}},
        {{"message", "--message-id", "xyz"}, 0, "", "", 0, {"Try 'ukey-uictl --help'."}},
        {{"message", "--param", "-1"}, 0, "", "", 0, {"Try 'ukey-uictl --help'."}},
    };
    CE2eServer server;
    ASSERT_TRUE(server.Started());
    const std::string strOut = std::string(NY_TEST_BUILD_DIR) + "/" + NyTestUniqueName("uictl");
    for (const BlkUictlCaseTag& c : aCases) {
        SCOPED_TRACE(c.vArgs[0] + " " + c.vArgs[1] + " " + c.vArgs[2]);
        std::vector<std::string> vArgs = c.vArgs;
        vArgs.push_back("--json");
        CNyTestChild uictl(server.SpawnUictl(vArgs, strOut));
        if (c.u4Title != 0) {
            Answer(server.Pid(), c);
        }
        // Usage errors exit 2, a No is a cancel (1), every other answer 0.
        EXPECT_EQ(c.u4Title == 0 ? 2 : (c.u4Button == NY_TXT_NO ? 1 : 0),
                  uictl.Wait(NY_E2E_WAIT_MS));
        std::stringstream ss;
        ss << std::ifstream(strOut).rdbuf();
        for (const std::string& strExpected : c.vExpected) {
            EXPECT_NE(std::string::npos, ss.str().find(strExpected)) << ss.str();
        }
    }
    unlink(strOut.c_str());
}
