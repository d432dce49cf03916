// The verify-PIN dialog on screen, used the way a person uses it: keys typed and buttons
// clicked through the X server, texts and states read back as a screen reader reads them.
#include <gtest/gtest.h>

#include <string>

#include "NyPinDialogFixture.h"
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

class GUIverifyTest : public CPinDialogTest {
protected:
    // Shows the dialog for a request and waits for its window.
    void OpenVerify(uint32_t u4Min, uint32_t u4Max, uint32_t u4Kind = 0) {
        m_req = NyGuiTestRequest(UI_CMD_VERIFY_PIN, u4Min, u4Max);
        NyUiParamSetU4(&m_req, UI_OFS_VERIFY_PIN_KIND, u4Kind);
        FillSentinel(&m_req, UI_OFS_VERIFY_PIN, UI_OFS_VERIFY_PIN_LEN);
        Open(new GUIverify(&m_req, Config()), u4Kind == 2 ? NY_TXT_TITLE_KIND2 : NY_TXT_TITLE);
    }
    static std::string Pin(const tagBlkUiParam& blk) {
        return Field(blk, UI_OFS_VERIFY_PIN, NY_UI_PIN_FIELD_SIZE);
    }
    // Waits until no counter for 0 to 40 characters shows.
    static bool WaitNoCounter() {
        return NyTestWaitUntil(
            [] {
                for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
                    for (unsigned int u4Count = 0; u4Count <= 40; ++u4Count) {
                        if (blk.strRole == "label" && blk.strName == Counter(u4Count)) {
                            return false;
                        }
                    }
                }
                return true;
            },
            NY_GUI_TEST_WAIT_MS);
    }

    tagBlkUiParam m_req;
};

}  // namespace

TEST_F(GUIverifyTest, ShowsTheConfiguredTextsAboveEverythingEveryControlReadable) {
    OpenVerify(6, 16);
    Shot("verify-empty");
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
    EXPECT_NE(std::string::npos,
              NyTestWindowProperty(m_strWindow, "_NET_WM_STATE").find("_NET_WM_STATE_ABOVE"));
    // Motif hints: flags, functions (MWM_FUNC_MOVE 4 | MWM_FUNC_CLOSE 32), ...
    EXPECT_EQ(0u, NyTestWindowProperty(m_strWindow, "_MOTIF_WM_HINTS").find("0x1, 0x24"));
    m_pDialog->stop();
    Finish();
    OpenVerify(6, 16, 2);
    EXPECT_EQ("验证UKey管理员密码", m_strTitle);
    EXPECT_EQ(m_strTitle, NyTestWindowTitle(m_strWindow));
    m_pDialog->stop();
    Finish();
}

// The counter shows the character count (nothing for an empty entry); OK and Enter wait for
// the minimum; the answer is the PIN, its length, and zeros behind it in the field.
TEST_F(GUIverifyTest, CounterAndOkFollowTheTypedPinWhichTheAnswerCarries) {
    OpenVerify(4, 16);
    NyGuiTestClick(Entry(NY_TXT_CAPTION));
    EXPECT_FALSE(OkSensitive());
    NyTestType("ab");
    EXPECT_TRUE(WaitLabel(Counter(2)));
    NyTestKey("BackSpace BackSpace");
    EXPECT_TRUE(WaitNoCounter());
    NyTestType("abc");
    EXPECT_TRUE(WaitLabel(Counter(3)));
    EXPECT_EQ("已输入3个字符", Counter(3));
    EXPECT_FALSE(OkSensitive());
    NyTestKey("Return");  // refused below the minimum: the dialog stays
    usleep(300 * 1000);
    EXPECT_EQ(0u, m_pDialog->IsFinished());
    NyTestType("d");
    EXPECT_TRUE(WaitLabel(Counter(4)));
    EXPECT_TRUE(NyTestWaitUntil([this] { return OkSensitive(); }, NY_GUI_TEST_WAIT_MS));
    Shot("verify-typed");
    ClickButton(NY_TXT_OK);
    tagBlkUiParam blk = Finish();
    EXPECT_EQ(UI_RESULT_OK, blk.enRes);
    EXPECT_EQ("abcd", Pin(blk));
    EXPECT_EQ(4u, NyUiParamGetU4(&blk, UI_OFS_VERIFY_PIN_LEN));
    const uint8_t* pu1Field = NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN);
    EXPECT_EQ(std::string(NY_UI_PIN_FIELD_SIZE - 4, '\0'),
              std::string(reinterpret_cast<const char*>(pu1Field) + 4, NY_UI_PIN_FIELD_SIZE - 4));
}

// What is typed is what the answer carries: the maximum caps typing, and no maximum (0) or
// one beyond the field is the field's 32 characters; only letters and digits go in.
TEST_F(GUIverifyTest, AnswerHoldsExactlyWhatTheEntryTook) {
    const struct {
        uint32_t u4Min, u4Max;
        std::string strTyped, strPin;
    } aCases[] = {
        {0, 16, "", ""},
        {1, 5, "abcdefgh", "abcde"},
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
        EXPECT_EQ(UI_RESULT_OK, blk.enRes);
        EXPECT_EQ(c.strPin, Pin(blk));
        EXPECT_EQ(0, NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN)[32]);
        EXPECT_EQ(c.strPin.size(), NyUiParamGetU4(&blk, UI_OFS_VERIFY_PIN_LEN));
    }
}

TEST_F(GUIverifyTest, StopLogsTheRunAndTheDestroyCallback) {
    CNyTestLogCapture log;
    OpenVerify(1, 16);
    EXPECT_EQ(0u, m_pDialog->stop());
    EXPECT_EQ(UI_RESULT_CANCEL, Finish().enRes);
    EXPECT_EQ(
        (std::vector<std::string>{"GUIverify::run() enter", "GUIverify::destroy_callback() enter",
                                  "GUIverify::destroy_callback() leave", "GUIverify::run() leave"}),
        log.MessagesAt(LOG_INFO));
}
