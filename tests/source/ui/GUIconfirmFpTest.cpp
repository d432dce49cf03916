// The fingerprint dialog on screen: its texts through a whole enrolment, the cancel image, and
// stop() and update() arriving from another thread.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <future>
#include <string>

#include "NyDialogFixture.h"
#include "NyGuiTestWidgets.h"
#include "runtime/NyResult.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIconfirmFp.h"
#include "uiblock/NyUiConfirmParam.h"

namespace {

std::string Tip(const std::string& strText) {
    return "<span color='DarkGoldenrod1'>" + strText + "</span>";
}

const std::string NY_MARKUP_INITIAL = Tip("请将指纹按压到指纹区域...");
const std::string NY_MARKUP_CHANGE_FINGER = Tip("请更换手指再次录入指纹！");
const std::string NY_MARKUP_INVALID = Tip("指纹数据无效，请重新录入！");
const std::string NY_MARKUP_LIFT = Tip("请抬起手指！");
const std::string NY_MARKUP_PLACE = Tip("请将手指放在指纹识别区，进行录入指纹！");

void CountLabelSet(GObject* /*pLabel*/, GParamSpec* /*pSpec*/, gpointer pvCount) {
    ++*static_cast<std::atomic<int>*>(pvCount);
}

class GUIconfirmFpTest : public CDialogTest {
protected:
    void OpenFp(uint32_t u4Kind) {
        m_req = NyConfirmTestRequest(u4Kind, 30);
        Open(new GUIconfirmFp(&m_req, Config()),
             u4Kind == UI_CTT_FINGERPRINT_ENROL ? "注册指纹" : "验证指纹");
    }
    unsigned int Update(uint32_t u4Kind, uint32_t u4Stage) {
        return CDialogTest::Update(NyConfirmTestUpdate(u4Kind, u4Stage));
    }
    static bool WaitTips(const std::string& strMarkup) {
        return NyTestWaitUntil([&] { return NyGuiTestLabelMarkup("stc_tips") == strMarkup; },
                               NY_GUI_TEST_WAIT_MS);
    }
};

}  // namespace

// The stage is the low byte (the walk and the failure test below show the stages on screen);
// other codes leave the tips as they are.
TEST_F(GUIconfirmFpTest, StageCodesSelectTheirTips) {
    const char* szLift = GUIconfirmFp::StageMarkup(0x123456EE);
    EXPECT_EQ(NY_MARKUP_LIFT, szLift != nullptr ? szLift : "");
    for (uint32_t u4Stage : {0xE06163CEu, 0xCFu, 0u, 0xECu}) {
        EXPECT_EQ(nullptr, GUIconfirmFp::StageMarkup(u4Stage)) << std::hex << u4Stage;
    }
}

// One enrolment window through its stages, a stage repeated or of another kind refreshing
// nothing, and the cancel image that cancels on a click.
TEST_F(GUIconfirmFpTest, EnrolmentWalksThroughItsStagesUntilTheCancelImageIsClicked) {
    OpenFp(UI_CTT_FINGERPRINT_ENROL);
    ASSERT_NE(0u, NyGuiTestOnLabelSet("stc_tips", G_CALLBACK(CountLabelSet), &m_nSignals));
    EXPECT_EQ("<span color='white'>注册指纹</span>", NyGuiTestLabelMarkup("stc_title"));
    EXPECT_EQ(NY_MARKUP_INITIAL, NyGuiTestLabelMarkup("stc_tips"));
    // Stage 0 is where the dialog starts: nothing to refresh.
    EXPECT_EQ(0u, Update(UI_CTT_FINGERPRINT_ENROL, 0));
    const std::pair<uint32_t, const std::string*> aStages[] = {
        {0xEF, &NY_MARKUP_PLACE},
        {0xEE, &NY_MARKUP_LIFT},
        {0xEB, &NY_MARKUP_INVALID},
        {0xEA, &NY_MARKUP_CHANGE_FINGER},
    };
    for (const auto& stage : aStages) {
        EXPECT_EQ(0u, Update(UI_CTT_FINGERPRINT_ENROL, stage.first));
        EXPECT_TRUE(WaitTips(*stage.second)) << std::hex << stage.first;
    }
    EXPECT_EQ("请更换手指再次录入指纹！", NyGuiTestLabelText("stc_tips"));
    EXPECT_EQ(0u, Update(UI_CTT_FINGERPRINT_ENROL, 0xEA));
    EXPECT_EQ(0u, Update(1, 0xEE));  // another kind
    usleep(400 * 1000);              // four timer periods
    EXPECT_EQ(4, m_nSignals.load());
    EXPECT_EQ(NY_MARKUP_CHANGE_FINGER, NyGuiTestLabelMarkup("stc_tips"));

    int iX = 0, iY = 0;
    ASSERT_TRUE(NyGuiTestWidgetCentre("eventbox_cancle", &iX, &iY));
    NyTestClickAt(iX, iY);
    tagBlkUiParam blk = Finish();
    // The update's block replaced the request all the same; the answer is still the dialog's.
    EXPECT_EQ(UI_RESULT_CANCEL, blk.enRes);
    EXPECT_EQ(1u, NyUiParamGetU4(&blk, UI_OFS_CONFIRM_KIND));
    EXPECT_EQ(0xEEu, NyUiParamGetU4(&blk, UI_OFS_CONFIRM_DETAIL));
}

TEST_F(GUIconfirmFpTest, VerificationFailureThenStopClosesWithinAboutOneTimerPeriod) {
    OpenFp(UI_CTT_FINGERPRINT_VERIFY);
    EXPECT_EQ("<span color='white'>验证指纹</span>", NyGuiTestLabelMarkup("stc_title"));
    EXPECT_EQ(0u, Update(UI_CTT_FINGERPRINT_VERIFY, UI_FP_VERIFY_FAILED));
    EXPECT_TRUE(WaitTips(Tip("验证指纹失败！")));
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(0u, m_pDialog->stop());
    ASSERT_TRUE(m_pRun->Wait(NY_GUI_TEST_WAIT_MS));
    auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start);
    // One 100 ms period, with room for a loaded machine.
    EXPECT_LE(elapsed.count(), 600);
    EXPECT_EQ(UI_RESULT_CANCEL, Finish().enRes);
}

TEST_F(GUIconfirmFpTest, StopAndUpdateNeverWaitForTheGuiLock) {
    OpenFp(UI_CTT_FINGERPRINT_ENROL);
    gdk_threads_enter();  // as if GTK were busy on the dialog's thread
    auto done = std::async(std::launch::async, [this] {
        return Update(UI_CTT_FINGERPRINT_ENROL, 0xEE) == 0 && m_pDialog->stop() == 0;
    });
    bool bReturned = done.wait_for(std::chrono::seconds(2)) == std::future_status::ready;
    gdk_threads_leave();
    EXPECT_TRUE(bReturned) << "update() or stop() waited for the GDK lock";
    EXPECT_TRUE(done.get());
    EXPECT_EQ(UI_RESULT_CANCEL, Finish().enRes);
}
