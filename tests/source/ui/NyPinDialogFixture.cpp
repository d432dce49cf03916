#include "NyPinDialogFixture.h"

#include <cstdio>
#include <cstring>

#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"

namespace {

constexpr unsigned int NY_TXT_OK = 0x210011;
constexpr unsigned int NY_TXT_COUNT = 0x210085;
constexpr char NY_PIN_SENTINEL[] = "untouched";
constexpr uint32_t NY_LEN_SENTINEL = 0x11223344;

bool AnyLabelShows(const std::string& strText) {
    for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
        if (blk.strRole == "label" && blk.strName == strText && blk.HasState("showing")) {
            return true;
        }
    }
    return false;
}

}  // namespace

void CPinDialogTest::Open(GUIBase* pDialog, unsigned int u4TitleId) {
    OpenTitled(pDialog, NyGuiTestText(u4TitleId));
    ASSERT_TRUE(NyGuiTestWaitFor("frame", m_strTitle));
}

void CPinDialogTest::OpenTitled(GUIBase* pDialog, const std::string& strTitle) {
    m_pRun.reset();
    m_pDialog.reset(pDialog);
    m_pRun.reset(new CGuiTestRun(pDialog));
    m_strTitle = strTitle;
    m_strWindow = NyTestWaitWindow("^" + m_strTitle + "$", NY_GUI_TEST_WAIT_MS);
    ASSERT_FALSE(m_strWindow.empty()) << "no window titled " << m_strTitle;
}

BlkTestAccessibleTag CPinDialogTest::Entry(unsigned int u4CaptionId, const char* szRole) {
    BlkTestAccessibleTag entry;
    EXPECT_TRUE(NyGuiTestWaitFor(szRole, NyGuiTestText(u4CaptionId), &entry))
        << "no " << szRole << " captioned " << NyGuiTestText(u4CaptionId);
    return entry;
}

void CPinDialogTest::TypeInto(unsigned int u4CaptionId, const std::string& strText,
                              const char* szRole) {
    NyGuiTestClick(Entry(u4CaptionId, szRole));
    NyTestType(strText);
}

void CPinDialogTest::ClickButton(unsigned int u4TextId) {
    BlkTestAccessibleTag button;
    ASSERT_TRUE(NyGuiTestWaitFor("push button", NyGuiTestText(u4TextId), &button));
    NyGuiTestClick(button);
}

bool CPinDialogTest::OkSensitive() {
    for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
        if (blk.strRole == "push button" && blk.strName == NyGuiTestText(NY_TXT_OK)) {
            return blk.HasState("sensitive");
        }
    }
    ADD_FAILURE() << "no OK button";
    return false;
}

bool CPinDialogTest::WaitLabel(const std::string& strText) {
    return NyTestWaitUntil([&] { return AnyLabelShows(strText); }, NY_GUI_TEST_WAIT_MS);
}

bool CPinDialogTest::WaitNoLabel(const std::string& strText) {
    return NyTestWaitUntil([&] { return !AnyLabelShows(strText); }, NY_GUI_TEST_WAIT_MS);
}

std::string CPinDialogTest::Counter(unsigned int u4Count) {
    char szText[NY_GUI_TEXT_SIZE];
    snprintf(szText, sizeof(szText), NyGuiTestText(NY_TXT_COUNT).c_str(), u4Count);
    return szText;
}

tagBlkUiParam CPinDialogTest::Finish() {
    EXPECT_TRUE(m_pRun->Wait(NY_GUI_TEST_WAIT_MS));
    EXPECT_EQ(0u, m_pRun->Result());
    EXPECT_EQ(1u, m_pDialog->IsFinished());
    EXPECT_TRUE(NyTestWaitNoWindow("^" + m_strTitle + "$", NY_GUI_TEST_WAIT_MS));
    return NyGuiTestResponse(m_pDialog.get());
}

void CPinDialogTest::Shot(const std::string& strName) {
    usleep(200 * 1000);  // one poll period and a repaint
    NyGuiTestShot(m_strWindow, strName);
}

std::string CPinDialogTest::Field(const tagBlkUiParam& blk, uint32_t u4Offset, uint32_t u4Size) {
    const char* sz = reinterpret_cast<const char*>(NyUiParamBytes(&blk, u4Offset));
    return std::string(sz, strnlen(sz, u4Size));
}

void CPinDialogTest::FillSentinel(tagBlkUiParam* pReq, uint32_t u4Offset, uint32_t u4LenOffset) {
    memcpy(NyUiParamBytes(pReq, u4Offset), NY_PIN_SENTINEL, sizeof(NY_PIN_SENTINEL));
    NyUiParamSetU4(pReq, u4LenOffset, NY_LEN_SENTINEL);
}

void CPinDialogTest::ExpectSentinel(const tagBlkUiParam& blk, uint32_t u4Offset,
                                    uint32_t u4LenOffset) {
    EXPECT_EQ(NY_PIN_SENTINEL, Field(blk, u4Offset, sizeof(NY_PIN_SENTINEL)));
    EXPECT_EQ(NY_LEN_SENTINEL, NyUiParamGetU4(&blk, u4LenOffset));
}
