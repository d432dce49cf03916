// The new-PIN dialog on screen: only a mismatch or an empty PIN is refused, weak PINs pass
// whatever the policy settings, and its entries admit the wider character set.
#include <gtest/gtest.h>

#include "CPinValidater.h"
#include "NyPinDialogFixture.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIgetpinconfirm.h"

namespace {

constexpr unsigned int NY_TXT_TITLE = 0x21007A;
constexpr unsigned int NY_TXT_TITLE_KIND2 = 0x210106;
constexpr unsigned int NY_TXT_PIN = 0x210082;
constexpr unsigned int NY_TXT_CONFIRM = 0x210084;
constexpr unsigned int NY_MSG_SAME_AS_OLD = 0x210092;
constexpr unsigned int NY_MSG_MISMATCH = 0x210093;

class GUIgetpinconfirmTest : public CPinDialogTest {
protected:
    void OpenNewPin(uint32_t u4Min, uint32_t u4Kind = 0) {
        m_req = NyGuiTestRequest(UI_CMD_GET_PIN_CONFIRM, u4Min, 16);
        NyUiParamSetU4(&m_req, UI_OFS_VERIFY_PIN_KIND, u4Kind);
        FillSentinel(&m_req, UI_OFS_VERIFY_PIN, UI_OFS_VERIFY_PIN_LEN);
        Open(new GUIgetpinconfirm(&m_req, Config()),
             u4Kind == 2 ? NY_TXT_TITLE_KIND2 : NY_TXT_TITLE);
    }
    void ExpectPin(const tagBlkUiParam& blk, const std::string& strPin) {
        EXPECT_EQ(UI_RESULT_OK, blk.enRes);
        EXPECT_EQ(strPin, Field(blk, UI_OFS_VERIFY_PIN, NY_UI_PIN_FIELD_SIZE));
        EXPECT_EQ(strPin.size(), NyUiParamGetU4(&blk, UI_OFS_VERIFY_PIN_LEN));
    }

    tagBlkUiParam m_req;
};

}  // namespace

TEST_F(GUIgetpinconfirmTest, MismatchIsRefusedAndAWeakPinPassesWhateverThePolicy) {
    std::vector<uint8_t> vStrict = CNyTestConfig::With(NY_CFG_PIN_ALLOW_WEAK, 0);
    UseConfig(NyTestCfgImageWithNumber(vStrict.data(), uint32_t(vStrict.size()),
                                       NY_CFG_PIN_ALLOW_SINGLE_CLASS, 0));
    OpenNewPin(6);
    EXPECT_FALSE(OkSensitive());
    TypeInto(NY_TXT_PIN, "q1w2e3");
    TypeInto(NY_TXT_CONFIRM, "q1w2e4");
    NyTestKey("Return");
    EXPECT_TRUE(WaitLabel(NyGuiTestText(NY_MSG_MISMATCH)));
    EXPECT_TRUE(WaitNoLabel(Counter(6))) << "both entries emptied";
    EXPECT_TRUE(Entry(NY_TXT_PIN).HasState("focused"));
    Shot("getpinconfirm-mismatch");
    NyTestType("111111");
    TypeInto(NY_TXT_CONFIRM, "111111");
    NyTestKey("Return");
    ExpectPin(Finish(), "111111");
}

TEST_F(GUIgetpinconfirmTest, EmptyPinWithMinimumZeroIsRefusedAsEqualToNoPin) {
    OpenNewPin(0);
    EXPECT_TRUE(OkSensitive());
    NyGuiTestClick(Entry(NY_TXT_PIN));
    NyTestKey("Return");
    EXPECT_TRUE(WaitLabel(NyGuiTestText(NY_MSG_SAME_AS_OLD)));
    EXPECT_EQ(0u, m_pDialog->IsFinished());
    m_pDialog->stop();
    tagBlkUiParam blk = Finish();
    EXPECT_EQ(UI_RESULT_CANCEL, blk.enRes);
    ExpectSentinel(blk, UI_OFS_VERIFY_PIN, UI_OFS_VERIFY_PIN_LEN);
}

TEST_F(GUIgetpinconfirmTest, SpecialCharactersAndInnerSpacesPassButNotTheQuestionMark) {
    OpenNewPin(4, 2);
    EXPECT_EQ("验证UKey管理员密码", m_strTitle);
    Shot("getpinconfirm-kind2");
    for (unsigned int u4Caption : {NY_TXT_PIN, NY_TXT_CONFIRM}) {
        // A space is refused at either end; moved inside the text it stays.
        TypeInto(u4Caption, " a?b#c~ ");
        NyTestKey("Left");
        NyTestType(" ");
    }
    NyTestKey("Return");
    ExpectPin(Finish(), "ab#c ~");
}
