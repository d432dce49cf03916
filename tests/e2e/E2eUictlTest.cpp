// ukey-uictl's verify and message commands against a server on the test display, answered the
// way a person answers them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "NyE2eEnv.h"
#include "support/CNyTestChild.h"
#include "support/NyTestNames.h"
#include "support/NyTestX11.h"

namespace {

constexpr unsigned int NY_TXT_VERIFY_TITLE = 0x21007A;
constexpr unsigned int NY_TXT_ADMIN_VERIFY_TITLE = 0x210106;
constexpr unsigned int NY_TXT_MESSAGE_TITLE = 0x0021009C;
constexpr unsigned int NY_TXT_OK = 0x00210011;
constexpr unsigned int NY_TXT_YES = 0x00210013;
constexpr unsigned int NY_TXT_NO = 0x00210014;
const char* const NY_RETRY_QUESTION =
    "您的UKey密码输入有误，还有 3 次机会，请核对后重新输入，是否继续重试？";

class E2eUictlTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_server.Started()); }
    void TearDown() override { unlink(m_strOut.c_str()); }

    // Starts ukey-uictl with vArgs (JSON output); pfnAnswer acts on its dialog. Returns its
    // exit code; Output() what it printed.
    int Run(std::vector<std::string> vArgs, const std::function<void()>& pfnAnswer = nullptr) {
        vArgs.push_back("--json");
        CNyTestChild child(m_server.SpawnUictl(vArgs, m_strOut));
        if (pfnAnswer) {
            pfnAnswer();
        }
        return child.Wait(NY_E2E_WAIT_MS);
    }
    std::string Output() const {
        std::stringstream ss;
        ss << std::ifstream(m_strOut).rdbuf();
        return ss.str();
    }

    CE2eServer m_server;
    std::string m_strOut = std::string(NY_TEST_BUILD_DIR) + "/" + NyTestUniqueName("uictl");
};

std::string Title(unsigned int u4TextId) {
    return "^" + NyGuiTestText(u4TextId) + "$";
}

}  // namespace

TEST_F(E2eUictlTest, EachDialogAnswersWhatThePersonDid) {
    const struct {
        std::vector<std::string> vArgs;
        unsigned int u4Title;
        std::string strLabel;   // a text the dialog must show ("" for none)
        std::string strPin;     // typed into the PIN entry ("" for none)
        unsigned int u4Button;  // clicked (0 for none)
        std::vector<std::string> vExpected;
    } aCases[] = {
        // The maximum cuts the typed PIN to 8.
        {{"verify", "--min", "4", "--max", "8"},
         NY_TXT_VERIFY_TITLE,
         "",
         "abcdefghij",
         0,
         {"\"enRes\":2", "\"pin\":\"abcdefgh\"", "\"pinLength\":8"}},
        {{"verify", "--async", "--min", "1", "--max", "16", "--poll", "50"},
         NY_TXT_VERIFY_TITLE,
         "",
         "polled",
         0,
         {"\"enRes\":2", "\"pin\":\"polled\""}},
        // Kind 2 asks for the administrator's PIN; nobody answers: terminated, and the
        // terminate's answer printed.
        {{"verify", "--kind", "2", "--async", "--terminate-after", "1500"},
         NY_TXT_ADMIN_VERIFY_TITLE,
         "",
         "",
         0,
         {"stopped after 1500 ms", "\"enRes\":2"}},
        {{"message", "--id", "E06163C3", "--param", "0"},
         NY_TXT_MESSAGE_TITLE,
         NY_RETRY_QUESTION,
         "",
         NY_TXT_YES,
         {"\"enRes\":2", "\"choice\":1"}},
        {{"message", "--id", "E06163C3", "--param", "0"},
         NY_TXT_MESSAGE_TITLE,
         NY_RETRY_QUESTION,
         "",
         NY_TXT_NO,
         {"\"enRes\":5", "\"choice\":2"}},
        {{"message", "--id", "0", "--param", "7", "--async"},
         NY_TXT_MESSAGE_TITLE,
         "操作成功！",
         "",
         NY_TXT_OK,
         {"\"enRes\":2", "\"choice\":0"}},
    };
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.vArgs[0] + " " + c.vArgs[1] + " " + c.vArgs[2]);
        EXPECT_EQ(0, Run(c.vArgs, [&] {
                      EXPECT_FALSE(NyTestWaitWindow(Title(c.u4Title), NY_E2E_WAIT_MS).empty());
                      BlkTestAccessibleTag button;
                      if (!c.strLabel.empty()) {
                          EXPECT_TRUE(NyTestWaitAccessible(m_server.Pid(), "label", c.strLabel,
                                                           NY_E2E_WAIT_MS));
                      }
                      if (!c.strPin.empty()) {
                          NyE2eEnterPin(m_server.Pid(), c.strPin);
                      }
                      if (c.u4Button != 0 && NyTestWaitAccessible(m_server.Pid(), "push button",
                                                                  NyGuiTestText(c.u4Button),
                                                                  NY_E2E_WAIT_MS, &button)) {
                          NyTestClickAt(button.CentreX(), button.CentreY());
                      }
                  }));
        for (const std::string& strExpected : c.vExpected) {
            EXPECT_NE(std::string::npos, Output().find(strExpected)) << Output();
        }
        EXPECT_TRUE(NyTestWaitNoWindow(Title(c.u4Title), NY_E2E_WAIT_MS));
    }
}

TEST_F(E2eUictlTest, BadOptionsAreRefusedWithUsage) {
    for (const std::vector<std::string>& vArgs :
         {std::vector<std::string>{"verify", "--min", "six"},
          std::vector<std::string>{"verify", "--colour", "red"},
          std::vector<std::string>{"message", "--id", "xyz"},
          std::vector<std::string>{"message", "--param", "-1"}}) {
        EXPECT_EQ(2, Run(vArgs)) << vArgs[0] << " " << vArgs[1];
        EXPECT_NE(std::string::npos, Output().find("usage:")) << Output();
    }
}
