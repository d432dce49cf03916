// The verify-PIN dialog on screen, used the way a person uses it: keys typed and buttons
// clicked through the X server, texts and states read back as a screen reader reads them.
#include <gtest/gtest.h>

#include <string>

#include "NyDialogFixture.h"
#include "NyGuiTestWidgets.h"
#include "support/NyTestLogCapture.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIverify.h"

namespace {

constexpr unsigned int NY_TXT_TITLE = 0x21007A;
constexpr unsigned int NY_TXT_TITLE_KIND2 = 0x210106;
constexpr unsigned int NY_TXT_TIPS = 0x21007E;
constexpr unsigned int NY_TXT_CAPTION = 0x21007F;

class GUIverifyTest : public CDialogTest {
protected:
    void OpenVerify(uint32_t u4Min, uint32_t u4Max, uint32_t u4Kind = 0) {
        Request(UI_CMD_VERIFY_PIN, u4Min, u4Max, {{UI_OFS_VERIFY_PIN_KIND, u4Kind}});
        Open<GUIverify>(u4Kind == 2 ? NY_TXT_TITLE_KIND2 : NY_TXT_TITLE);
    }
};

}  // namespace

// One window through all it shows: the configured texts above everything, every control named;
// the Caps Lock warning; a counter of the characters typed (nothing for an empty entry); OK and
// Enter waiting for the minimum; the answer is the PIN, its length and zeros behind it.
TEST_F(GUIverifyTest, ShowsItsTextsAndCountsTheTypedPinWhichTheAnswerCarries) {
    OpenVerify(4, 16);
    EXPECT_TRUE(NyGuiTestWaitFor("label", NyGuiTestText(NY_TXT_TIPS)));
    EXPECT_TRUE(NyGuiTestWaitFor("label", NyGuiTestText(NY_TXT_CAPTION)));
    EXPECT_TRUE(NyGuiTestWaitFor("push button", NyGuiTestText(NY_TXT_CANCEL)));
    for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
        if (blk.HasState("showing") &&
            (blk.strRole == "push button" || blk.strRole == NY_ROLE_PIN ||
             blk.strRole == NY_ROLE_TEXT)) {
            EXPECT_FALSE(blk.strName.empty()) << blk.strRole << " without a name";
        }
    }
    EXPECT_NE(std::string::npos,
              NyTestWindowProperty(m_strWindow, "_NET_WM_STATE").find("_NET_WM_STATE_ABOVE"));
    // Motif hints: flags, functions (MWM_FUNC_MOVE 4 | MWM_FUNC_CLOSE 32), ...
    EXPECT_EQ(0u, NyTestWindowProperty(m_strWindow, "_MOTIF_WM_HINTS").find("0x1, 0x24"));

    NyGuiTestClick(Entry(NY_TXT_CAPTION));
    EXPECT_FALSE(OkSensitive());
    NyTestKey("Caps_Lock");
    EXPECT_TRUE(NyTestWaitUntil(
        [] { return NyGuiTestEntryEndIcon("verify_pin") == GTK_STOCK_CAPS_LOCK_WARNING; },
        NY_GUI_TEST_WAIT_MS));
    NyTestKey("Caps_Lock");
    EXPECT_TRUE(NyTestWaitUntil([] { return NyGuiTestEntryEndIcon("verify_pin").empty(); },
                                NY_GUI_TEST_WAIT_MS));
    NyTestType("ab");
    EXPECT_TRUE(WaitLabel(Counter(2)));
    NyTestKey("BackSpace BackSpace");
    EXPECT_TRUE(NyTestWaitUntil([] { return NyGuiTestLabelText("verify_inputtips").empty(); },
                                NY_GUI_TEST_WAIT_MS));
    NyTestType("abc");
    EXPECT_TRUE(WaitLabel(Counter(3)));
    EXPECT_FALSE(OkSensitive());
    ExpectReturnRefused();
    NyTestType("d");
    EXPECT_TRUE(WaitLabel(Counter(4)));
    EXPECT_TRUE(WaitOkSensitive());
    ClickButton(NY_TXT_OK);
    tagBlkUiParam blk = Finish();
    ExpectAnswer(blk, {"abcd"});
    const char* pcField = reinterpret_cast<const char*>(NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN));
    EXPECT_EQ(std::string(NY_UI_PIN_FIELD_SIZE - 4, '\0'),
              std::string(pcField + 4, NY_UI_PIN_FIELD_SIZE - 4));
}

// What is typed is what the answer carries: the maximum caps typing, and no maximum (0) or
// one beyond the field is the field's 32 characters; only letters and digits go in.
TEST_F(GUIverifyTest, AnswerHoldsExactlyWhatTheEntryTook) {
    const struct {
        uint32_t u4Min, u4Max;
        std::string strTyped, strPin;
    } aCases[] = {
        {0, 16, "", ""},
        {1, 0, std::string(40, '7'), std::string(32, '7')},
        {1, 40, std::string(34, '8'), std::string(32, '8')},
        {1, 16, "a-b c!d_e.9", "abcde9"},
    };
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.strTyped);
        OpenVerify(c.u4Min, c.u4Max);
        EXPECT_EQ(c.u4Min == 0, OkSensitive());
        NyGuiTestClick(Entry(NY_TXT_CAPTION));
        NyTestType(c.strTyped);
        if (!c.strPin.empty()) {
            EXPECT_TRUE(WaitLabel(Counter(static_cast<unsigned int>(c.strPin.size()))));
        }
        NyTestKey("Return");
        tagBlkUiParam blk = Finish();
        ExpectAnswer(blk, {c.strPin});
        EXPECT_EQ(0, NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN)[32]);
    }
}

TEST_F(GUIverifyTest, AdministratorKindIsTitledForItAndAStopIsLogged) {
    CNyTestLogCapture log;
    OpenVerify(1, 16, 2);
    EXPECT_EQ("验证UKey管理员密码", m_strTitle);
    ExpectCancelledUntouched(StopAndFinish());
    EXPECT_EQ(
        (std::vector<std::string>{"GUIverify::run() enter", "GUIverify::destroy_callback() enter",
                                  "GUIverify::destroy_callback() leave", "GUIverify::run() leave"}),
        log.MessagesAt(LOG_INFO));
}
