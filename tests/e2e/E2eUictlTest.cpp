// ukey-uictl's verify and message commands against a server on the test display, answered from
// the keyboard as a person answers them, and their bad options refused.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "NyE2eEnv.h"
#include "support/CNyTestChild.h"
#include "support/NyTestAccessible.h"
#include "support/NyTestNames.h"
#include "support/NyTestX11.h"

TEST_F(E2eTest, UictlCommandsPrintWhatThePersonAnswered) {
    constexpr unsigned int NY_TXT_ADMIN_VERIFY = 0x210106, NY_TXT_MESSAGE = 0x0021009C;
    const std::string strRetry =
        "您的UKey密码输入有误，还有 3 次机会，请核对后重新输入，是否继续重试？";
    const struct {
        std::vector<std::string> vArgs;
        unsigned int u4Title;  // of the dialog that must come (0: none, a usage error)
        std::string strLabel;  // a text it must show ("" for none)
        std::string strText;   // typed into it once it has the focus, then the keys
        std::string strKeys;
        std::vector<std::string> vExpected;
    } aCases[] = {
        // The maximum cuts the typed PIN to 8.
        {{"verify", "--min", "4", "--max", "8"},
         NY_TXT_VERIFY_TITLE,
         "",
         "abcdefghij",
         "Return",
         {"\"enRes\":2", "\"pin\":\"abcdefgh\"", "\"pinLength\":8"}},
        {{"verify", "--async", "--min", "1", "--max", "16", "--poll", "50"},
         NY_TXT_VERIFY_TITLE,
         "",
         "polled",
         "Return",
         {"\"enRes\":2", "\"pin\":\"polled\""}},
        // Kind 2 asks for the administrator's PIN; nobody answers: the terminate's answer.
        {{"verify", "--kind", "2", "--async", "--terminate-after", "1500"},
         NY_TXT_ADMIN_VERIFY,
         "",
         "",
         "",
         {"stopped after 1500 ms", "\"enRes\":2"}},
        // Yes has the focus; Tab moves it to No.
        {{"message", "--message-id", "E06163C3", "--param", "0"},
         NY_TXT_MESSAGE,
         strRetry,
         "",
         "Return",
         {"\"enRes\":2", "\"choice\":1"}},
        {{"message", "--message-id", "E06163C3", "--param", "0"},
         NY_TXT_MESSAGE,
         strRetry,
         "",
         "Tab Return",
         {"\"enRes\":5", "\"choice\":2"}},
        {{"message", "--message-id", "0", "--param", "7", "--async"},
         NY_TXT_MESSAGE,
         "操作成功！",
         "",
         "Return",
         {"\"enRes\":2", "\"choice\":0"}},
        {{"verify", "--min", "six"}, 0, "", "", "", {"Try 'ukey-uictl --help'."}},
        {{"verify", "--colour", "red"}, 0, "", "", "", {"Try 'ukey-uictl --help'."}},
        {{"message", "--message-id", "xyz"}, 0, "", "", "", {"Try 'ukey-uictl --help'."}},
        {{"message", "--param", "-1"}, 0, "", "", "", {"Try 'ukey-uictl --help'."}},
    };
    const std::string strOut = std::string(NY_TEST_BUILD_DIR) + "/" + NyTestUniqueName("uictl");
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.vArgs[0] + " " + c.vArgs[1] + " " + c.vArgs[2] + " " + c.strKeys);
        std::vector<std::string> vArgs = c.vArgs;
        vArgs.push_back("--json");
        CNyTestChild uictl(SpawnUictl(vArgs, strOut));
        const std::string strTitle = c.u4Title != 0 ? "^" + NyGuiTestText(c.u4Title) + "$" : "";
        if (c.u4Title != 0) {
            std::string strWindow = NyTestWaitWindow(strTitle, NY_E2E_WAIT_MS);
            EXPECT_TRUE(NyTestWaitFocused(strWindow, NY_E2E_WAIT_MS));
            EXPECT_TRUE(c.strLabel.empty() ||
                        NyTestWaitAccessible(ServerPid(), "label", c.strLabel, NY_E2E_WAIT_MS));
            NyTestType(c.strText);
            NyTestKey(c.strKeys);
        }
        // Usage errors exit 2, a No is a cancel (1), every other answer 0.
        EXPECT_EQ(c.u4Title == 0 ? 2 : (c.strKeys == "Tab Return" ? 1 : 0),
                  uictl.Wait(NY_E2E_WAIT_MS));
        EXPECT_TRUE(c.u4Title == 0 || NyTestWaitNoWindow(strTitle, NY_E2E_WAIT_MS));
        std::stringstream ss;
        ss << std::ifstream(strOut).rdbuf();
        for (const std::string& strExpected : c.vExpected) {
            EXPECT_NE(std::string::npos, ss.str().find(strExpected)) << ss.str();
        }
    }
    unlink(strOut.c_str());
}
