// The change-label dialog on screen: the name's character rules, the PIN row that only a
// request with PIN lengths gets, and the answer with and without a PIN.
#include <gtest/gtest.h>

#include "NyDialogFixture.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "ui/GUIchangelabel.h"

namespace {

constexpr unsigned int NY_TXT_NAME = 0x21009A;
constexpr unsigned int NY_TXT_PIN = 0x21007F;

class GUIchangelabelTest : public CDialogTest {
protected:
    void OpenLabel(uint32_t u4PinMin, uint32_t u4PinMax, uint32_t u4NameMin) {
        Request(UI_CMD_CHANGE_LABEL, u4PinMin, u4PinMax,
                {{UI_OFS_LABEL_NAME_MIN_LEN, u4NameMin}, {UI_OFS_LABEL_NAME_MAX_LEN, 20}});
        Open<GUIchangelabel>(0x210099);
    }
    void ExpectLabel(const tagBlkUiParam& blk, const std::string& strName,
                     const std::string& strPin) {
        ExpectAnswer(blk, {strPin});
        EXPECT_EQ(strName, Field(blk, UI_OFS_LABEL_NAME, NY_UI_LABEL_FIELD_SIZE));
        EXPECT_EQ(strName.size(), NyUiParamGetU4(&blk, UI_OFS_LABEL_NAME_LEN));
    }
};

}  // namespace

TEST_F(GUIchangelabelTest, NameKeepsInnerSpacesOnlyAndComesBackWithThePin) {
    OpenLabel(4, 16, 2);
    EXPECT_EQ("修改UKey名称", m_strTitle);
    EXPECT_TRUE(WaitLabel(NyGuiTestText(NY_TXT_PIN)));
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
    EXPECT_TRUE(WaitOkSensitive());
    NyTestKey("Return");
    ExpectLabel(Finish(), "My Key?", "12a4");
}

// Without PIN lengths the PIN row is hidden.
TEST_F(GUIchangelabelTest, WithoutPinLengthsTheRowIsHiddenAndThePinComesBackEmpty) {
    OpenLabel(0, 0, 1);
    for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
        EXPECT_FALSE(blk.HasState("showing") &&
                     (blk.strRole == NY_ROLE_PIN || blk.strName == NyGuiTestText(NY_TXT_PIN)))
            << blk.strRole << " " << blk.strName << " shown";
    }
    EXPECT_FALSE(OkSensitive()) << "name below its minimum";
    TypeInto(NY_TXT_NAME, "Key1", NY_ROLE_TEXT);
    EXPECT_TRUE(WaitOkSensitive());
    NyTestKey("Return");
    ExpectLabel(Finish(), "Key1", "");
}
