// What every PIN dialog shares: no paste route reaches a PIN entry, every end other than OK
// answers the request untouched and cancelled, and a dialog stopped before it is shown.
#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

#include "NyGuiTestWidgets.h"
#include "NyPinDialogFixture.h"
#include "support/NyTestLogCapture.h"
#include "support/NyTestX11.h"
#include "ui/GUIFactory.h"

namespace {

struct BlkPinDialogCaseTag {
    uint32_t u4CmdType;
    unsigned int u4TitleId;
    std::vector<unsigned int> vCaptions;  // the PIN entries' captions
};

// Every PIN dialog with its PIN entries shown; lengths 1 to 16 wherever the request has them.
const BlkPinDialogCaseTag s_aPinDialogs[] = {
    {UI_CMD_VERIFY_PIN, 0x21007A, {0x21007F}},
    {UI_CMD_CHANGE_PIN, 0x21007C, {0x210081, 0x210082, 0x210084}},
    {UI_CMD_GET_PIN_CONFIRM, 0x21007A, {0x210082, 0x210084}},
    {UI_CMD_UNBLOCK, 0x21007B, {0x210080, 0x210083}},
    {UI_CMD_CHANGE_LABEL, 0x210099, {0x21007F}},
};

class GUIPinEntryTest : public CPinDialogTest {
protected:
    // The dialog for a case, over a request whose output fields hold a pattern.
    void OpenCase(const BlkPinDialogCaseTag& c) {
        bool bChange = c.u4CmdType == UI_CMD_CHANGE_PIN;
        m_req = NyGuiTestRequest(c.u4CmdType, 0, 0);
        for (uint32_t u4Ofs = NY_UI_PAYLOAD_OFFSET; u4Ofs < NY_UI_PARAM_SIZE; ++u4Ofs) {
            *NyUiParamBytes(&m_req, u4Ofs) = static_cast<uint8_t>(u4Ofs * 13);
        }
        // Lengths 1 to 16 (the change dialog's start one field later), first kind, any name.
        NyUiParamSetU4(&m_req, NY_UI_PAYLOAD_OFFSET, bChange ? 0 : 1);
        NyUiParamSetU4(&m_req, NY_UI_PAYLOAD_OFFSET + 4, bChange ? 1 : 16);
        NyUiParamSetU4(&m_req, NY_UI_PAYLOAD_OFFSET + 8, bChange ? 16 : 0);
        NyUiParamSetU4(&m_req, UI_OFS_LABEL_NAME_MAX_LEN, 20);
        NyUiParamSetU4(&m_req, UI_OFS_VERIFY_PIN_KIND, 0);
        Open(CreateDialogForCommand(c.u4CmdType, 0, &m_req, Config()), c.u4TitleId);
    }
    // The answer is the request as it came, cancelled.
    void ExpectUntouched(const tagBlkUiParam& blk) {
        EXPECT_EQ(UI_RESULT_CANCEL, blk.enRes);
        EXPECT_EQ(0,
                  memcmp(NyUiParamBytes(&m_req, 4), NyUiParamBytes(&blk, 4), NY_UI_PARAM_SIZE - 4));
    }

    tagBlkUiParam m_req;
};

}  // namespace

// Clipboard and primary selection hold a PIN-like text; each entry gets one typed character,
// then every paste route: the paste keys of the entry's bindings, the middle button, the
// right button and the keyboard's context menu. Nothing but the typed character arrives.
TEST_F(GUIPinEntryTest, NoPasteRouteReachesAnyPinEntry) {
    gdk_threads_enter();
    gtk_clipboard_set_text(gtk_clipboard_get(GDK_SELECTION_CLIPBOARD), "999", -1);
    gtk_clipboard_set_text(gtk_clipboard_get(GDK_SELECTION_PRIMARY), "888", -1);
    gdk_threads_leave();
    for (const BlkPinDialogCaseTag& c : s_aPinDialogs) {
        SCOPED_TRACE(c.u4CmdType);
        OpenCase(c);
        for (unsigned int u4Caption : c.vCaptions) {
            BlkTestAccessibleTag entry = Entry(u4Caption);
            NyGuiTestClick(entry);
            NyTestType("a");
            NyTestKey("ctrl+v shift+Insert");
            NyGuiTestClick(entry, 2);
            NyGuiTestClick(entry, 3);
            NyTestKey("shift+F10");
        }
        usleep(300 * 1000);
        for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
            EXPECT_FALSE(blk.strRole == "menu item" && blk.HasState("showing")) << blk.strName;
        }
        EXPECT_EQ(std::vector<std::string>(c.vCaptions.size(), "a"), NyGuiTestPinTexts());
        m_pDialog->stop();
        Finish();
    }
}

// Cancel, Escape, the window manager's close and stop(), with PINs typed: the request comes
// back untouched, cancelled.
TEST_F(GUIPinEntryTest, EveryEndButOkAnswersTheRequestUntouched) {
    for (const BlkPinDialogCaseTag& c : s_aPinDialogs) {
        for (const char* szEnd : {"cancel", "Escape", "alt+F4", "stop"}) {
            SCOPED_TRACE(std::to_string(c.u4CmdType) + " " + szEnd);
            OpenCase(c);
            for (unsigned int u4Caption : c.vCaptions) {
                TypeInto(u4Caption, "abcdefgh");
            }
            if (std::string(szEnd) == "cancel") {
                ClickButton(0x210012);
            } else if (std::string(szEnd) == "stop") {
                EXPECT_EQ(0u, m_pDialog->stop());
            } else {
                NyTestKey(szEnd);
            }
            ExpectUntouched(Finish());
        }
    }
}

// Before anything is shown: a null request gives a zeroed block marked cancelled, the answer
// follows the size-query convention and the dialog reports nothing of it, and a stop that
// comes before run() keeps the window from ever showing.
TEST_F(GUIPinEntryTest, BeforeItIsShownADialogAnswersCancelAndAStopKeepsItHidden) {
    for (const BlkPinDialogCaseTag& c : s_aPinDialogs) {
        SCOPED_TRACE(c.u4CmdType);
        std::unique_ptr<GUIBase> pDialog(CreateDialogForCommand(c.u4CmdType, 0, nullptr, Config()));
        EXPECT_EQ(0u, pDialog->IsFinished());
        tagBlkUiParam expected;
        memset(&expected, 0, sizeof(expected));
        expected.enRes = UI_RESULT_CANCEL;
        tagBlkUiParam blk = NyGuiTestResponse(pDialog.get());
        EXPECT_EQ(0, memcmp(&expected, &blk, sizeof(blk))) << "a zeroed block, cancelled";

        std::vector<unsigned char> vShort(NY_UI_PARAM_SIZE - 1, 0x5A);
        unsigned int u4Len = NY_UI_PARAM_SIZE - 1;
        EXPECT_EQ(0u, pDialog->GetResponse(vShort.data(), &u4Len));
        EXPECT_EQ(NY_UI_PARAM_SIZE, u4Len) << "the size it needs";
        EXPECT_EQ(std::vector<unsigned char>(NY_UI_PARAM_SIZE - 1, 0x5A), vShort);
        u4Len = 0;
        EXPECT_EQ(0u, pDialog->GetResponse(nullptr, &u4Len));
        EXPECT_EQ(NY_UI_PARAM_SIZE, u4Len);
        EXPECT_EQ(0u, pDialog->GetResponse(vShort.data(), nullptr));

        EXPECT_EQ(0u, pDialog->stop());
        EXPECT_EQ(0u, pDialog->run());  // returns at once instead of waiting for a person
        EXPECT_EQ(1u, pDialog->IsFinished());
        EXPECT_EQ(UI_RESULT_CANCEL, NyGuiTestResponse(pDialog.get()).enRes);
        EXPECT_TRUE(NyTestFindWindows("^" + NyGuiTestText(c.u4TitleId) + "$").empty());
    }
}
