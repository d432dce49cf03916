// ukey-uictl's confirm and fingerprint commands run as programs against a server on a private
// display: the dialogs appear, follow the timetable given on the command line, and go.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "CNyUiClient.h"
#include "NyUiServerProcess.h"
#include "support/NyTestAccessible.h"
#include "support/NyTestDisplay.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"

namespace {

constexpr unsigned int NY_WAIT_MS = 30000;
const char* const NY_CONFIRM_TITLE = "^UKey提示信息-OVA $";

struct BlkRunTag {
    int iExit = -1;
    std::string strOutput;  // stdout and stderr together
};

bool Contains(const std::string& strText, const std::string& strPart) {
    return strText.find(strPart) != std::string::npos;
}

class UictlConfirmCommandTest : public testing::Test {
protected:
    static void SetUpTestSuite() { s_pDisplay->Start(true, true); }
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

    pid_t Start(const std::vector<std::string>& vArgs) {
        m_strOut = "/tmp/" + NyTestUniqueName("uictlcf") + ".out";
        std::vector<std::string> vArgv = {NyTestBinPath("ukey-uictl")};
        vArgv.insert(vArgv.end(), vArgs.begin(), vArgs.end());
        vArgv.insert(vArgv.end(), {"--main", m_strMain});
        return NyTestSpawn(vArgv, m_strOut);
    }
    BlkRunTag Finish(pid_t pid) {
        BlkRunTag run;
        run.iExit = NyTestWaitChild(pid, NY_WAIT_MS);
        if (run.iExit < 0) {
            NyTestKillChild(pid);
        }
        std::ifstream file(m_strOut);
        std::stringstream ss;
        ss << file.rdbuf();
        run.strOutput = ss.str();
        unlink(m_strOut.c_str());
        return run;
    }
    bool WaitLabel(const std::string& strText) {
        return NyTestWaitAccessible(m_pidServer, "label", strText, NY_WAIT_MS);
    }

    static CNyTestDisplay* s_pDisplay;
    std::string m_strMain;
    pid_t m_pidServer = -1;
    std::string m_strOut;
};

CNyTestDisplay* UictlConfirmCommandTest::s_pDisplay = new CNyTestDisplay;

}  // namespace

TEST_F(UictlConfirmCommandTest, FingerprintEnrolmentIsFedAndStoppedFromTheShell) {
    // Given out of order: they are sent in the order of their times.
    pid_t pid = Start({"fingerprint", "--enrol", "--update-after", "3000:0xEA", "--update-after",
                       "500:EF", "--stop-after", "5500", "--json"});
    EXPECT_FALSE(NyTestWaitWindow("^注册指纹$", NY_WAIT_MS).empty());
    EXPECT_TRUE(WaitLabel("请将手指放在指纹识别区，进行录入指纹！"));
    EXPECT_TRUE(WaitLabel("请更换手指再次录入指纹！"));
    BlkRunTag run = Finish(pid);
    EXPECT_EQ(0, run.iExit) << run.strOutput;
    size_t nFirst = run.strOutput.find("update after 500 ms, detail 0x000000EF: UI_RESULT_OK\n");
    size_t nSecond = run.strOutput.find("update after 3000 ms, detail 0x000000EA: UI_RESULT_OK\n");
    EXPECT_NE(std::string::npos, nFirst) << run.strOutput;
    EXPECT_NE(std::string::npos, nSecond) << run.strOutput;
    EXPECT_LT(nFirst, nSecond) << run.strOutput;
    EXPECT_TRUE(Contains(run.strOutput, "stopped after 5500 ms\n")) << run.strOutput;
    // The answer is the terminate's: done.
    EXPECT_TRUE(Contains(run.strOutput, "{\"enRes\":2,\"result\":\"UI_RESULT_OK\"}\n"))
        << run.strOutput;
    EXPECT_TRUE(NyTestFindWindows("^注册指纹$").empty());
}

TEST_F(UictlConfirmCommandTest, ConfirmationCountsDownUntilStopped) {
    pid_t pid =
        Start({"confirm", "--kind", "12", "--timeout", "20", "--closable", "--stop-after", "4000"});
    std::string strWindow = NyTestWaitWindow(NY_CONFIRM_TITLE, NY_WAIT_MS);
    EXPECT_FALSE(strWindow.empty());
    EXPECT_TRUE(WaitLabel("操作已在UKey上取消！"));
    // Counting down from 19: any later second will do, however slowly the tree is read.
    EXPECT_TRUE(NyTestWaitUntil(
        [this] {
            for (const BlkTestAccessibleTag& blk : NyTestAccessibleTree(m_pidServer)) {
                if (blk.strRole == "label" && blk.strName.compare(0, 9, "剩余：") == 0 &&
                    blk.strName != "剩余：19 秒") {
                    return true;
                }
            }
            return false;
        },
        NY_WAIT_MS));
    // Motif functions: move and close (0x24), as --closable asked.
    EXPECT_EQ(0u, NyTestWindowProperty(strWindow, "_MOTIF_WM_HINTS").find("0x1, 0x24"));
    BlkRunTag run = Finish(pid);
    EXPECT_EQ(0, run.iExit) << run.strOutput;
    EXPECT_EQ("stopped after 4000 ms\nenRes: 2\nresult: UI_RESULT_OK\n", run.strOutput);
    EXPECT_TRUE(NyTestFindWindows(NY_CONFIRM_TITLE).empty());
}

TEST_F(UictlConfirmCommandTest, CancelByTheUserEndsTheTimetableWithTheDialogsAnswer) {
    pid_t pid = Start({"fingerprint", "--verify", "--update-after", "20000:EE", "--stop-after",
                       "25000", "--json"});
    EXPECT_FALSE(NyTestWaitWindow("^验证指纹$", NY_WAIT_MS).empty());
    BlkTestAccessibleTag cancel;
    ASSERT_TRUE(NyTestWaitAccessible(m_pidServer, "panel", "取消", NY_WAIT_MS, &cancel));
    NyTestClickAt(cancel.CentreX(), cancel.CentreY());
    BlkRunTag run = Finish(pid);
    EXPECT_EQ(0, run.iExit) << run.strOutput;
    EXPECT_EQ("{\"enRes\":5,\"result\":\"UI_RESULT_CANCEL\"}\n", run.strOutput);
}
