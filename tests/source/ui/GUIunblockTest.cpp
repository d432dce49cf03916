// The unblock dialog on screen.
#include <gtest/gtest.h>

#include "NyDialogFixture.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIunblock.h"

namespace {

constexpr unsigned int NY_TXT_SO = 0x210080;
constexpr unsigned int NY_TXT_USER = 0x210083;

class GUIunblockTest : public CDialogTest {};

}  // namespace

TEST_F(GUIunblockTest, BothPinsAreReturnedAsTypedOnceLongEnough) {
    Request(UI_CMD_UNBLOCK, 6, 16);
    Open<GUIunblock>(0x21007B);
    for (unsigned int u4Id : {0x21007Eu, NY_TXT_SO, NY_TXT_USER}) {
        EXPECT_TRUE(WaitLabel(NyGuiTestText(u4Id))) << std::hex << u4Id;
    }
    EXPECT_TRUE(NyTestWaitUntil([this] { return Entry(NY_TXT_SO).HasState("focused"); },
                                NY_GUI_TEST_WAIT_MS))
        << "the administrator PIN entry has the focus first";
    TypeInto(NY_TXT_SO, "admin123");
    TypeInto(NY_TXT_USER, "11111");
    EXPECT_TRUE(WaitLabel(Counter(5)));
    EXPECT_FALSE(OkSensitive()) << "user PIN below the minimum";
    ExpectReturnRefused();
    NyTestType("1");
    EXPECT_TRUE(WaitOkSensitive());
    NyTestKey("Return");
    ExpectAnswer(Finish(), {"admin123", "111111"});
}
