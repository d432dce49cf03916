// Keyboard focus: a dialog takes the keyboard from the application that had it, and gives it to
// its first entry once clicked.
#include <gtest/gtest.h>

#include <string>

#include "NyDialogFixture.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIverify.h"

namespace {

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
    // KeyPress events that reached the window so far.
    int KeyPresses() const {
        return std::stoi("0" + NyTestShell("grep -c 'KeyPress event' " + m_strLog));
    }

    std::string m_strName;
    std::string m_strLog;
    std::string m_strWindow;
    pid_t m_pid = -1;
};

// Hex id of a window, as xprop prints it.
std::string Hex(const std::string& strWindow) {
    char sz[32];
    snprintf(sz, sizeof(sz), "0x%lx", std::stoul(strWindow));
    return sz;
}

using GUIFocusTest = CDialogTest;

}  // namespace

// The dialog takes the keyboard from the focused application from the moment it is up, gives
// it to its entry once clicked, and stays above that application's window when it is
// activated again.
TEST_F(GUIFocusTest, DialogTakesTheKeyboardAndStaysAboveTheApplicationThatHadIt) {
    CKeySink sink;
    ASSERT_FALSE(sink.m_strWindow.empty());
    NyTestShell("xdotool windowactivate --sync " + sink.m_strWindow);
    int iX = 0, iY = 0, iWidth = 0, iHeight = 0;
    ASSERT_TRUE(NyTestWindowGeometry(sink.m_strWindow, &iX, &iY, &iWidth, &iHeight));
    NyTestMovePointer(iX + iWidth / 2, iY + iHeight / 2);  // where a person's hand rests
    NyTestType("q");
    ASSERT_TRUE(NyTestWaitUntil([&] { return sink.KeyPresses() == 1; }, NY_GUI_TEST_WAIT_MS))
        << "the other application does not receive keys to begin with";

    Request(UI_CMD_VERIFY_PIN, 1, 16);
    Open<GUIverify>(0x21007A);
    BlkTestAccessibleTag entry = Entry(0x21007F);
    EXPECT_NE(sink.m_strWindow, NyTestFocusedWindow());
    NyTestType("secret");
    usleep(300 * 1000);
    EXPECT_EQ(1, sink.KeyPresses()) << "keys typed after the dialog appeared went elsewhere";
    NyTestShell("xdotool windowactivate --sync " + sink.m_strWindow);
    // Bottom to top: the dialog comes after the other application.
    std::string strStacking = NyTestShell("xprop -root _NET_CLIENT_LIST_STACKING");
    size_t posOther = strStacking.find(Hex(sink.m_strWindow));
    ASSERT_NE(std::string::npos, posOther) << strStacking;
    size_t posDialog = strStacking.find(Hex(m_strWindow));
    EXPECT_TRUE(posDialog != std::string::npos && posDialog > posOther) << strStacking;

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
