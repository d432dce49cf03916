// Keyboard focus: a dialog takes the keyboard from the application that had it, and gives it to
// its first entry once clicked.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "NyGuiTestEnv.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIverify.h"

namespace {

constexpr unsigned int NY_TXT_TITLE = 0x21007A;
constexpr unsigned int NY_TXT_CAPTION = 0x21007F;

// Another application: xev, which reports every key that reaches its window.
class CKeySink {
public:
    CKeySink() : m_strName(NyTestUniqueName("ny-sink")) {
        m_strLog = std::string(NY_TEST_BUILD_DIR) + "/" + m_strName + ".log";
        m_pid = NyTestSpawn({"/usr/bin/xev", "-name", m_strName, "-geometry", "400x300+20+20"},
                            m_strLog);
        m_strWindow = NyTestWaitWindow("^" + m_strName + "$", NY_GUI_TEST_WAIT_MS);
    }
    ~CKeySink() {
        NyTestKillChild(m_pid);
        std::remove(m_strLog.c_str());
    }
    const std::string& Window() const { return m_strWindow; }
    // KeyPress events that reached the window so far.
    int KeyPresses() const {
        std::ifstream in(m_strLog);
        std::stringstream ss;
        ss << in.rdbuf();
        std::string strLog = ss.str();
        int nCount = 0;
        for (size_t pos = strLog.find("KeyPress event"); pos != std::string::npos;
             pos = strLog.find("KeyPress event", pos + 1)) {
            ++nCount;
        }
        return nCount;
    }

private:
    std::string m_strName;
    std::string m_strLog;
    std::string m_strWindow;
    pid_t m_pid = -1;
};

// A verify dialog shown on a thread of its own, as the service shows it.
class CShownVerify {
public:
    CShownVerify()
        : m_pConfig(NyGuiTestConfig()),
          m_req(NyGuiTestRequest(UI_CMD_VERIFY_PIN, 1, 16)),
          m_dialog(&m_req, m_pConfig.get()),
          m_run(&m_dialog),
          m_strWindow(
              NyTestWaitWindow("^" + NyGuiTestText(NY_TXT_TITLE) + "$", NY_GUI_TEST_WAIT_MS)) {}
    const std::string& Window() const { return m_strWindow; }
    GUIverify& Dialog() { return m_dialog; }
    CGuiTestRun& Run() { return m_run; }

private:
    std::unique_ptr<CConfig> m_pConfig;
    tagBlkUiParam m_req;
    GUIverify m_dialog;
    CGuiTestRun m_run;
    std::string m_strWindow;
};

std::string PinOf(const tagBlkUiParam& blk) {
    return reinterpret_cast<const char*>(NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN));
}

}  // namespace

TEST(GUIFocusTest, DialogTakesTheKeyboardFromTheFocusedApplication) {
    CKeySink sink;
    ASSERT_FALSE(sink.Window().empty());
    NyTestShell("xdotool windowactivate --sync " + sink.Window());
    int iX = 0, iY = 0, iWidth = 0, iHeight = 0;
    ASSERT_TRUE(NyTestWindowGeometry(sink.Window(), &iX, &iY, &iWidth, &iHeight));
    NyTestMovePointer(iX + iWidth / 2, iY + iHeight / 2);  // where a person's hand rests
    NyTestType("q");
    ASSERT_TRUE(NyTestWaitUntil([&] { return sink.KeyPresses() == 1; }, NY_GUI_TEST_WAIT_MS))
        << "the other application does not receive keys to begin with";

    CShownVerify shown;
    ASSERT_FALSE(shown.Window().empty());
    BlkTestAccessibleTag entry;
    ASSERT_TRUE(NyGuiTestWaitFor("password text", NyGuiTestText(NY_TXT_CAPTION), &entry));
    EXPECT_NE(sink.Window(), NyTestFocusedWindow());
    NyTestType("secret");
    usleep(300 * 1000);
    EXPECT_EQ(1, sink.KeyPresses()) << "keys typed after the dialog appeared reached the other "
                                       "application";

    NyGuiTestClick(entry);
    NyTestType("pin1");
    NyTestKey("Return");
    ASSERT_TRUE(shown.Run().Wait(NY_GUI_TEST_WAIT_MS));
    tagBlkUiParam blk = NyGuiTestResponse(&shown.Dialog());
    EXPECT_EQ(UI_RESULT_OK, blk.enRes);
    // The dialog holds the keyboard from the moment it is up: what was typed before the click
    // went into its entry too, and nothing reached the other application.
    EXPECT_EQ("secretpin1", PinOf(blk));
    EXPECT_EQ(1, sink.KeyPresses());
}

TEST(GUIFocusTest, DialogStaysAboveAWindowActivatedAfterIt) {
    CKeySink sink;
    ASSERT_FALSE(sink.Window().empty());
    CShownVerify shown;
    ASSERT_FALSE(shown.Window().empty());
    NyTestShell("xdotool windowactivate --sync " + sink.Window());
    // Bottom to top; ids in hex, as xprop prints them.
    char szDialog[32];
    snprintf(szDialog, sizeof(szDialog), "0x%lx", std::stoul(shown.Window()));
    char szSink[32];
    snprintf(szSink, sizeof(szSink), "0x%lx", std::stoul(sink.Window()));
    std::string strStacking = NyTestShell("xprop -root _NET_CLIENT_LIST_STACKING");
    size_t posDialog = strStacking.find(szDialog);
    size_t posSink = strStacking.find(szSink);
    ASSERT_NE(std::string::npos, posDialog) << strStacking;
    ASSERT_NE(std::string::npos, posSink) << strStacking;
    EXPECT_GT(posDialog, posSink) << strStacking;
    shown.Dialog().stop();
}
