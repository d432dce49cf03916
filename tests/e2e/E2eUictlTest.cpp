// ukey-uictl's verify and message commands against a server on the test display, answered the
// way a person answers them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "NyE2eEnv.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"

namespace {

constexpr unsigned int NY_TXT_MESSAGE_TITLE = 0x0021009C;
constexpr unsigned int NY_TXT_YES = 0x00210013;
constexpr unsigned int NY_TXT_NO = 0x00210014;
constexpr unsigned int NY_TXT_OK = 0x00210011;

// ukey-uictl running against the server, its output collected in a file.
class CUictl {
public:
    CUictl(const CE2eServer& server, std::vector<std::string> vArgs)
        : m_strOut(std::string(NY_TEST_BUILD_DIR) + "/" + NyTestUniqueName("uictl") + ".out") {
        vArgs.insert(vArgs.begin(), NyTestBinPath("ukey-uictl"));
        vArgs.insert(vArgs.end(), {"--main", server.MainName(), "--json"});
        m_pid = NyTestSpawn(vArgs, m_strOut);
    }
    ~CUictl() {
        if (m_pid > 0) {
            NyTestKillChild(m_pid);
        }
        unlink(m_strOut.c_str());
    }
    // Exit code once it ended (-1 after the wait), and what it printed.
    int Wait() {
        int iExit = NyTestWaitChild(m_pid, NY_E2E_WAIT_MS);
        if (iExit >= 0) {
            m_pid = -1;
        }
        return iExit;
    }
    std::string Output() const {
        std::ifstream in(m_strOut);
        std::stringstream ss;
        ss << in.rdbuf();
        return ss.str();
    }

private:
    std::string m_strOut;
    pid_t m_pid = -1;
};

bool Contains(const std::string& strText, const std::string& strPart) {
    return strText.find(strPart) != std::string::npos;
}

void ClickButton(pid_t pidServer, unsigned int u4TextId) {
    BlkTestAccessibleTag button;
    ASSERT_TRUE(NyTestWaitAccessible(pidServer, "push button", NyGuiTestText(u4TextId),
                                     NY_E2E_WAIT_MS, &button));
    NyTestClickAt(button.CentreX(), button.CentreY());
}

class E2eUictlTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_server.Started()); }
    CE2eServer m_server;
};

}  // namespace

TEST_F(E2eUictlTest, VerifyPrintsTheTypedPin) {
    CUictl uictl(m_server, {"verify", "--min", "4", "--max", "8"});
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    NyE2eEnterPin(m_server.Pid(), "abcdefghij");  // the maximum cuts it to 8
    ASSERT_EQ(0, uictl.Wait());
    std::string strOut = uictl.Output();
    EXPECT_TRUE(Contains(strOut, "\"enRes\":2")) << strOut;
    EXPECT_TRUE(Contains(strOut, "\"pin\":\"abcdefgh\"")) << strOut;
    EXPECT_TRUE(Contains(strOut, "\"pinLength\":8")) << strOut;
}

TEST_F(E2eUictlTest, VerifyKindTwoAsksForTheAdministratorsPin) {
    CUictl uictl(m_server, {"verify", "--kind", "2", "--async", "--terminate-after", "4000"});
    EXPECT_FALSE(NyTestWaitWindow("^" + NyGuiTestText(0x210106) + "$", NY_E2E_WAIT_MS).empty());
    ASSERT_EQ(0, uictl.Wait());
    // Terminated: the terminate's answer.
    EXPECT_TRUE(Contains(uictl.Output(), "\"enRes\":2")) << uictl.Output();
    EXPECT_TRUE(NyTestWaitNoWindow("^" + NyGuiTestText(0x210106) + "$", NY_E2E_WAIT_MS));
}

TEST_F(E2eUictlTest, AsynchronousVerifyPollsUntilThePinIsTyped) {
    CUictl uictl(m_server, {"verify", "--async", "--min", "1", "--max", "16", "--poll", "50"});
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    usleep(300 * 1000);  // a few polls while the dialog is shown
    NyE2eEnterPin(m_server.Pid(), "polled");
    ASSERT_EQ(0, uictl.Wait());
    EXPECT_TRUE(Contains(uictl.Output(), "\"pin\":\"polled\"")) << uictl.Output();
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
}

TEST_F(E2eUictlTest, TerminateAfterEndsADialogNobodyAnswers) {
    CUictl uictl(m_server, {"verify", "--async", "--terminate-after", "1500"});
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    ASSERT_EQ(0, uictl.Wait());
    EXPECT_TRUE(Contains(uictl.Output(), "stopped after 1500 ms")) << uictl.Output();
    EXPECT_TRUE(Contains(uictl.Output(), "\"enRes\":2")) << uictl.Output();
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
}

TEST_F(E2eUictlTest, MessageQuestionAnswersTheChoice) {
    struct {
        unsigned int u4Button;
        const char* szEnRes;
        const char* szChoice;
        int iExit;  // No is a cancel
    } aCases[] = {{NY_TXT_YES, "\"enRes\":2", "\"choice\":1", 0},
                  {NY_TXT_NO, "\"enRes\":5", "\"choice\":2", 1}};
    for (const auto& c : aCases) {
        CUictl uictl(m_server, {"message", "--message-id", "E06163C3", "--param", "0"});
        ASSERT_FALSE(
            NyTestWaitWindow("^" + NyGuiTestText(NY_TXT_MESSAGE_TITLE) + "$", NY_E2E_WAIT_MS)
                .empty());
        EXPECT_TRUE(NyTestWaitAccessible(
            m_server.Pid(), "label",
            "您的UKey密码输入有误，还有 3 次机会，请核对后重新输入，是否继续重试？",
            NY_E2E_WAIT_MS));
        ClickButton(m_server.Pid(), c.u4Button);
        ASSERT_EQ(c.iExit, uictl.Wait());
        EXPECT_TRUE(Contains(uictl.Output(), c.szEnRes)) << uictl.Output();
        EXPECT_TRUE(Contains(uictl.Output(), c.szChoice)) << uictl.Output();
    }
}

TEST_F(E2eUictlTest, AsynchronousSuccessNoticeAnswersOk) {
    CUictl uictl(m_server, {"message", "--message-id", "0", "--param", "7", "--async"});
    EXPECT_TRUE(NyTestWaitAccessible(m_server.Pid(), "label", "操作成功！", NY_E2E_WAIT_MS));
    ClickButton(m_server.Pid(), NY_TXT_OK);
    ASSERT_EQ(0, uictl.Wait());
    EXPECT_TRUE(Contains(uictl.Output(), "\"enRes\":2")) << uictl.Output();
    EXPECT_TRUE(Contains(uictl.Output(), "\"choice\":0")) << uictl.Output();
}

TEST_F(E2eUictlTest, BadOptionsAreRefusedWithUsage) {
    for (const std::vector<std::string>& vArgs :
         {std::vector<std::string>{"verify", "--min", "six"},
          std::vector<std::string>{"verify", "--colour", "red"},
          std::vector<std::string>{"message", "--message-id", "xyz"},
          std::vector<std::string>{"message", "--param", "-1"}}) {
        CUictl uictl(m_server, vArgs);
        EXPECT_EQ(2, uictl.Wait()) << vArgs[0] << " " << vArgs[1];
        EXPECT_TRUE(Contains(uictl.Output(), "Try 'ukey-uictl --help'.")) << uictl.Output();
    }
}
