// Keyboard focus: a dialog takes the keyboard from the application that had it, and gives it to
// its first entry once clicked.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "NyPinDialogFixture.h"
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

class GUIFocusTest : public CPinDialogTest {
protected:
    // Whether the window manager stacks the dialog above the other application's window
    // (bottom to top; ids in hex, as xprop prints them).
    bool DialogAbove(const std::string& strOther) {
        char szDialog[32];
        snprintf(szDialog, sizeof(szDialog), "0x%lx", std::stoul(m_strWindow));
        char szOther[32];
        snprintf(szOther, sizeof(szOther), "0x%lx", std::stoul(strOther));
        std::string strStacking = NyTestShell("xprop -root _NET_CLIENT_LIST_STACKING");
        size_t posOther = strStacking.find(szOther);
        EXPECT_NE(std::string::npos, posOther) << strStacking;
        return strStacking.find(szDialog) != std::string::npos &&
               strStacking.find(szDialog) > posOther;
    }
};

}  // namespace

// The dialog takes the keyboard from the focused application from the moment it is up, gives
// it to its entry once clicked, and stays above that application's window when it is
// activated again.
TEST_F(GUIFocusTest, DialogTakesTheKeyboardAndStaysAboveTheApplicationThatHadIt) {
    CKeySink sink;
    ASSERT_FALSE(sink.Window().empty());
    NyTestShell("xdotool windowactivate --sync " + sink.Window());
    int iX = 0, iY = 0, iWidth = 0, iHeight = 0;
    ASSERT_TRUE(NyTestWindowGeometry(sink.Window(), &iX, &iY, &iWidth, &iHeight));
    NyTestMovePointer(iX + iWidth / 2, iY + iHeight / 2);  // where a person's hand rests
    NyTestType("q");
    ASSERT_TRUE(NyTestWaitUntil([&] { return sink.KeyPresses() == 1; }, NY_GUI_TEST_WAIT_MS))
        << "the other application does not receive keys to begin with";

    tagBlkUiParam req = NyGuiTestRequest(UI_CMD_VERIFY_PIN, 1, 16);
    Open(new GUIverify(&req, Config()), NY_TXT_TITLE);
    BlkTestAccessibleTag entry = Entry(NY_TXT_CAPTION);
    EXPECT_NE(sink.Window(), NyTestFocusedWindow());
    NyTestType("secret");
    usleep(300 * 1000);
    EXPECT_EQ(1, sink.KeyPresses()) << "keys typed after the dialog appeared reached the other "
                                       "application";
    NyTestShell("xdotool windowactivate --sync " + sink.Window());
    EXPECT_TRUE(DialogAbove(sink.Window()));

    NyGuiTestClick(entry);
    NyTestType("pin1");
    NyTestKey("Return");
    tagBlkUiParam blk = Finish();
    EXPECT_EQ(UI_RESULT_OK, blk.enRes);
    // What was typed before the click went into the dialog's entry too, and nothing reached
    // the other application.
    EXPECT_EQ("secretpin1", Field(blk, UI_OFS_VERIFY_PIN, NY_UI_PIN_FIELD_SIZE));
    EXPECT_EQ(1, sink.KeyPresses());
}
