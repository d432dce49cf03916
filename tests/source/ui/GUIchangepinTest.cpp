// The change-PIN dialog on screen: what it answers, and how the PIN policy settings decide
// which new PINs it refuses, with configurations built for each setting.
#include <gtest/gtest.h>

#include <vector>

#include "CPinValidater.h"
#include "NyPinDialogFixture.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIchangepin.h"

namespace {

constexpr unsigned int NY_TXT_TITLE = 0x21007C;
constexpr unsigned int NY_TXT_TITLE_KIND2 = 0x21007D;
constexpr unsigned int NY_TXT_TIPS = 0x21007E;
constexpr unsigned int NY_TXT_OLD = 0x210081;
constexpr unsigned int NY_TXT_NEW = 0x210082;
constexpr unsigned int NY_TXT_CONFIRM = 0x210084;
constexpr unsigned int NY_TXT_OK = 0x210011;
constexpr unsigned int NY_TXT_CANCEL = 0x210012;
constexpr unsigned int NY_MSG_CONSECUTIVE = 0x21008A;
constexpr unsigned int NY_MSG_SAME_ADJACENT = 0x21008D;
constexpr unsigned int NY_MSG_SINGLE_CLASS = 0x210091;
constexpr unsigned int NY_MSG_SAME_AS_OLD = 0x210092;
constexpr unsigned int NY_MSG_MISMATCH = 0x210093;

class GUIchangepinTest : public CPinDialogTest {
protected:
    void OpenChange(uint32_t u4Cmd, uint32_t u4Kind, uint32_t u4Min, uint32_t u4Max) {
        m_req = NyGuiTestRequest(u4Cmd, u4Kind, u4Min);
        NyUiParamSetU4(&m_req, UI_OFS_CHANGE_MAX_LEN, u4Max);
        FillSentinel(&m_req, UI_OFS_CHANGE_OLD_PIN, UI_OFS_CHANGE_OLD_PIN_LEN);
        FillSentinel(&m_req, UI_OFS_CHANGE_NEW_PIN, UI_OFS_CHANGE_NEW_PIN_LEN);
        Open(new GUIchangepin(&m_req, Config()), u4Kind == 2 ? NY_TXT_TITLE_KIND2 : NY_TXT_TITLE);
    }
    void OpenChange(uint32_t u4Min = 6) { OpenChange(UI_CMD_CHANGE_PIN, 0, u4Min, 16); }
    void TypeAll(const std::string& strOld, const std::string& strNew,
                 const std::string& strConfirm) {
        TypeInto(NY_TXT_OLD, strOld);
        TypeInto(NY_TXT_NEW, strNew);
        TypeInto(NY_TXT_CONFIRM, strConfirm);
    }
    void ExpectAccepted(const tagBlkUiParam& blk, const std::string& strOld,
                        const std::string& strNew) {
        EXPECT_EQ(UI_RESULT_OK, blk.enRes);
        EXPECT_EQ(strOld, Field(blk, UI_OFS_CHANGE_OLD_PIN, NY_UI_PIN_FIELD_SIZE));
        EXPECT_EQ(strOld.size(), NyUiParamGetU4(&blk, UI_OFS_CHANGE_OLD_PIN_LEN));
        EXPECT_EQ(strNew, Field(blk, UI_OFS_CHANGE_NEW_PIN, NY_UI_PIN_FIELD_SIZE));
        EXPECT_EQ(strNew.size(), NyUiParamGetU4(&blk, UI_OFS_CHANGE_NEW_PIN_LEN));
    }
    // A refusal keeps the dialog open; stopping it then answers cancelled, fields untouched.
    void ExpectRefusedWith(unsigned int u4MessageId) {
        EXPECT_TRUE(WaitLabel(NyGuiTestText(u4MessageId))) << std::hex << u4MessageId;
        EXPECT_EQ(0u, m_pDialog->IsFinished());
        m_pDialog->stop();
        tagBlkUiParam blk = Finish();
        EXPECT_EQ(UI_RESULT_CANCEL, blk.enRes);
        ExpectSentinel(blk, UI_OFS_CHANGE_OLD_PIN, UI_OFS_CHANGE_OLD_PIN_LEN);
        ExpectSentinel(blk, UI_OFS_CHANGE_NEW_PIN, UI_OFS_CHANGE_NEW_PIN_LEN);
    }

    tagBlkUiParam m_req;
};

}  // namespace

TEST_F(GUIchangepinTest, OkWaitsForEveryEntryThenAnswersOldAndNewPinWithTheirLengths) {
    OpenChange();
    for (unsigned int u4Id : {NY_TXT_TIPS, NY_TXT_OLD, NY_TXT_NEW, NY_TXT_CONFIRM}) {
        EXPECT_TRUE(WaitLabel(NyGuiTestText(u4Id))) << std::hex << u4Id;
    }
    EXPECT_TRUE(NyGuiTestWaitFor("push button", NyGuiTestText(NY_TXT_CANCEL)));
    EXPECT_EQ("修改UKey用户密码", m_strTitle);
    EXPECT_FALSE(OkSensitive());
    Shot("changepin-empty");
    TypeAll("abc123", "q1w2e3r4", "q1w2e");
    EXPECT_TRUE(WaitLabel(Counter(8)));
    EXPECT_TRUE(WaitLabel(Counter(5)));
    EXPECT_TRUE(WaitLabel(Counter(6)));
    EXPECT_FALSE(OkSensitive()) << "the confirmation is below the minimum";
    NyTestKey("Return");
    usleep(300 * 1000);
    EXPECT_EQ(0u, m_pDialog->IsFinished());
    NyTestType("3r4");
    EXPECT_TRUE(WaitNoLabel(Counter(5)));
    EXPECT_TRUE(NyTestWaitUntil([this] { return OkSensitive(); }, NY_GUI_TEST_WAIT_MS));
    Shot("changepin-typed");
    NyTestKey("Return");
    ExpectAccepted(Finish(), "abc123", "q1w2e3r4");
}

TEST_F(GUIchangepinTest, MismatchEmptiesBothNewEntriesKeepsTheOldAndFocusesTheNewEntry) {
    OpenChange();
    TypeAll("abc1234", "q1w2e3", "q1w2e4");
    NyTestKey("Return");
    EXPECT_TRUE(WaitLabel(NyGuiTestText(NY_MSG_MISMATCH)));
    EXPECT_EQ("两次输入的新密码不一致，请重新输入！", NyGuiTestText(NY_MSG_MISMATCH));
    EXPECT_TRUE(WaitNoLabel(Counter(6))) << "new and confirmation emptied";
    EXPECT_TRUE(WaitLabel(Counter(7))) << "old PIN kept";
    EXPECT_TRUE(Entry(NY_TXT_NEW).HasState("focused"));
    Shot("changepin-mismatch");
    NyTestType("x9y8z7");  // goes to the new-PIN entry without a click
    EXPECT_TRUE(WaitLabel(Counter(6)));
    TypeInto(NY_TXT_CONFIRM, "x9y8z7");
    NyTestKey("Return");
    ExpectAccepted(Finish(), "abc1234", "x9y8z7");
}

// Which weak PINs pass depends on the two policy settings (missing ones read as 0 here); a new
// PIN equal to the old one never passes.
TEST_F(GUIchangepinTest, PolicySettingsDecideWhichWeakPinsPass) {
    const struct {
        const char* szCase;
        std::vector<uint8_t> vImage;
        const char* szOld;
        const char* szNew;
        unsigned int u4RefusedWith;  // 0: accepted
    } aCases[] = {
        {"weak forbidden", CNyTestConfig::With(NY_CFG_PIN_ALLOW_WEAK, 0), "zz9x8y", "123456",
         NY_MSG_CONSECUTIVE},
        {"weak allowed", CNyTestConfig::With(NY_CFG_PIN_ALLOW_WEAK, 1), "zz9x8y", "123456", 0},
        {"same as old", CNyTestConfig::With(NY_CFG_PIN_ALLOW_WEAK, 1), "a1b2c3", "a1b2c3",
         NY_MSG_SAME_AS_OLD},
        {"weak setting missing", CNyTestConfig::Without(NY_CFG_PIN_ALLOW_WEAK), "zz9x8y", "a111111",
         NY_MSG_SAME_ADJACENT},
        {"weak allowed, repeat", CNyTestConfig::With(NY_CFG_PIN_ALLOW_WEAK, 1), "zz9x8y", "a111111",
         0},
        {"single class forbidden", CNyTestConfig::With(NY_CFG_PIN_ALLOW_SINGLE_CLASS, 0), "zz9x8y",
         "qwerty", NY_MSG_SINGLE_CLASS},
    };
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.szCase);
        UseConfig(c.vImage);
        OpenChange();
        TypeAll(c.szOld, c.szNew, c.szNew);
        NyTestKey("Return");
        if (c.u4RefusedWith != 0) {
            ExpectRefusedWith(c.u4RefusedWith);
        } else {
            ExpectAccepted(Finish(), c.szOld, c.szNew);
        }
    }
}

TEST_F(GUIchangepinTest, CompulsoryChangeHasNoCancelAndCannotBeClosed) {
    OpenChange(UI_CMD_CHANGE_PIN_FORCED, 2, 6, 16);
    EXPECT_EQ("修改UKey管理员密码", m_strTitle);
    for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
        EXPECT_FALSE(blk.strRole == "push button" && blk.strName == NyGuiTestText(NY_TXT_CANCEL) &&
                     blk.HasState("showing"))
            << "a Cancel button is shown";
    }
    // Motif hints: flags, then functions: move (4) only, no close (32).
    EXPECT_EQ(0u, NyTestWindowProperty(m_strWindow, "_MOTIF_WM_HINTS").find("0x1, 0x4,"));
    Shot("changepin-compulsory");
    // Some window managers keep a close button whatever the hints say; the close request is
    // then refused by the dialog itself.
    NyGuiTestClick(Entry(NY_TXT_OLD));
    NyTestKey("alt+F4 Escape");
    usleep(500 * 1000);
    EXPECT_EQ(0u, m_pDialog->IsFinished());
    EXPECT_FALSE(NyTestFindWindows("^" + m_strTitle + "$").empty());
    TypeAll("abc123", "x9y8z7", "x9y8z7");
    ClickButton(NY_TXT_OK);
    ExpectAccepted(Finish(), "abc123", "x9y8z7");
}
