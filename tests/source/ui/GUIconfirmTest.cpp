// The on-device confirmation dialog on screen: its message per kind, the countdown, updates from
// the client, and how it may (or may not) be closed.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "NyDialogFixture.h"
#include "NyGuiTestWidgets.h"
#include "runtime/NyResult.h"
#include "support/NyTestLogCapture.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIFactory.h"
#include "ui/GUIconfirm.h"
#include "ui/GUIconfirmFp.h"
#include "ui/GUIconfirmText.h"
#include "uiblock/NyUiConfirmParam.h"

namespace {

constexpr unsigned int NY_TXT_TITLE = 0x21006C;
constexpr unsigned int NY_TXT_REMAIN = 0x210077;
constexpr unsigned int NY_TXT_LIFT_FINGER = 0x210125;
constexpr unsigned int NY_TXT_INVALID_DATA = 0x210124;
constexpr unsigned int NY_TXT_FP_VERIFY_FAILED = 0x10056;

std::string Formatted(unsigned int u4TextId, uint32_t u4Value) {
    char szText[NY_GUI_LONG_TEXT_SIZE];
    snprintf(szText, sizeof(szText), NyGuiTestText(u4TextId).c_str(), u4Value);
    return szText;
}

std::string Remain(uint32_t u4Seconds) {
    return Formatted(NY_TXT_REMAIN, u4Seconds);
}

class GUIconfirmTest : public CDialogTest {
protected:
    void OpenConfirm(const tagBlkUiParam& req) {
        m_req = req;
        Open<GUIconfirm>(NY_TXT_TITLE);
    }
    static std::string Tips() { return NyGuiTestLabelText("confirm_tips"); }
    static std::string Countdown() { return NyGuiTestLabelText("confirm_remaincounts"); }
    // Waits until the countdown shows u4Seconds; the time that took, or -1 ms when it did not.
    static std::chrono::milliseconds WaitCountdown(uint32_t u4Seconds, unsigned int u4TimeoutMs) {
        auto start = std::chrono::steady_clock::now();
        if (!NyTestWaitUntil([&] { return Countdown() == Remain(u4Seconds); }, u4TimeoutMs)) {
            return std::chrono::milliseconds(-1);
        }
        return std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now() - start);
    }
};

}  // namespace

// What each kind says, chosen without a display ("" for a kind without a message); the text an
// update picks by its stage, then by its whole failure code; the first count of a countdown.
// The confirm command opens the fingerprint dialog for kinds 15 and 16 only.
TEST_F(GUIconfirmTest, KindsAndUpdatesSelectTheirMessages) {
    const std::string strVerify = NyGuiTestText(0x210122);
    const struct {
        uint32_t u4Kind, u4Detail, u4Attempts;
        std::string strExpected;
        // clang-format off
    } aCases[] = {
        {1, 7, 0, NyGuiTestText(0x210070)}, {2, 7, 0, NyGuiTestText(0x210072)},
        {3, 7, 0, "验证密码确认，目前剩余7次尝试次数。"}, {4, 7, 0, Formatted(0x21006D, 7)},
        {5, 7, 0, NyGuiTestText(0x210073)}, {6, 7, 0, Formatted(0x210078, 7)},
        {7, 7, 0, NyGuiTestText(0x210074)}, {8, 2, 0, Formatted(0x10044, 2)},
        {9, 7, 0, NyGuiTestText(0x210075)}, {10, 7, 0, NyGuiTestText(0x210076)},
        {11, 7, 0, Formatted(0x21006E, 7)}, {12, 7, 0, "操作已在UKey上取消！"},
        {15, 0, 0, NyGuiTestText(0x210121)}, {15, 0x12, 0, NyGuiTestText(0x210121)},
        {15, 0xEA, 0, NyGuiTestText(0x210123)}, {15, 0x99EB, 0, NyGuiTestText(0x210124)},
        {15, 0xEE, 0, NyGuiTestText(NY_TXT_LIFT_FINGER)}, {15, 0xEF, 0, NyGuiTestText(0x210126)},
        {15, UI_FP_VERIFY_FAILED, 0, NyGuiTestText(0x210121)}, {16, 0xEE, 0, strVerify},
        {16, 0, 1, "剩余尝试次数:1\n" + strVerify}, {16, 0, 2, "剩余尝试次数:2\n" + strVerify},
        {16, 0, 3, strVerify}, {0, 7, 0, ""}, {13, 7, 0, ""}, {14, 7, 0, ""}, {17, 7, 0, ""},
        {0xFFFFFFFF, 7, 0, ""},
    };
    // clang-format on
    for (const auto& test : aCases) {
        tagBlkUiParam req =
            NyConfirmTestRequest(test.u4Kind, 30, 1, test.u4Detail, test.u4Attempts);
        GUIconfirm dlg(&req, Config());
        char szText[NY_GUI_LONG_TEXT_SIZE] = "unset";
        bool bHas = dlg.SelectMessage(szText, sizeof(szText));
        SCOPED_TRACE("kind " + std::to_string(test.u4Kind) + " detail " +
                     std::to_string(test.u4Detail));
        EXPECT_EQ(!test.strExpected.empty(), bHas);
        EXPECT_EQ(test.strExpected, bHas ? szText : "");
        bool bFp = test.u4Kind == 15 || test.u4Kind == 16;
        std::unique_ptr<GUIBase> pDialog(
            CreateDialogForCommand(UI_CMD_CONFIRM, test.u4Kind, &req, Config()));
        EXPECT_EQ(bFp, dynamic_cast<GUIconfirmFp*>(pDialog.get()) != nullptr);
        EXPECT_EQ(!bFp, dynamic_cast<GUIconfirm*>(pDialog.get()) != nullptr);
    }
    const struct {
        uint32_t u4Detail;
        unsigned int u4TextId;  // 0: the message stays
        // clang-format off
    } aUpdates[] = {
        {0xEA, 0x210123}, {0xEB, NY_TXT_INVALID_DATA}, {0xEE, NY_TXT_LIFT_FINGER}, {0xEF, 0x210126},
        {0xFFFFFFEE, NY_TXT_LIFT_FINGER}, {UI_FP_VERIFY_FAILED, NY_TXT_FP_VERIFY_FAILED},
        {0xE06163CE, 0}, {0xCF, 0}, {0, 0}, {0xED, 0},
    };
    // clang-format on
    for (const auto& test : aUpdates) {
        EXPECT_EQ(test.u4TextId, NyConfirmUpdateTextId(test.u4Detail)) << std::hex << test.u4Detail;
    }
    EXPECT_EQ(29u, NyConfirmFirstCount(30));
    EXPECT_EQ(0u, NyConfirmFirstCount(1));
    EXPECT_EQ(0u, NyConfirmFirstCount(0));  // no wrap-around to four billion seconds
    EXPECT_TRUE(NyConfirmHasCountdown(1) && NyConfirmHasCountdown(0x7FFFFFFF));
    EXPECT_FALSE(NyConfirmHasCountdown(0) || NyConfirmHasCountdown(0xFFFFFFFF));
}

// The message shown is the one the kind selects.
TEST_F(GUIconfirmTest, ShownMessageIsTheKindsOwn) {
    for (uint32_t u4Kind : {1u, 6u, 0u, 4u}) {
        SCOPED_TRACE(u4Kind);
        OpenConfirm(NyConfirmTestRequest(u4Kind, 30));
        tagBlkUiParam req = m_req;
        char szExpected[NY_GUI_LONG_TEXT_SIZE] = "";
        GUIconfirm(&req, Config()).SelectMessage(szExpected, sizeof(szExpected));
        EXPECT_EQ(szExpected, Tips());
        StopAndFinish();
    }
}

// The countdown starts one below the time-out, steps every second, and stays at zero with the
// window open; an update without a time-out to count down empties it.
TEST_F(GUIconfirmTest, CountdownStepsEverySecondAndStaysAtZeroWithTheWindowOpen) {
    OpenConfirm(NyConfirmTestRequest(1, 3));
    EXPECT_EQ("剩余：2 秒", Countdown());
    std::chrono::milliseconds toNext = WaitCountdown(1, 3000);
    ASSERT_GE(toNext.count(), 0) << "1 never shown";
    EXPECT_LE(toNext.count(), 1300);
    std::chrono::milliseconds step = WaitCountdown(0, 3000);
    EXPECT_GE(step.count(), 700);
    EXPECT_LE(step.count(), 1500);
    usleep(2500 * 1000);
    EXPECT_EQ(Remain(0), Countdown());
    EXPECT_EQ(0u, m_pDialog->IsFinished());
    EXPECT_EQ(1u, NyTestFindWindows("^" + m_strTitle + "$").size());
    EXPECT_EQ(0u, Update(NyConfirmTestUpdate(UI_CTT_FINGERPRINT_VERIFY, 0x55, 0xFFFFFFFF)));
    EXPECT_TRUE(NyTestWaitUntil([] { return Countdown().empty(); }, 3000));
    EXPECT_EQ(UI_RESULT_CANCEL, StopAndFinish().enRes);
}

// An update of another kind changes nothing shown (the count goes on from the request's
// time-out); fingerprint updates restart the count and follow the detail value.
TEST_F(GUIconfirmTest, UpdatesOfTheFingerprintKindsAloneChangeWhatIsShown) {
    OpenConfirm(NyConfirmTestRequest(2, 30));
    const std::string strFirst = Tips();
    ASSERT_FALSE(strFirst.empty());
    EXPECT_EQ(0u, Update(NyConfirmTestUpdate(3, 0xEE, 90)));
    EXPECT_GE(WaitCountdown(27, 3000).count(), 0);
    EXPECT_EQ(strFirst, Tips());
    tagBlkUiParam blk = NyGuiTestResponse(m_pDialog.get());
    EXPECT_EQ(3u, NyUiParamGetU4(&blk, UI_OFS_CONFIRM_KIND));
    EXPECT_EQ(90u, NyUiParamGetU4(&blk, UI_OFS_CONFIRM_TIMEOUT));
    // A detail without a text of its own keeps the message, yet the count restarts.
    EXPECT_EQ(0u, Update(NyConfirmTestUpdate(UI_CTT_FINGERPRINT_VERIFY, 0x55, 40)));
    EXPECT_EQ(strFirst, Tips());
    EXPECT_GE(WaitCountdown(40, 2000).count(), 0) << "the count did not restart at 40";
    EXPECT_EQ(0u, Update(NyConfirmTestUpdate(UI_CTT_FINGERPRINT_VERIFY, UI_FP_VERIFY_FAILED, 40)));
    EXPECT_EQ(NyGuiTestText(NY_TXT_FP_VERIFY_FAILED), Tips());
    EXPECT_EQ(0u, Update(NyConfirmTestUpdate(UI_CTT_FINGERPRINT_ENROL, 0x000000EE, 60)));
    EXPECT_EQ("请抬起手指！", Tips());
    ASSERT_GE(WaitCountdown(60, 2000).count(), 0) << "the count did not restart at 60";
    EXPECT_GE(WaitCountdown(59, 2000).count(), 0);
    blk = StopAndFinish();
    // The update's block replaced the request, but the answer is still the dialog's own.
    EXPECT_EQ(UI_RESULT_CANCEL, blk.enRes);
    EXPECT_EQ(UI_CMD_UPDATE, blk.enUiCmdType);
    EXPECT_EQ(UI_CTT_FINGERPRINT_ENROL, NyUiParamGetU4(&blk, UI_OFS_CONFIRM_KIND));
    EXPECT_EQ(0xEEu, NyUiParamGetU4(&blk, UI_OFS_CONFIRM_DETAIL));
}

// Not closable: no close function (Motif hints: flags, then functions: MWM_FUNC_MOVE 4 alone)
// and the close key does nothing; only stop() ends it, in the logged order.
TEST_F(GUIconfirmTest, AWindowThatIsNotClosableEndsOnlyWithStop) {
    CNyTestLogCapture log;
    OpenConfirm(NyConfirmTestRequest(1, 30, 0));
    EXPECT_EQ(0u, NyTestWindowProperty(m_strWindow, "_MOTIF_WM_HINTS").find("0x1, 0x4,"));
    NyTestKey("alt+F4");
    usleep(500 * 1000);
    EXPECT_EQ(0u, m_pDialog->IsFinished());
    EXPECT_EQ(UI_RESULT_CANCEL, StopAndFinish().enRes);
    std::vector<std::string> vSeen;
    for (const std::string& str : log.Messages()) {
        if (str.compare(0, 18, "GUIconfirm::stop()") == 0 ||
            str.compare(0, 27, "GUIconfirm::destroy_callbac") == 0) {
            vSeen.push_back(str);
        }
    }
    EXPECT_EQ((std::vector<std::string>{
                  "GUIconfirm::stop() enter", "GUIconfirm::stop() start destory",
                  "GUIconfirm::destroy_callback enter", "GUIconfirm::destroy_callback leave",
                  "GUIconfirm::stop() start end"}),
              vSeen);
}

TEST_F(GUIconfirmTest, UpdateCopiesAtMostOneBlockAndRefusesNoData) {
    tagBlkUiParam req = NyConfirmTestRequest(4, 30, 1, 0x11);
    GUIconfirm dlg(&req, Config());
    EXPECT_EQ(NY_ERR_BAD_ARGUMENT, dlg.update(nullptr, sizeof(req)));
    // A short update replaces only the bytes it carries.
    tagBlkUiParam upd = NyConfirmTestUpdate(5, 0x22, 60);
    EXPECT_EQ(0u, dlg.update(reinterpret_cast<const unsigned char*>(&upd), UI_OFS_CONFIRM_DETAIL));
    tagBlkUiParam blk = NyGuiTestResponse(&dlg);
    EXPECT_EQ(UI_RESULT_CANCEL, blk.enRes);
    EXPECT_EQ(5u, NyUiParamGetU4(&blk, UI_OFS_CONFIRM_KIND));
    EXPECT_EQ(0x11u, NyUiParamGetU4(&blk, UI_OFS_CONFIRM_DETAIL));
    EXPECT_EQ(30u, NyUiParamGetU4(&blk, UI_OFS_CONFIRM_TIMEOUT));
    // A longer one is cut at the block's size.
    std::vector<unsigned char> vLong(2 * sizeof(upd), 0x5A);
    memcpy(vLong.data(), &upd, sizeof(upd));
    EXPECT_EQ(0u, dlg.update(vLong.data(), static_cast<unsigned int>(vLong.size())));
    blk = NyGuiTestResponse(&dlg);
    EXPECT_EQ(0x22u, NyUiParamGetU4(&blk, UI_OFS_CONFIRM_DETAIL));
    EXPECT_EQ(60u, NyUiParamGetU4(&blk, UI_OFS_CONFIRM_TIMEOUT));
}
