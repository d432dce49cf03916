// The message dialog: which text and buttons a message id and parameter give, and what the
// buttons answer, on screen.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "NyDialogFixture.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUImessage.h"

namespace {

constexpr unsigned int NY_TXT_TITLE = 0x0021009C;
constexpr unsigned int NY_TXT_YES = 0x00210013;
constexpr unsigned int NY_TXT_NO = 0x00210014;
constexpr uint32_t NY_NO_FORMAT = 0xFFFFFFFF;

// Text u4TextId, formatted with u4Arg unless it is NY_NO_FORMAT.
std::string Expected(unsigned int u4TextId, uint32_t u4Arg) {
    std::string strText = NyGuiTestText(u4TextId);
    if (u4Arg == NY_NO_FORMAT) {
        return strText;
    }
    char szText[NY_GUI_LONG_TEXT_SIZE];
    snprintf(szText, sizeof(szText), strText.c_str(), u4Arg);
    return szText;
}

struct BlkMessageCase {
    uint32_t u4MsgId;
    uint32_t u4Param;
    unsigned int u4TextId;
    uint32_t u4FormatArg;
    uint32_t u4ButtonMode;
};

// The text and button mode of a message, the text cut to a buffer of cbText bytes.
std::string Parse(uint32_t u4MsgId, uint32_t u4Param, uint32_t* pu4Mode = nullptr,
                  unsigned int cbText = NY_GUI_LONG_TEXT_SIZE) {
    std::unique_ptr<CConfig> pConfig = NyGuiTestConfig();
    tagBlkUiParam req = NyGuiTestRequest(UI_CMD_MESSAGE, u4MsgId, u4Param);
    GUImessage dlg(&req, pConfig.get());
    std::vector<char> vText(cbText, 'x');
    dlg.ParseMessage(vText.data(), cbText);
    if (pu4Mode != nullptr) {
        *pu4Mode = dlg.GetButtonMode();
    }
    return vText.data();
}

}  // namespace

TEST(GUImessageText, EachMessageSelectsItsTextAndButtons) {
    const uint32_t S = NY_MSG_BUTTONS_SINGLE;
    const uint32_t Q = NY_MSG_BUTTONS_YES_NO;
    // Wrong PIN (tries left in the low nibble, or in the parameter of ...CF; parameter 11
    // keeps the id unlisted; the nibble wins over a fingerprint counter in bits 23-16), locked,
    // not locked / wrong key, success notices by parameter, result codes, and unknown ids
    // (including ones between listed ids).
    // clang-format off
    const BlkMessageCase aCases[] = {
        {0xE06163C3, 0, 0x00010043, 3, Q}, {0xE06163C1, 0, 0x00010043, 1, Q},
        {0xE06163CF, 5, 0x00010043, 5, Q}, {0xE06163CF, 1, 0x00010043, 1, Q},
        {0xE06163C0, 0, 0x00010049, NY_NO_FORMAT, S}, {0xE06163CF, 0, 0x00010049, NY_NO_FORMAT, S},
        {0xE06163C2, 11, 0x00010048, 0xE06163C2, S}, {0xE06163CF, 0x000B0002, 0x0001005A, 2, Q},
        {0xE06163C4, 0x000B0007, 0x00010043, 4, Q}, {0xE06163C0, 11, 0x0001005B, NY_NO_FORMAT, S},
        {0xE0616983, 0, 0x00010049, NY_NO_FORMAT, S}, {0xE0616983, 11, 0x0001005B, NY_NO_FORMAT, S},
        {0xE0616983, 0x000B0000, 0x0001005B, NY_NO_FORMAT, S},
        {0xE0603015, 12, 0x0021012C, NY_NO_FORMAT, S}, {0xE0603015, 0, 0x00010059, NY_NO_FORMAT, S},
        {0xE0616FFE, 0, 0x00010047, NY_NO_FORMAT, S}, {0, 1, 0x0001001D, NY_NO_FORMAT, S},
        {0, 2, 0x0001001E, NY_NO_FORMAT, S}, {0, 3, 0x0001001F, NY_NO_FORMAT, S},
        {0, 4, 0x00010020, NY_NO_FORMAT, S}, {0, 5, 0x00010022, NY_NO_FORMAT, S},
        {0, 6, 0x00010021, NY_NO_FORMAT, S}, {0, 9, 0x00010053, NY_NO_FORMAT, S},
        {0, 10, 0x00010057, NY_NO_FORMAT, S}, {0, 11, 0x00010055, NY_NO_FORMAT, S},
        {0, 12, 0x0021012E, NY_NO_FORMAT, S}, {0, 0, 0x0001004C, NY_NO_FORMAT, S},
        {0, 7, 0x0001004C, NY_NO_FORMAT, S}, {0, 8, 0x0001004C, NY_NO_FORMAT, S},
        {0, 13, 0x0001004C, NY_NO_FORMAT, S}, {0xE0600000, 0, 0x00010048, 0xE0600000, S},
        {0xE0600001, 0, 0x00010023, NY_NO_FORMAT, S}, {0xE0600008, 0, 0x0001002B, NY_NO_FORMAT, S},
        {0xE0601004, 0, 0x00010029, NY_NO_FORMAT, S}, {0xE0601008, 0, 0x00010033, NY_NO_FORMAT, S},
        {0xE0602002, 0, 0x00010027, NY_NO_FORMAT, S}, {0xE0603007, 0, 0x0001002A, NY_NO_FORMAT, S},
        {0xE060300A, 0, 0x00010039, NY_NO_FORMAT, S}, {0xE0603103, 0, 0x0001003D, NY_NO_FORMAT, S},
        {0xE0603109, 0, 0x00010041, NY_NO_FORMAT, S}, {0xE0606000, 0, 0x00010046, NY_NO_FORMAT, S},
        {0xE0616FF2, 0, 0x0001002D, NY_NO_FORMAT, S}, {0xE061FFFF, 0, 0x00010045, NY_NO_FORMAT, S},
        {0x60606001, 0, 0x00210051, NY_NO_FORMAT, S}, {0x60606002, 0, 0x00010022, NY_NO_FORMAT, Q},
        {0xE0609999, 0, 0x00010048, 0xE0600000 + 0x9999, S},
        {0xE0603101, 0, 0x00010048, 0xE0603101, S}, {0xE0603006, 3, 0x00010048, 0xE0603006, S},
        {0x12345678, 0, 0x00010048, 0x12345678, S},
    };
    // clang-format on
    for (const BlkMessageCase& c : aCases) {
        uint32_t u4Mode = 99;
        std::string strText = Parse(c.u4MsgId, c.u4Param, &u4Mode);
        EXPECT_EQ(Expected(c.u4TextId, c.u4FormatArg), strText)
            << std::hex << c.u4MsgId << "/" << c.u4Param;
        EXPECT_EQ(c.u4ButtonMode, u4Mode) << std::hex << c.u4MsgId << "/" << c.u4Param;
    }
    EXPECT_EQ(std::string("操作成功！").substr(0, 7), Parse(0, 7, nullptr, 8))
        << "cut to the buffer";
}

namespace {

constexpr unsigned int NY_CLOSE = 1;  // the window manager's close instead of a button

class GUImessageTest : public CDialogTest {
protected:
    void OpenMessage(uint32_t u4MsgId, uint32_t u4Param) {
        Request(UI_CMD_MESSAGE, u4MsgId, u4Param, {{UI_OFS_MESSAGE_CHOICE, 0x5A5A5A5A}});
        Open<GUImessage>(NY_TXT_TITLE);
    }
    // Clicks at a point near the window's top edge, for the focus.
    void ClickForFocusAt(int iX, int iDy) {
        int iLeft = 0, iTop = 0, iWidth = 0, iHeight = 0;
        ASSERT_TRUE(NyTestWindowGeometry(m_strWindow, &iLeft, &iTop, &iWidth, &iHeight));
        NyTestClickAt(iX < 0 ? iLeft + iWidth / 2 : iX, iTop + iDy);
        ASSERT_TRUE(NyTestWaitFocused(m_strWindow, NY_GUI_TEST_WAIT_MS));
    }
    std::vector<std::string> ShowingButtons() {
        std::vector<std::string> v;
        for (const BlkTestAccessibleTag& blk :
             NyTestShowingWithRole(NyGuiTestTree(), "push button")) {
            v.push_back(blk.strName);
        }
        return v;
    }
};

}  // namespace

// Each message on screen with its buttons, and what the pressed button answers (no button:
// stopped; a question closed by the window manager is cancelled, its choice untouched).
TEST_F(GUImessageTest, EachMessageShowsItsButtonsAndAnswersThePressedOne) {
    const uint32_t NY_ANY = 0xFFFFFFFF;
    const struct {
        uint32_t u4MsgId, u4Param;
        std::string strText;
        bool bQuestion;
        unsigned int u4Press;
        uint32_t u4Res, u4Choice;
    } aCases[] = {
        {0xE06163C0, 11, "您的指纹已锁定，请先进行解锁！", false, 0, UI_RESULT_CANCEL, NY_ANY},
        {0xE06163CF, 0x000B0002, "您的指纹已连续 2 次验证失败，请核对。是否继续重试？", true,
         NY_TXT_NO, UI_RESULT_CANCEL, NY_MSG_CHOICE_NO},
        {0xE0609999, 0, "未知错误，错误码0xe0609999！", false, NY_TXT_OK, UI_RESULT_OK, NY_ANY},
        {0xE06163CF, 1, Parse(0xE06163CF, 1), true, NY_TXT_YES, UI_RESULT_OK, NY_MSG_CHOICE_YES},
        {0x60606002, 0, Parse(0x60606002, 0), true, NY_CLOSE, UI_RESULT_CANCEL, 0x5A5A5A5A},
    };
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.strText);
        OpenMessage(c.u4MsgId, c.u4Param);
        EXPECT_TRUE(NyGuiTestWaitFor("label", c.strText));
        if (c.bQuestion) {
            EXPECT_EQ(
                (std::vector<std::string>{NyGuiTestText(NY_TXT_YES), NyGuiTestText(NY_TXT_NO)}),
                ShowingButtons());
        }
        if (c.u4Press == 0) {
            m_pDialog->stop();
        } else if (c.u4Press == NY_CLOSE) {
            ClickForFocusAt(-1, 5);  // into the text area: focus, no button
            EXPECT_TRUE(NyTestCloseWindow("^" + m_strTitle + "$", NY_GUI_TEST_WAIT_MS));
        } else {
            ClickButton(c.u4Press);
        }
        tagBlkUiParam blk = Finish();
        EXPECT_EQ(c.u4Res, blk.enRes);
        if (c.u4Choice != NY_ANY) {
            EXPECT_EQ(c.u4Choice, NyUiParamGetU4(&blk, UI_OFS_MESSAGE_CHOICE));
        }
    }
}

TEST_F(GUImessageTest, LockedNoticeHasOneButtonAndNoCloseButton) {
    OpenMessage(0xE06163C0, 0);
    EXPECT_TRUE(NyGuiTestWaitFor("label", "您的UKey密码已锁定，请前往柜面解锁！"));
    EXPECT_EQ(std::vector<std::string>{NyGuiTestText(NY_TXT_OK)}, ShowingButtons());
    // Motif hints: the functions word allows moving only (MWM_FUNC_MOVE = 4), no close.
    EXPECT_EQ(0u, NyTestWindowProperty(m_strWindow, "_MOTIF_WM_HINTS").find("0x1, 0x4,"));
    BlkTestAccessibleTag ok;
    ASSERT_TRUE(NyGuiTestWaitFor("push button", NyGuiTestText(NY_TXT_OK), &ok));
    ClickForFocusAt(ok.CentreX(), 10);
    NyTestKey("alt+F4");  // the window manager's close does nothing
    usleep(500 * 1000);
    EXPECT_EQ(0u, m_pDialog->IsFinished());
    NyGuiTestClick(ok);
    tagBlkUiParam blk = Finish();
    EXPECT_EQ(UI_RESULT_OK, blk.enRes);
    EXPECT_EQ(NY_MSG_CHOICE_NONE, NyUiParamGetU4(&blk, UI_OFS_MESSAGE_CHOICE));
}
