// The unblock dialog on screen.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "NyPinDialogFixture.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIunblock.h"

namespace {

constexpr unsigned int NY_TXT_TITLE = 0x21007B;
constexpr unsigned int NY_TXT_TIPS = 0x21007E;
constexpr unsigned int NY_TXT_SO = 0x210080;
constexpr unsigned int NY_TXT_USER = 0x210083;

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
