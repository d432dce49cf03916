// The change-PIN dialog on screen: what it answers, and how the PIN policy settings decide
// which new PINs it refuses, with configurations built for each setting.
#include <gtest/gtest.h>

#include <vector>

#include "CPinValidater.h"
#include "NyDialogFixture.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIchangepin.h"

namespace {

constexpr unsigned int NY_TXT_TITLE = 0x21007C;
constexpr unsigned int NY_TXT_TITLE_KIND2 = 0x21007D;
constexpr unsigned int NY_TXT_OLD = 0x210081;
constexpr unsigned int NY_TXT_NEW = 0x210082;
constexpr unsigned int NY_TXT_CONFIRM = 0x210084;
constexpr unsigned int NY_MSG_MISMATCH = 0x210093;

class GUIchangepinTest : public CDialogTest {
protected:
    void OpenChange(uint32_t u4Cmd = UI_CMD_CHANGE_PIN, uint32_t u4Kind = 0) {
        Request(u4Cmd, u4Kind, 6, {{UI_OFS_CHANGE_MAX_LEN, 16}});
        Open<GUIchangepin>(u4Kind == 2 ? NY_TXT_TITLE_KIND2 : NY_TXT_TITLE);
    }
    void TypeAll(const std::string& strOld, const std::string& strNew,
                 const std::string& strConfirm) {
        TypeInto(NY_TXT_OLD, strOld);
        TypeInto(NY_TXT_NEW, strNew);
        TypeInto(NY_TXT_CONFIRM, strConfirm);
    }
};

}  // namespace

// OK waits for every entry to reach the minimum; a mismatch empties both new entries, keeps
// the old, focuses the new entry; then the PINs come back.
TEST_F(GUIchangepinTest, OkWaitsForEveryEntryAndAMismatchIsRetypedBeforeTheAnswer) {
    OpenChange();
    for (unsigned int u4Id : {0x21007Eu, NY_TXT_OLD, NY_TXT_NEW, NY_TXT_CONFIRM}) {
        EXPECT_TRUE(WaitLabel(NyGuiTestText(u4Id))) << std::hex << u4Id;
    }
    EXPECT_TRUE(NyGuiTestWaitFor("push button", NyGuiTestText(NY_TXT_CANCEL)));
    EXPECT_EQ("修改UKey用户密码", m_strTitle);
    EXPECT_FALSE(OkSensitive());
    TypeAll("abc1234", "q1w2e3r4", "q1w2e");
    for (unsigned int u4Count : {7, 8, 5}) {
        EXPECT_TRUE(WaitLabel(Counter(u4Count)));
    }
    EXPECT_FALSE(OkSensitive()) << "the confirmation is below the minimum";
    ExpectReturnRefused();
    NyTestType("3r5");
    EXPECT_TRUE(WaitNoLabel(Counter(5)));
    EXPECT_TRUE(WaitOkSensitive());
    NyTestKey("Return");
    EXPECT_TRUE(WaitLabel(NyGuiTestText(NY_MSG_MISMATCH)));
    EXPECT_TRUE(WaitNoLabel(Counter(8))) << "new and confirmation emptied";
    EXPECT_TRUE(WaitLabel(Counter(7))) << "old PIN kept";
    EXPECT_TRUE(Entry(NY_TXT_NEW).HasState("focused"));
    NyTestType("x9y8z7");  // goes to the new-PIN entry without a click
    EXPECT_TRUE(WaitLabel(Counter(6)));
    TypeInto(NY_TXT_CONFIRM, "x9y8z7");
    NyTestKey("Return");
    ExpectAnswer(Finish(), {"abc1234", "x9y8z7"});
}

// Which weak PINs pass depends on the two policy settings (missing ones read as 0 here); a new
// PIN equal to the old one never passes. A refusal keeps the dialog open and the fields as sent.
TEST_F(GUIchangepinTest, PolicySettingsDecideWhichWeakPinsPass) {
    const struct {
        std::vector<uint8_t> vImage;
        const char* szOld;
        const char* szNew;
        unsigned int u4RefusedWith;  // 0: accepted
    } aCases[] = {
        {CNyTestConfig::With(NY_CFG_PIN_ALLOW_WEAK, 0), "zz9x8y", "123456", 0x21008A},
        {CNyTestConfig::With(NY_CFG_PIN_ALLOW_WEAK, 1), "zz9x8y", "123456", 0},
        {CNyTestConfig::With(NY_CFG_PIN_ALLOW_WEAK, 1), "a1b2c3", "a1b2c3", 0x210092},
        {CNyTestConfig::Without(NY_CFG_PIN_ALLOW_WEAK), "zz9x8y", "a111111", 0x21008D},
        {CNyTestConfig::With(NY_CFG_PIN_ALLOW_WEAK, 1), "zz9x8y", "a111111", 0},
        {CNyTestConfig::With(NY_CFG_PIN_ALLOW_SINGLE_CLASS, 0), "zz9x8y", "qwerty", 0x210091},
    };
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.szNew);
        UseConfig(c.vImage);
        OpenChange();
        TypeAll(c.szOld, c.szNew, c.szNew);
        NyTestKey("Return");
        if (c.u4RefusedWith == 0) {
            ExpectAnswer(Finish(), {c.szOld, c.szNew});
            continue;
        }
        EXPECT_TRUE(WaitLabel(NyGuiTestText(c.u4RefusedWith))) << std::hex << c.u4RefusedWith;
        EXPECT_EQ(0u, m_pDialog->IsFinished());
        ExpectCancelledUntouched(StopAndFinish());
    }
}

TEST_F(GUIchangepinTest, CompulsoryChangeHasNoCancelAndCannotBeClosed) {
    OpenChange(UI_CMD_CHANGE_PIN_FORCED, 2);
    EXPECT_EQ("修改UKey管理员密码", m_strTitle);
    for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
        EXPECT_FALSE(blk.strRole == "push button" && blk.strName == NyGuiTestText(NY_TXT_CANCEL) &&
                     blk.HasState("showing"))
            << "a Cancel button is shown";
    }
    // Motif hints: flags, then functions: move (4) only, no close (32).
    EXPECT_EQ(0u, NyTestWindowProperty(m_strWindow, "_MOTIF_WM_HINTS").find("0x1, 0x4,"));
    // Some window managers keep a close button whatever the hints say; the close request is
    // then refused by the dialog itself.
    NyGuiTestClick(Entry(NY_TXT_OLD));
    NyTestKey("alt+F4 Escape");
    usleep(500 * 1000);
    EXPECT_EQ(0u, m_pDialog->IsFinished());
    EXPECT_FALSE(NyTestFindWindows("^" + m_strTitle + "$").empty());
    ExpectCancelledUntouched(StopAndFinish());
}
