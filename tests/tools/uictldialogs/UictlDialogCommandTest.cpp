// ukey-uictl's dialog commands run as programs against a server on a private display: the keys
// a person would press answer the PIN and label dialogs and the program prints what they
// returned; the confirmation and fingerprint dialogs follow the timetable given on the command
// line and go; Ctrl-C closes them.
#include <gtest/gtest.h>
#include <signal.h>

#include <string>
#include <vector>

#include "CNyUiClient.h"
#include "NyUiServerProcess.h"
#include "support/NyTestAccessible.h"
#include "support/NyTestDisplay.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"
#include "support/NyTestRun.h"
#include "support/NyTestX11.h"

namespace {

constexpr unsigned int NY_WAIT_MS = 60000;
const char* const NY_CONFIRM_TITLE = "^UKey提示信息-OVA $";

class UictlDialogCommandTest : public testing::Test {
protected:
    static void SetUpTestSuite() { s_pDisplay->Start(true, true); }
    static void TearDownTestSuite() { s_pDisplay->Stop(); }

    // A server of our own on the display, so that its accessibility tree can be read.
    void SetUp() override {
        m_strMain = NyTestUniqueName("uictlcf");
        CNyUiClient client;
        ASSERT_EQ(NY_OK, client.StartServer(NyTestBinPath("ukey-uiserver").c_str(),
                                            m_strMain.c_str(), NY_WAIT_MS));
        m_pidServer = client.StartedServerPid();
        client.KeepServer();
    }
    void TearDown() override { EXPECT_TRUE(NyUiServerStop(m_pidServer, 5000)); }

    // ukey-uictl joining our server, or starting one of its own.
    std::unique_ptr<CNyTestRun> Start(std::vector<std::string> vArgs, bool bJoin = true) {
        vArgs.insert(vArgs.begin(), NyTestBinPath("ukey-uictl"));
        if (bJoin) {
            vArgs.push_back("--main=" + m_strMain);
        }
        return std::make_unique<CNyTestRun>(vArgs);
    }
    // Waits for the dialog titled strTitle to hold the focus, types vInput into it (xdotool key
    // names, "type:TEXT" for text, "close" for the window manager's close), and returns what the
    // program printed after checking its exit status.
    std::string Answer(CNyTestRun* pRun, const std::string& strTitle,
                       const std::vector<std::string>& vInput, int iExit) {
        std::string strWindow = NyTestWaitWindow("^" + strTitle + "$", NY_WAIT_MS);
        EXPECT_FALSE(strWindow.empty()) << "no window titled " << strTitle;
        EXPECT_TRUE(NyTestWaitFocused(strWindow, NY_WAIT_MS));
        for (const std::string& strInput : vInput) {
            if (strInput == "close") {
                EXPECT_TRUE(NyTestCloseWindow("^" + strTitle + "$", NY_WAIT_MS));
            } else if (strInput.compare(0, 5, "type:") == 0) {
                NyTestType(strInput.substr(5));
            } else {
                NyTestKey(strInput);
            }
        }
        EXPECT_EQ(iExit, pRun->Wait(NY_WAIT_MS));
        return pRun->Output();
    }

    static CNyTestDisplay* s_pDisplay;
    std::string m_strMain;
    pid_t m_pidServer = -1;
};

CNyTestDisplay* UictlDialogCommandTest::s_pDisplay = new CNyTestDisplay;

}  // namespace

TEST_F(UictlDialogCommandTest, FingerprintEnrolmentIsFedAndStoppedFromTheShell) {
    // Given out of order: they are sent in the order of their times.
    auto pRun = Start({"fingerprint", "--enrol", "--update-after", "3000:0xEA", "--update-after",
                       "500:EF", "--stop-after", "5500", "--json"});
    EXPECT_FALSE(NyTestWaitWindow("^注册指纹$", NY_WAIT_MS).empty());
    for (const char* szLabel :
         {"请将手指放在指纹识别区，进行录入指纹！", "请更换手指再次录入指纹！"}) {
        EXPECT_TRUE(NyTestWaitAccessible(m_pidServer, "label", szLabel, NY_WAIT_MS)) << szLabel;
    }
    EXPECT_EQ(0, pRun->Wait(NY_WAIT_MS));
    // The answer is the terminate's: done.
    EXPECT_EQ(
        "update after 500 ms, detail 0x000000EF: UI_RESULT_OK\n"
        "update after 3000 ms, detail 0x000000EA: UI_RESULT_OK\n"
        "stopped after 5500 ms\n{\"enRes\":2,\"result\":\"UI_RESULT_OK\"}\n",
        pRun->Output());
    EXPECT_TRUE(NyTestFindWindows("^注册指纹$").empty());
}

// Without a stop the program returns when the confirmation's countdown has run out; Ctrl-C
// closes the dialog at once.
TEST_F(UictlDialogCommandTest, ConfirmationEndsWithItsCountdownOrCtrlC) {
    auto pEnd = Start({"confirm", "--timeout", "2"});
    EXPECT_FALSE(NyTestWaitWindow(NY_CONFIRM_TITLE, NY_WAIT_MS).empty());
    EXPECT_EQ(6, pEnd->Wait(NY_WAIT_MS));
    EXPECT_EQ("ukey-uictl: no answer within 2 s; the dialog was closed\n", pEnd->Output());
    EXPECT_TRUE(NyTestFindWindows(NY_CONFIRM_TITLE).empty());
    auto pRun = Start({"confirm", "--timeout", "60"});
    EXPECT_FALSE(NyTestWaitWindow(NY_CONFIRM_TITLE, NY_WAIT_MS).empty());
    kill(pRun->Pid(), SIGINT);
    EXPECT_EQ(130, pRun->Wait(NY_WAIT_MS));
    EXPECT_TRUE(NyTestContains(pRun->Output(), "interrupted; the dialog was closed"))
        << pRun->Output();
    EXPECT_TRUE(
        NyTestWaitUntil([] { return NyTestFindWindows(NY_CONFIRM_TITLE).empty(); }, NY_WAIT_MS));
    // A synchronous request ends at once; the server's watch of its clients closes the dialog.
    auto pSync = Start({"new-pin"});
    EXPECT_FALSE(NyTestWaitWindow("^验证UKey用户密码$", NY_WAIT_MS).empty());
    kill(pSync->Pid(), SIGINT);
    EXPECT_EQ(130, pSync->Wait(NY_WAIT_MS));
}

TEST_F(UictlDialogCommandTest, EachCommandPrintsWhatItsDialogReturned) {
    const struct {
        std::vector<std::string> vArgs;
        const char* szTitle;
        std::vector<std::string> vInput;
        const char* szExpected;
        int iExit = 0;
        bool bJoin = true;
    } aCases[] = {
        {{"unblock", "--min", "4", "--max", "16", "--json"},
         "解锁UKey用户密码",
         {"type:admin123", "Tab", "type:5678", "Return"},
         "{\"enRes\":2,\"result\":\"UI_RESULT_OK\",\"soPin\":\"admin123\",\"soPinLength\":8,"
         "\"userPin\":\"5678\",\"userPinLength\":4}\n"},
        {{"label", "--name-min", "1", "--pin-min", "4", "--pin-max", "8"},
         "修改UKey名称",
         {"type:MyKey", "Left Left Left", "type: ", "Tab", "type:1234", "Return"},
         "enRes: 2\nresult: UI_RESULT_OK\nname: My Key\nnameLength: 6\npin: 1234\n"
         "pinLength: 4\n"},
        // A compulsory change refuses the close request and goes on.
        {{"change-pin", "--compulsory", "--kind", "2", "--min", "6", "--max", "16"},
         "修改UKey管理员密码",
         {"alt+F4", "type:abc123", "Tab", "type:x9y8z7", "Tab", "type:x9y8z7", "Return"},
         "enRes: 2\nresult: UI_RESULT_OK\noldPin: abc123\noldPinLength: 6\nnewPin: x9y8z7\n"
         "newPinLength: 6\n"},
        {{"change-pin", "--min", "6", "--max", "16"},
         "修改UKey用户密码",
         {"close"},
         "enRes: 5\nresult: UI_RESULT_CANCEL\noldPin: \noldPinLength: 0\nnewPin: \n"
         "newPinLength: 0\n",
         1,
         false},
        // Closed by the user before its stop: the timetable ends with the dialog's answer.
        {{"confirm", "--closable", "--update-after", "20000:EE", "--stop-after", "25000", "--json"},
         "UKey提示信息-OVA ",
         {"close"},
         "{\"enRes\":5,\"result\":\"UI_RESULT_CANCEL\"}\n",
         1},
    };
    for (const auto& c : aCases) {
        auto pRun = Start(c.vArgs, c.bJoin);
        EXPECT_EQ(c.szExpected, Answer(pRun.get(), c.szTitle, c.vInput, c.iExit)) << c.vArgs[0];
    }
}
