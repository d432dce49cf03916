// ukey-uictl's confirm and fingerprint commands run as programs against a server on a private
// display: the dialogs appear, follow the timetable given on the command line, and go.
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

constexpr unsigned int NY_WAIT_MS = 30000;
const char* const NY_CONFIRM_TITLE = "^UKey提示信息-OVA $";

class UictlConfirmCommandTest : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(s_pDisplay->Start(true, true)); }
    static void TearDownTestSuite() { s_pDisplay->Stop(); }

    // A server of our own on the display, so that its accessibility tree can be read.
    void SetUp() override {
        m_strMain = NyTestUniqueName("uictlcf");
        m_pidServer = NyUiServerSpawn(NyTestBinPath("ukey-uiserver").c_str(), m_strMain.c_str(),
                                      false, nullptr);
        ASSERT_GT(m_pidServer, 0);
        ASSERT_TRUE(NyTestWaitUntil(
            [this] {
                CNyUiClient client;
                return client.JoinServer(m_strMain.c_str(), 50) == NY_OK;
            },
            NY_WAIT_MS));
    }
    void TearDown() override { EXPECT_TRUE(NyUiServerStop(m_pidServer, 5000)); }

    std::unique_ptr<CNyTestRun> Start(std::vector<std::string> vArgs) {
        vArgs.insert(vArgs.begin(), NyTestBinPath("ukey-uictl"));
        vArgs.insert(vArgs.end(), {"--main", m_strMain});
        return std::make_unique<CNyTestRun>(vArgs);
    }
    bool WaitLabel(const std::string& strText) {
        return NyTestWaitAccessible(m_pidServer, "label", strText, NY_WAIT_MS);
    }

    static CNyTestDisplay* s_pDisplay;
    std::string m_strMain;
    pid_t m_pidServer = -1;
};

CNyTestDisplay* UictlConfirmCommandTest::s_pDisplay = new CNyTestDisplay;

}  // namespace

TEST_F(UictlConfirmCommandTest, FingerprintEnrolmentIsFedAndStoppedFromTheShell) {
    // Given out of order: they are sent in the order of their times.
    auto pRun = Start({"fingerprint", "--enrol", "--update-after", "3000:0xEA", "--update-after",
                       "500:EF", "--stop-after", "5500", "--json"});
    EXPECT_FALSE(NyTestWaitWindow("^注册指纹$", NY_WAIT_MS).empty());
    EXPECT_TRUE(WaitLabel("请将手指放在指纹识别区，进行录入指纹！"));
    EXPECT_TRUE(WaitLabel("请更换手指再次录入指纹！"));
    EXPECT_EQ(0, pRun->Wait(NY_WAIT_MS));
    std::string strOut = pRun->Output();
    size_t nFirst = strOut.find("update after 500 ms, detail 0x000000EF: UI_RESULT_OK\n");
    size_t nSecond = strOut.find("update after 3000 ms, detail 0x000000EA: UI_RESULT_OK\n");
    EXPECT_NE(std::string::npos, nFirst) << strOut;
    EXPECT_NE(std::string::npos, nSecond) << strOut;
    EXPECT_LT(nFirst, nSecond) << strOut;
    EXPECT_TRUE(NyTestContains(strOut, "stopped after 5500 ms\n")) << strOut;
    // The answer is the terminate's: done.
    EXPECT_TRUE(NyTestContains(strOut, "{\"enRes\":2,\"result\":\"UI_RESULT_OK\"}\n")) << strOut;
    EXPECT_TRUE(NyTestFindWindows("^注册指纹$").empty());
}

TEST_F(UictlConfirmCommandTest, ConfirmationLastsUntilStoppedOrUntilItsCountdownEnds) {
    auto pRun =
        Start({"confirm", "--kind", "12", "--timeout", "20", "--closable", "--stop-after", "4000"});
    std::string strWindow = NyTestWaitWindow(NY_CONFIRM_TITLE, NY_WAIT_MS);
    EXPECT_FALSE(strWindow.empty());
    EXPECT_TRUE(WaitLabel("操作已在UKey上取消！"));
    // Motif functions: move and close (0x24), as --closable asked.
    EXPECT_EQ(0u, NyTestWindowProperty(strWindow, "_MOTIF_WM_HINTS").find("0x1, 0x24"));
    EXPECT_EQ(0, pRun->Wait(NY_WAIT_MS));
    EXPECT_EQ("stopped after 4000 ms\nenRes: 2\nresult: UI_RESULT_OK\n", pRun->Output());
    EXPECT_TRUE(NyTestFindWindows(NY_CONFIRM_TITLE).empty());

    // Without a stop the program returns when the countdown has run out.
    auto pEnd = Start({"confirm", "--timeout", "2"});
    EXPECT_FALSE(NyTestWaitWindow(NY_CONFIRM_TITLE, NY_WAIT_MS).empty());
    EXPECT_EQ(6, pEnd->Wait(NY_WAIT_MS));
    EXPECT_EQ("ukey-uictl: no answer within 2 s; the dialog was closed\n", pEnd->Output());
    EXPECT_TRUE(NyTestFindWindows(NY_CONFIRM_TITLE).empty());
}

TEST_F(UictlConfirmCommandTest, CancelByTheUserEndsTheTimetableWithTheDialogsAnswer) {
    auto pRun = Start({"fingerprint", "--verify", "--update-after", "20000:EE", "--stop-after",
                       "25000", "--json"});
    EXPECT_FALSE(NyTestWaitWindow("^验证指纹$", NY_WAIT_MS).empty());
    BlkTestAccessibleTag cancel;
    ASSERT_TRUE(NyTestWaitAccessible(m_pidServer, "panel", "取消", NY_WAIT_MS, &cancel));
    NyTestClickAt(cancel.CentreX(), cancel.CentreY());
    EXPECT_EQ(1, pRun->Wait(NY_WAIT_MS));
    EXPECT_EQ("{\"enRes\":5,\"result\":\"UI_RESULT_CANCEL\"}\n", pRun->Output());
}

TEST_F(UictlConfirmCommandTest, CtrlCClosesTheDialogAndExits130) {
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
