// The unblock dialog on screen, and what every PIN and label dialog answers when it ends
// without OK or before it is shown.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>

#include "NyPinDialogFixture.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIchangelabel.h"
#include "ui/GUIchangepin.h"
#include "ui/GUIgetpinconfirm.h"
#include "ui/GUIunblock.h"

namespace {

constexpr unsigned int NY_TXT_TITLE = 0x21007B;
constexpr unsigned int NY_TXT_TIPS = 0x21007E;
constexpr unsigned int NY_TXT_SO = 0x210080;
constexpr unsigned int NY_TXT_USER = 0x210083;
constexpr unsigned int NY_TXT_CANCEL = 0x210012;

class GUIunblockTest : public CPinDialogTest {
protected:
    void OpenUnblock(uint32_t u4Min) {
        m_req = NyGuiTestRequest(UI_CMD_UNBLOCK, u4Min, 16);
        FillSentinel(&m_req, UI_OFS_UNBLOCK_SO_PIN, UI_OFS_UNBLOCK_SO_PIN_LEN);
        FillSentinel(&m_req, UI_OFS_UNBLOCK_USER_PIN, UI_OFS_UNBLOCK_USER_PIN_LEN);
        Open(new GUIunblock(&m_req, Config()), NY_TXT_TITLE);
    }

    tagBlkUiParam m_req;
};

}  // namespace

TEST_F(GUIunblockTest, BothPinsAreReturnedAsTypedOnceLongEnough) {
    OpenUnblock(6);
    for (unsigned int u4Id : {NY_TXT_TIPS, NY_TXT_SO, NY_TXT_USER}) {
        EXPECT_TRUE(WaitLabel(NyGuiTestText(u4Id))) << std::hex << u4Id;
    }
    EXPECT_EQ("解锁UKey用户密码", m_strTitle);
    EXPECT_TRUE(NyTestWaitUntil([this] { return Entry(NY_TXT_SO).HasState("focused"); },
                                NY_GUI_TEST_WAIT_MS))
        << "the administrator PIN entry has the focus first";
    TypeInto(NY_TXT_SO, "admin123");
    TypeInto(NY_TXT_USER, "11111");
    EXPECT_TRUE(WaitLabel(Counter(5)));
    EXPECT_FALSE(OkSensitive()) << "user PIN below the minimum";
    NyTestKey("Return");
    usleep(300 * 1000);
    EXPECT_EQ(0u, m_pDialog->IsFinished());
    NyTestType("1");
    EXPECT_TRUE(NyTestWaitUntil([this] { return OkSensitive(); }, NY_GUI_TEST_WAIT_MS));
    Shot("unblock-typed");
    NyTestKey("Return");
    tagBlkUiParam blk = Finish();
    EXPECT_EQ(UI_RESULT_OK, blk.enRes);
    EXPECT_EQ("admin123", Field(blk, UI_OFS_UNBLOCK_SO_PIN, NY_UI_PIN_FIELD_SIZE));
    EXPECT_EQ(8u, NyUiParamGetU4(&blk, UI_OFS_UNBLOCK_SO_PIN_LEN));
    EXPECT_EQ("111111", Field(blk, UI_OFS_UNBLOCK_USER_PIN, NY_UI_PIN_FIELD_SIZE));
    EXPECT_EQ(6u, NyUiParamGetU4(&blk, UI_OFS_UNBLOCK_USER_PIN_LEN));
}

TEST_F(GUIunblockTest, EndingWithoutOkAnswersCancelWithTheFieldsUntouched) {
    enum EnEnd { END_CANCEL, END_CLOSE, END_STOP };
    for (EnEnd enEnd : {END_CANCEL, END_CLOSE, END_STOP}) {
        SCOPED_TRACE(enEnd);
        OpenUnblock(1);
        TypeInto(NY_TXT_SO, "abc");
        TypeInto(NY_TXT_USER, "def");
        if (enEnd == END_CANCEL) {
            ClickButton(NY_TXT_CANCEL);
        } else if (enEnd == END_CLOSE) {
            NyTestKey("alt+F4");  // the window manager's close
        } else {
            EXPECT_EQ(0u, m_pDialog->stop());
        }
        tagBlkUiParam blk = Finish();
        EXPECT_EQ(UI_RESULT_CANCEL, blk.enRes);
        ExpectSentinel(blk, UI_OFS_UNBLOCK_SO_PIN, UI_OFS_UNBLOCK_SO_PIN_LEN);
        ExpectSentinel(blk, UI_OFS_UNBLOCK_USER_PIN, UI_OFS_UNBLOCK_USER_PIN_LEN);
    }
}

// Every PIN and label dialog, before anything is shown.
TEST(GUIPinDialogs, NullRequestStopBeforeRunAndShortAnswerBuffer) {
    CNyTestConfig cfg;
    const std::function<GUIBase*(const tagBlkUiParam*)> apfnCreate[] = {
        [&](const tagBlkUiParam* p) { return new GUIchangepin(p, cfg.Get()); },
        [&](const tagBlkUiParam* p) { return new GUIgetpinconfirm(p, cfg.Get()); },
        [&](const tagBlkUiParam* p) { return new GUIunblock(p, cfg.Get()); },
        [&](const tagBlkUiParam* p) { return new GUIchangelabel(p, cfg.Get()); },
    };
    for (size_t i = 0; i < sizeof(apfnCreate) / sizeof(apfnCreate[0]); ++i) {
        SCOPED_TRACE(i);
        std::unique_ptr<GUIBase> pDialog(apfnCreate[i](nullptr));
        EXPECT_EQ(0u, pDialog->IsFinished());
        tagBlkUiParam expected;
        memset(&expected, 0, sizeof(expected));
        expected.enRes = UI_RESULT_CANCEL;
        tagBlkUiParam blk = NyGuiTestResponse(pDialog.get());
        EXPECT_EQ(0, memcmp(&expected, &blk, sizeof(blk))) << "a zeroed block, cancelled";

        unsigned char au1Short[NY_UI_PARAM_SIZE - 1];
        unsigned int u4Len = sizeof(au1Short);
        EXPECT_EQ(0u, pDialog->GetResponse(au1Short, &u4Len));
        EXPECT_EQ(NY_UI_PARAM_SIZE, u4Len) << "the size it needs";
        u4Len = 0;
        EXPECT_EQ(0u, pDialog->GetResponse(nullptr, &u4Len));
        EXPECT_EQ(NY_UI_PARAM_SIZE, u4Len);

        EXPECT_EQ(0u, pDialog->stop());
        EXPECT_EQ(0u, pDialog->run());  // returns at once instead of waiting for a person
        EXPECT_EQ(1u, pDialog->IsFinished());
        EXPECT_EQ(UI_RESULT_CANCEL, NyGuiTestResponse(pDialog.get()).enRes);
    }
}
