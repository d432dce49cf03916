// The verify-PIN dialog on screen, used the way a person uses it: keys typed and buttons
// clicked through the X server, texts and states read back as a screen reader reads them.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "NyGuiTestEnv.h"
#include "support/NyTestLogCapture.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIverify.h"

namespace {

constexpr unsigned int NY_TXT_TITLE = 0x21007A;
constexpr unsigned int NY_TXT_TITLE_KIND2 = 0x210106;
constexpr unsigned int NY_TXT_TIPS = 0x21007E;
constexpr unsigned int NY_TXT_CAPTION = 0x21007F;
constexpr unsigned int NY_TXT_OK = 0x210011;
constexpr unsigned int NY_TXT_CANCEL = 0x210012;
constexpr unsigned int NY_TXT_COUNT = 0x210085;

// What a request carries in the output fields before the dialog writes them.
constexpr char NY_PIN_SENTINEL[] = "untouched";
constexpr uint32_t NY_LEN_SENTINEL = 0x11223344;

std::string Counter(unsigned int u4Count) {
    char szText[NY_GUI_TEXT_SIZE];
    snprintf(szText, sizeof(szText), NyGuiTestText(NY_TXT_COUNT).c_str(), u4Count);
    return szText;
}

std::string PinOf(const tagBlkUiParam& blk) {
    const char* sz = reinterpret_cast<const char*>(NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN));
    return std::string(sz, strnlen(sz, NY_UI_PIN_FIELD_SIZE));
}

class GUIverifyTest : public testing::Test {
protected:
    // Shows the dialog for a request and waits for its window.
    void Open(uint32_t u4Min, uint32_t u4Max, uint32_t u4Kind = 0) {
        m_req = NyGuiTestRequest(UI_CMD_VERIFY_PIN, u4Min, u4Max);
        NyUiParamSetU4(&m_req, UI_OFS_VERIFY_PIN_KIND, u4Kind);
        memcpy(NyUiParamBytes(&m_req, UI_OFS_VERIFY_PIN), NY_PIN_SENTINEL, sizeof(NY_PIN_SENTINEL));
        NyUiParamSetU4(&m_req, UI_OFS_VERIFY_PIN_LEN, NY_LEN_SENTINEL);
        m_pDialog.reset(new GUIverify(&m_req, m_pConfig.get()));
        m_pRun.reset(new CGuiTestRun(m_pDialog.get()));
        m_strTitle = NyGuiTestText(u4Kind == 2 ? NY_TXT_TITLE_KIND2 : NY_TXT_TITLE);
        m_strWindow = NyTestWaitWindow("^" + m_strTitle + "$", NY_GUI_TEST_WAIT_MS);
        ASSERT_FALSE(m_strWindow.empty()) << "no window titled " << m_strTitle;
        ASSERT_TRUE(NyGuiTestWaitFor("password text", NyGuiTestText(NY_TXT_CAPTION), &m_entry));
    }
    // A click into the PIN entry, as a person gives the dialog the keyboard.
    void ClickEntry() { NyGuiTestClick(m_entry); }
    // Waits until run() has returned and hands back the answer.
    tagBlkUiParam Finish() {
        EXPECT_TRUE(m_pRun->Wait(NY_GUI_TEST_WAIT_MS));
        EXPECT_EQ(0u, m_pRun->Result());
        EXPECT_EQ(1u, m_pDialog->IsFinished());
        EXPECT_TRUE(NyTestWaitNoWindow("^" + m_strTitle + "$", NY_GUI_TEST_WAIT_MS));
        return NyGuiTestResponse(m_pDialog.get());
    }
    bool OkSensitive() {
        for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
            if (blk.strRole == "push button" && blk.strName == NyGuiTestText(NY_TXT_OK)) {
                return blk.HasState("sensitive");
            }
        }
        ADD_FAILURE() << "no OK button";
        return false;
    }
    void ExpectUntouched(const tagBlkUiParam& blk) {
        EXPECT_EQ(UI_RESULT_CANCEL, blk.enRes);
        EXPECT_EQ(NY_PIN_SENTINEL, PinOf(blk));
        EXPECT_EQ(NY_LEN_SENTINEL, NyUiParamGetU4(&blk, UI_OFS_VERIFY_PIN_LEN));
    }

    std::unique_ptr<CConfig> m_pConfig = NyGuiTestConfig();
    tagBlkUiParam m_req;
    std::unique_ptr<GUIverify> m_pDialog;
    std::unique_ptr<CGuiTestRun> m_pRun;  // declared last: joined before the dialog goes
    std::string m_strTitle;
    std::string m_strWindow;
    BlkTestAccessibleTag m_entry;
};

}  // namespace

TEST_F(GUIverifyTest, TypedPinAndEnterAnswerOkWithThePinAndItsLength) {
    Open(6, 16);
    ClickEntry();
    NyTestType("abc123XY");
    NyGuiTestShot(m_strWindow, "verify-typed");
    NyTestKey("Return");
    tagBlkUiParam blk = Finish();
    EXPECT_EQ(UI_RESULT_OK, blk.enRes);
    EXPECT_EQ("abc123XY", PinOf(blk));
    EXPECT_EQ(8u, NyUiParamGetU4(&blk, UI_OFS_VERIFY_PIN_LEN));
    // The rest of the field is zero, not what the request held there.
    const uint8_t* pu1Field = NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN);
    EXPECT_EQ(std::string(NY_UI_PIN_FIELD_SIZE - 8, '\0'),
              std::string(reinterpret_cast<const char*>(pu1Field) + 8, NY_UI_PIN_FIELD_SIZE - 8));
}

TEST_F(GUIverifyTest, ShowsTheConfiguredTextsEveryControlReadable) {
    Open(6, 16);
    NyGuiTestShot(m_strWindow, "verify-empty");
    EXPECT_TRUE(NyGuiTestWaitFor("frame", m_strTitle));
    EXPECT_TRUE(NyGuiTestWaitFor("label", NyGuiTestText(NY_TXT_TIPS)));
    EXPECT_TRUE(NyGuiTestWaitFor("label", NyGuiTestText(NY_TXT_CAPTION)));
    EXPECT_TRUE(NyGuiTestWaitFor("push button", NyGuiTestText(NY_TXT_OK)));
    EXPECT_TRUE(NyGuiTestWaitFor("push button", NyGuiTestText(NY_TXT_CANCEL)));
    EXPECT_EQ("请输入UKey密码（6-16字符）", NyGuiTestText(NY_TXT_TIPS));
    for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
        if (blk.HasState("showing") && (blk.strRole == "push button" ||
                                        blk.strRole == "password text" || blk.strRole == "text")) {
            EXPECT_FALSE(blk.strName.empty()) << blk.strRole << " without a name";
        }
    }
    m_pDialog->stop();
    Finish();
}

TEST_F(GUIverifyTest, CounterShowsTheCharacterCountAndOkNeedsTheMinimum) {
    Open(4, 16);
    ClickEntry();
    EXPECT_FALSE(OkSensitive());
    NyTestType("abc");
    EXPECT_TRUE(NyGuiTestWaitFor("label", Counter(3)));
    EXPECT_EQ("已输入3个字符", Counter(3));
    EXPECT_FALSE(OkSensitive());
    NyTestKey("Return");  // refused below the minimum: the dialog stays
    usleep(300 * 1000);
    EXPECT_EQ(0u, m_pDialog->IsFinished());
    NyTestType("d");
    EXPECT_TRUE(NyGuiTestWaitFor("label", Counter(4)));
    EXPECT_TRUE(NyTestWaitUntil([this] { return OkSensitive(); }, NY_GUI_TEST_WAIT_MS));
    BlkTestAccessibleTag ok;
    ASSERT_TRUE(NyGuiTestWaitFor("push button", NyGuiTestText(NY_TXT_OK), &ok));
    NyGuiTestClick(ok);
    tagBlkUiParam blk = Finish();
    EXPECT_EQ(UI_RESULT_OK, blk.enRes);
    EXPECT_EQ("abcd", PinOf(blk));
    EXPECT_EQ(4u, NyUiParamGetU4(&blk, UI_OFS_VERIFY_PIN_LEN));
}

TEST_F(GUIverifyTest, CounterIsEmptyForAnEmptyEntry) {
    Open(1, 16);
    ClickEntry();
    NyTestType("ab");
    EXPECT_TRUE(NyGuiTestWaitFor("label", Counter(2)));
    NyTestKey("BackSpace BackSpace");
    EXPECT_TRUE(NyTestWaitUntil(
        [] {
            for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
                for (unsigned int u4Count = 0; u4Count <= 2; ++u4Count) {
                    if (blk.strRole == "label" && blk.strName == Counter(u4Count)) {
                        return false;
                    }
                }
            }
            return true;
        },
        NY_GUI_TEST_WAIT_MS));
    m_pDialog->stop();
    Finish();
}

TEST_F(GUIverifyTest, MinimumZeroAcceptsAnEmptyPin) {
    Open(0, 16);
    EXPECT_TRUE(OkSensitive());
    ClickEntry();
    NyTestKey("Return");
    tagBlkUiParam blk = Finish();
    EXPECT_EQ(UI_RESULT_OK, blk.enRes);
    EXPECT_EQ("", PinOf(blk));
    EXPECT_EQ(0u, NyUiParamGetU4(&blk, UI_OFS_VERIFY_PIN_LEN));
}

TEST_F(GUIverifyTest, MaximumCapsTyping) {
    Open(1, 5);
    ClickEntry();
    NyTestType("abcdefgh");
    NyTestKey("Return");
    tagBlkUiParam blk = Finish();
    EXPECT_EQ("abcde", PinOf(blk));
    EXPECT_EQ(5u, NyUiParamGetU4(&blk, UI_OFS_VERIFY_PIN_LEN));
}

TEST_F(GUIverifyTest, LongestPinFillsTheFieldWithItsTerminatorLast) {
    Open(1, 40);
    ClickEntry();
    NyTestType(std::string(34, '7'));
    NyTestKey("Return");
    tagBlkUiParam blk = Finish();
    EXPECT_EQ(std::string(32, '7'), PinOf(blk));
    EXPECT_EQ(0, NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN)[32]);
    EXPECT_EQ(32u, NyUiParamGetU4(&blk, UI_OFS_VERIFY_PIN_LEN));
}

TEST_F(GUIverifyTest, CharactersOtherThanLettersAndDigitsAreNotInserted) {
    Open(1, 16);
    ClickEntry();
    NyTestType("a-b c!d_e.9");
    NyTestKey("Return");
    tagBlkUiParam blk = Finish();
    EXPECT_EQ("abcde9", PinOf(blk));
}

TEST_F(GUIverifyTest, PastingWithCtrlVOrTheRightButtonDoesNothing) {
    Open(1, 16);
    gdk_threads_enter();
    gtk_clipboard_set_text(gtk_clipboard_get(GDK_SELECTION_CLIPBOARD), "999", -1);
    gdk_threads_leave();
    ClickEntry();
    NyTestType("ab");
    NyTestKey("ctrl+v");
    NyGuiTestClick(m_entry, 3);
    usleep(300 * 1000);
    for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
        EXPECT_FALSE(blk.strRole == "menu item" && blk.HasState("showing"))
            << "a context menu opened: " << blk.strName;
    }
    NyTestKey("Escape");
    NyTestKey("Return");
    tagBlkUiParam blk = Finish();
    EXPECT_EQ(UI_RESULT_OK, blk.enRes);
    EXPECT_EQ("ab", PinOf(blk));
}

TEST_F(GUIverifyTest, PinKindTwoSelectsTheSecondTitle) {
    Open(6, 16, 2);
    EXPECT_EQ("验证UKey管理员密码", m_strTitle);
    EXPECT_EQ(m_strTitle, NyTestWindowTitle(m_strWindow));
    m_pDialog->stop();
    Finish();
}

TEST_F(GUIverifyTest, ClosingTheWindowAnswersCancelWithThePinFieldUntouched) {
    Open(1, 16);
    ClickEntry();
    NyTestType("abc");
    ASSERT_TRUE(NyTestWaitFocused(m_strWindow, NY_GUI_TEST_WAIT_MS));
    NyTestKey("alt+F4");  // the window manager's close
    ExpectUntouched(Finish());
}

TEST_F(GUIverifyTest, CancelButtonAnswersCancelWithThePinFieldUntouched) {
    Open(1, 16);
    ClickEntry();
    NyTestType("abc");
    BlkTestAccessibleTag cancel;
    ASSERT_TRUE(NyGuiTestWaitFor("push button", NyGuiTestText(NY_TXT_CANCEL), &cancel));
    NyGuiTestClick(cancel);
    ExpectUntouched(Finish());
}

TEST_F(GUIverifyTest, StopAnswersCancelWithThePinFieldUntouched) {
    CNyTestLogCapture log;
    Open(1, 16);
    ClickEntry();
    NyTestType("abc");
    EXPECT_EQ(0u, m_pDialog->stop());
    ExpectUntouched(Finish());
    EXPECT_EQ(
        (std::vector<std::string>{"GUIverify::run() enter", "GUIverify::destroy_callback() enter",
                                  "GUIverify::destroy_callback() leave", "GUIverify::run() leave"}),
        log.MessagesAt(LOG_INFO));
}

TEST_F(GUIverifyTest, StopBeforeRunKeepsTheWindowFromShowing) {
    m_req = NyGuiTestRequest(UI_CMD_VERIFY_PIN, 1, 16);
    GUIverify dlg(&m_req, m_pConfig.get());
    EXPECT_EQ(0u, dlg.stop());
    EXPECT_EQ(0u, dlg.run());  // returns at once instead of waiting for a person
    EXPECT_EQ(1u, dlg.IsFinished());
    EXPECT_EQ(UI_RESULT_CANCEL, NyGuiTestResponse(&dlg).enRes);
    EXPECT_TRUE(NyTestFindWindows("^" + NyGuiTestText(NY_TXT_TITLE) + "$").empty());
}

TEST_F(GUIverifyTest, WindowStaysAboveAndOffersOnlyMoveAndClose) {
    Open(6, 16);
    EXPECT_NE(std::string::npos,
              NyTestWindowProperty(m_strWindow, "_NET_WM_STATE").find("_NET_WM_STATE_ABOVE"));
    // Motif hints: flags, functions (MWM_FUNC_MOVE 4 | MWM_FUNC_CLOSE 32), ...
    EXPECT_EQ(0u, NyTestWindowProperty(m_strWindow, "_MOTIF_WM_HINTS").find("0x1, 0x24"));
    m_pDialog->stop();
    Finish();
}
