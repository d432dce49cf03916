// The new-PIN dialog on screen: only a mismatch or an empty PIN is refused, weak PINs pass
// whatever the policy settings, and its entries admit the wider character set.
#include <gtest/gtest.h>

#include "CPinValidater.h"
#include "NyDialogFixture.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIgetpinconfirm.h"

namespace {

constexpr unsigned int NY_TXT_PIN = 0x210082;
constexpr unsigned int NY_TXT_CONFIRM = 0x210084;

class GUIgetpinconfirmTest : public CDialogTest {
protected:
    void OpenNewPin(uint32_t u4Min, uint32_t u4Kind = 0) {
        Request(UI_CMD_GET_PIN_CONFIRM, u4Min, 16, {{UI_OFS_VERIFY_PIN_KIND, u4Kind}});
        Open<GUIgetpinconfirm>(u4Kind == 2 ? 0x210106 : 0x21007A);
    }
};

}  // namespace

// Special characters and inner spaces go in, '?' and spaces at either end do not; a mismatch
// empties both entries and focuses the first.
TEST_F(GUIgetpinconfirmTest, MismatchIsRefusedAndSpecialCharactersAndInnerSpacesPass) {
    OpenNewPin(4, 2);
    EXPECT_EQ("验证UKey管理员密码", m_strTitle);
    EXPECT_FALSE(OkSensitive());
    TypeInto(NY_TXT_PIN, "q1w2e3");
    TypeInto(NY_TXT_CONFIRM, "q1w2e4");
    NyTestKey("Return");
    EXPECT_TRUE(WaitLabel(NyGuiTestText(0x210093)));
    EXPECT_TRUE(WaitNoLabel(Counter(6))) << "both entries emptied";
    EXPECT_TRUE(Entry(NY_TXT_PIN).HasState("focused"));
    for (unsigned int u4Caption : {NY_TXT_PIN, NY_TXT_CONFIRM}) {
        TypeInto(u4Caption, " a?b#c~ ");
        NyTestKey("Left");
        NyTestType(" ");
    }
    NyTestKey("Return");
    ExpectAnswer(Finish(), {"ab#c ~"});
}

// An empty PIN with a minimum of 0 is refused as equal to no PIN; a weak PIN passes whatever
// the policy settings say.
TEST_F(GUIgetpinconfirmTest, EmptyPinIsRefusedAndAWeakPinPassesWhateverThePolicy) {
    std::vector<uint8_t> vStrict = CNyTestConfig::With(NY_CFG_PIN_ALLOW_WEAK, 0);
    UseConfig(NyTestCfgImageWithNumber(vStrict.data(), uint32_t(vStrict.size()),
                                       NY_CFG_PIN_ALLOW_SINGLE_CLASS, 0));
    OpenNewPin(0);
    EXPECT_TRUE(OkSensitive());
    NyGuiTestClick(Entry(NY_TXT_PIN));
    NyTestKey("Return");
    EXPECT_TRUE(WaitLabel(NyGuiTestText(0x210092)));
    EXPECT_EQ(0u, m_pDialog->IsFinished());
    TypeInto(NY_TXT_PIN, "111111");
    TypeInto(NY_TXT_CONFIRM, "111111");
    NyTestKey("Return");
    ExpectAnswer(Finish(), {"111111"});
}
