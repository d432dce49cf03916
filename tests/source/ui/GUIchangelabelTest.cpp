// The change-label dialog on screen: the name's character rules, the PIN row that only a
// request with PIN lengths gets, and the answer with and without a PIN.
#include <gtest/gtest.h>

#include "NyPinDialogFixture.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIchangelabel.h"

namespace {

constexpr unsigned int NY_TXT_TITLE = 0x210099;
constexpr unsigned int NY_TXT_NAME = 0x21009A;
constexpr unsigned int NY_TXT_PIN = 0x21007F;
constexpr unsigned int NY_TXT_OK = 0x210011;
// Rows of the layout: the OK button's top, the name row with and without the PIN row.
constexpr int NY_OK_Y = 206;
constexpr int NY_NAME_Y_WITH_PIN = 100;
constexpr int NY_NAME_Y_ALONE = 128;

class GUIchangelabelTest : public CPinDialogTest {
protected:
    void OpenLabel(uint32_t u4PinMin, uint32_t u4PinMax, uint32_t u4NameMin) {
        m_req = NyGuiTestRequest(UI_CMD_CHANGE_LABEL, u4PinMin, u4PinMax);
        NyUiParamSetU4(&m_req, UI_OFS_LABEL_NAME_MIN_LEN, u4NameMin);
        NyUiParamSetU4(&m_req, UI_OFS_LABEL_NAME_MAX_LEN, 20);
        FillSentinel(&m_req, UI_OFS_LABEL_PIN, UI_OFS_LABEL_PIN_LEN);
        Open(new GUIchangelabel(&m_req, Config()), NY_TXT_TITLE);
    }
    // Distance from the name entry's top down to the OK button's top.
    int NameRowAboveOk() {
        BlkTestAccessibleTag ok;
        EXPECT_TRUE(NyGuiTestWaitFor("push button", NyGuiTestText(NY_TXT_OK), &ok));
        return ok.iY - Entry(NY_TXT_NAME, NY_ROLE_TEXT).iY;
    }
    void ExpectAnswer(const tagBlkUiParam& blk, const std::string& strName,
                      const std::string& strPin) {
        EXPECT_EQ(UI_RESULT_OK, blk.enRes);
        EXPECT_EQ(strName, Field(blk, UI_OFS_LABEL_NAME, NY_UI_LABEL_FIELD_SIZE));
        EXPECT_EQ(strName.size(), NyUiParamGetU4(&blk, UI_OFS_LABEL_NAME_LEN));
        EXPECT_EQ(strPin, Field(blk, UI_OFS_LABEL_PIN, NY_UI_PIN_FIELD_SIZE));
        EXPECT_EQ(strPin.size(), NyUiParamGetU4(&blk, UI_OFS_LABEL_PIN_LEN));
    }

    tagBlkUiParam m_req;
};

}  // namespace

TEST_F(GUIchangelabelTest, NameKeepsInnerSpacesOnlyAndComesBackWithThePin) {
    OpenLabel(4, 16, 2);
    EXPECT_EQ("修改UKey名称", m_strTitle);
    EXPECT_TRUE(WaitLabel(NyGuiTestText(NY_TXT_PIN)));
    EXPECT_EQ(NY_OK_Y - NY_NAME_Y_WITH_PIN, NameRowAboveOk());
    // Leading and trailing spaces and a non-ASCII letter are refused; '?' is admitted.
    TypeInto(NY_TXT_NAME, " My", NY_ROLE_TEXT);
    NyTestType("Key é");
    NyTestKey("Left Left Left");
    NyTestType(" ");
    NyTestKey("End");
    NyTestType("?");
    TypeInto(NY_TXT_PIN, "12a");
    EXPECT_TRUE(WaitLabel(Counter(3)));
    EXPECT_FALSE(OkSensitive()) << "PIN below its minimum";
    NyTestType("4");
    EXPECT_TRUE(NyTestWaitUntil([this] { return OkSensitive(); }, NY_GUI_TEST_WAIT_MS));
    Shot("changelabel-pin");
    NyTestKey("Return");
    ExpectAnswer(Finish(), "My Key?", "12a4");
}

TEST_F(GUIchangelabelTest, WithoutPinLengthsTheRowIsHiddenAndThePinComesBackEmpty) {
    OpenLabel(0, 0, 1);
    EXPECT_EQ(NY_OK_Y - NY_NAME_Y_ALONE, NameRowAboveOk()) << "name row moved to the middle";
    for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
        EXPECT_FALSE(blk.HasState("showing") &&
                     (blk.strRole == NY_ROLE_PIN || blk.strName == NyGuiTestText(NY_TXT_PIN)))
            << blk.strRole << " " << blk.strName << " shown";
    }
    EXPECT_FALSE(OkSensitive()) << "name below its minimum";
    Shot("changelabel-nopin");
    TypeInto(NY_TXT_NAME, "Key1", NY_ROLE_TEXT);
    EXPECT_TRUE(NyTestWaitUntil([this] { return OkSensitive(); }, NY_GUI_TEST_WAIT_MS));
    NyTestKey("Return");
    ExpectAnswer(Finish(), "Key1", "");
}
