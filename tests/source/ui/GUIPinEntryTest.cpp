// What every PIN entry of every PIN dialog refuses, by whichever route it is offered.
#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

#include "NyGuiTestWidgets.h"
#include "NyPinDialogFixture.h"
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

tagBlkUiParam PinDialogRequest(uint32_t u4CmdType) {
    bool bKindFirst = u4CmdType == UI_CMD_CHANGE_PIN;
    tagBlkUiParam req = NyGuiTestRequest(u4CmdType, bKindFirst ? 0 : 1, bKindFirst ? 1 : 16);
    if (bKindFirst) {
        NyUiParamSetU4(&req, UI_OFS_CHANGE_MAX_LEN, 16);
    }
    return req;
}

class GUIPinEntryTest : public CPinDialogTest {};

}  // namespace

// Clipboard and primary selection hold a PIN-like text; each entry gets one typed character,
// then every paste route: the paste key of the entry's bindings, the middle button, the
// keyboard's context menu. Nothing but the typed character arrives.
TEST_F(GUIPinEntryTest, NoPasteRouteReachesAnyPinEntry) {
    gdk_threads_enter();
    gtk_clipboard_set_text(gtk_clipboard_get(GDK_SELECTION_CLIPBOARD), "999", -1);
    gtk_clipboard_set_text(gtk_clipboard_get(GDK_SELECTION_PRIMARY), "888", -1);
    gdk_threads_leave();
    for (const BlkPinDialogCaseTag& c : s_aPinDialogs) {
        SCOPED_TRACE(c.u4CmdType);
        tagBlkUiParam req = PinDialogRequest(c.u4CmdType);
        Open(CreateDialogForCommand(c.u4CmdType, 0, &req, Config()), c.u4TitleId);
        for (unsigned int u4Caption : c.vCaptions) {
            BlkTestAccessibleTag entry = Entry(u4Caption);
            NyGuiTestClick(entry);
            NyTestType("a");
            NyTestKey("ctrl+v shift+Insert");
            NyGuiTestClick(entry, 2);
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

// Escape is Cancel in every PIN dialog: the answer is cancelled, nothing typed is in it.
TEST_F(GUIPinEntryTest, EscapeCancelsEveryPinDialog) {
    for (const BlkPinDialogCaseTag& c : s_aPinDialogs) {
        SCOPED_TRACE(c.u4CmdType);
        tagBlkUiParam req = PinDialogRequest(c.u4CmdType);
        Open(CreateDialogForCommand(c.u4CmdType, 0, &req, Config()), c.u4TitleId);
        TypeInto(c.vCaptions[0], "abcdefgh");
        NyTestKey("Escape");
        tagBlkUiParam blk = Finish();
        EXPECT_EQ(UI_RESULT_CANCEL, blk.enRes);
        EXPECT_EQ(0,
                  memcmp(NyUiParamBytes(&req, 4), NyUiParamBytes(&blk, 4), NY_UI_PARAM_SIZE - 4));
    }
}
