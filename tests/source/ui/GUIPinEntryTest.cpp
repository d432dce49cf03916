// What every PIN dialog shares: no paste route reaches a PIN entry, every end other than OK
// answers the request untouched and cancelled, a dialog stopped before it is shown, and the
// typed PIN kept in locked memory.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <vector>

#include "NyDialogFixture.h"
#include "runtime/NySecureMem.h"
#include "support/NyTestX11.h"
#include "ui/GUIFactory.h"

namespace {

struct BlkPinDialogCaseTag {
    uint32_t u4CmdType;
    unsigned int u4TitleId;
    std::vector<unsigned int> vCaptions;  // the PIN entries' captions
};

const BlkPinDialogCaseTag s_aPinDialogs[] = {
    {UI_CMD_VERIFY_PIN, 0x21007A, {0x21007F}},
    {UI_CMD_CHANGE_PIN, 0x21007C, {0x210081, 0x210082, 0x210084}},
    {UI_CMD_GET_PIN_CONFIRM, 0x21007A, {0x210082, 0x210084}},
    {UI_CMD_UNBLOCK, 0x21007B, {0x210080, 0x210083}},
    {UI_CMD_CHANGE_LABEL, 0x210099, {0x21007F}},
};

class GUIPinEntryTest : public CDialogTest {
protected:
    // The dialog for a case, over a request whose output fields hold a pattern; lengths 1 to 16
    // (the change dialog's start one field later), first kind, any name.
    void OpenCase(const BlkPinDialogCaseTag& c) {
        bool bChange = c.u4CmdType == UI_CMD_CHANGE_PIN;
        Request(c.u4CmdType, 0, 0);
        for (uint32_t u4Ofs = NY_UI_PAYLOAD_OFFSET; u4Ofs < NY_UI_PARAM_SIZE; ++u4Ofs) {
            *NyUiParamBytes(&m_req, u4Ofs) = static_cast<uint8_t>(u4Ofs * 13);
        }
        NyUiParamSetU4(&m_req, NY_UI_PAYLOAD_OFFSET, bChange ? 0 : 1);
        NyUiParamSetU4(&m_req, NY_UI_PAYLOAD_OFFSET + 4, bChange ? 1 : 16);
        NyUiParamSetU4(&m_req, NY_UI_PAYLOAD_OFFSET + 8, bChange ? 16 : 0);
        NyUiParamSetU4(&m_req, UI_OFS_LABEL_NAME_MAX_LEN, 20);
        NyUiParamSetU4(&m_req, UI_OFS_VERIFY_PIN_KIND, 0);
        Open(CreateDialogForCommand(c.u4CmdType, 0, &m_req, Config()), NyGuiTestText(c.u4TitleId));
    }
    // The answer is the request as it came, cancelled.
    void ExpectUntouched(const tagBlkUiParam& blk) {
        EXPECT_EQ(UI_RESULT_CANCEL, blk.enRes);
        EXPECT_EQ(0,
                  memcmp(NyUiParamBytes(&m_req, 4), NyUiParamBytes(&blk, 4), NY_UI_PARAM_SIZE - 4));
    }
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
        // Each entry holds its one character: a counter of one, none of more.
        EXPECT_TRUE(WaitLabel(Counter(1)));
        for (unsigned int u4Count = 2; u4Count <= 7; ++u4Count) {
            EXPECT_TRUE(WaitNoLabel(Counter(u4Count))) << u4Count;
        }
        StopAndFinish();
    }
}

// Text selected in the label dialog's name entry and dragged onto its PIN entry does not
// arrive: the PIN typed after it counts one character.
TEST_F(GUIPinEntryTest, TextDroppedOnAPinEntryDoesNotArrive) {
    OpenCase(s_aPinDialogs[4]);
    TypeInto(0x21009A, "77777", NY_ROLE_TEXT);
    NyTestKey("ctrl+a");
    BlkTestAccessibleTag name = Entry(0x21009A, NY_ROLE_TEXT);
    BlkTestAccessibleTag pin = Entry(s_aPinDialogs[4].vCaptions[0]);
    NyTestDrag(name.iX + 12, name.CentreY(), pin.CentreX(), pin.CentreY());  // on the text
    NyGuiTestClick(pin);
    NyTestType("a");
    EXPECT_TRUE(WaitLabel(Counter(1)));
    StopAndFinish();
}

// Cancel, Escape, the window manager's close and stop(), with PINs typed: the request comes
// back untouched, cancelled.
TEST_F(GUIPinEntryTest, EveryEndButOkAnswersTheRequestUntouched) {
    for (const BlkPinDialogCaseTag& c : s_aPinDialogs) {
        for (const std::string strEnd : {"cancel", "Escape", "alt+F4", "stop"}) {
            SCOPED_TRACE(std::to_string(c.u4CmdType) + " " + strEnd);
            OpenCase(c);
            for (unsigned int u4Caption : c.vCaptions) {
                TypeInto(u4Caption, "abcdefgh");
            }
            if (strEnd == "stop") {
                ExpectUntouched(StopAndFinish());
                continue;
            }
            if (strEnd == "cancel") {
                ClickButton(NY_TXT_CANCEL);
            } else if (strEnd == "alt+F4") {
                EXPECT_TRUE(NyTestWaitFocused(m_strWindow, NY_GUI_TEST_WAIT_MS));
                EXPECT_TRUE(NyTestCloseWindow("^" + m_strTitle + "$", NY_GUI_TEST_WAIT_MS));
            } else {
                NyTestKey(strEnd);
            }
            ExpectUntouched(Finish());
        }
    }
}

// Before anything is shown: a null request gives a zeroed block marked cancelled, the answer
// follows the size-query convention, and a stop that comes before run() keeps the window from
// ever showing.
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

namespace {

// AddressSanitizer turns mlock into a no-op that reports success: under it, only the
// placement in memory left out of core dumps can be seen.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool NY_MLOCK_WORKS = false;
#else
constexpr bool NY_MLOCK_WORKS = true;
#endif

struct BlkMappingTag {
    uintptr_t uStart = 0, uEnd = 0;
    bool bReadable = false;
    bool bLocked = false;    // "Locked" covers the whole mapping
    bool bDontDump = false;  // "dd" among its VmFlags
};

std::vector<BlkMappingTag> Mappings() {
    std::vector<BlkMappingTag> v;
    std::ifstream in("/proc/self/smaps");
    std::string strLine;
    while (std::getline(in, strLine)) {
        unsigned long uStart = 0, uEnd = 0, uKb = 0;
        char szPerms[8] = "";
        if (sscanf(strLine.c_str(), "%lx-%lx %7s", &uStart, &uEnd, szPerms) == 3) {
            v.push_back({uStart, uEnd, szPerms[0] == 'r', false, false});
        } else if (!v.empty() && sscanf(strLine.c_str(), "Locked: %lu kB", &uKb) == 1) {
            v.back().bLocked = uKb * 1024 >= v.back().uEnd - v.back().uStart;
        } else if (!v.empty() && strLine.compare(0, 8, "VmFlags:") == 0) {
            v.back().bDontDump = (strLine + " ").find(" dd ") != std::string::npos;
        }
    }
    return v;
}

}  // namespace

// While a PIN is typed, every copy of it in this process lies in memory that is locked and
// left out of core dumps. The PIN is typed key by key from a reversed spelling, so that no
// other copy of it is ever made here; the one it is compared with, and the scan's own buffer,
// are excluded.
TEST_F(GUIPinEntryTest, TypedPinLivesOnlyInLockedMemoryLeftOutOfCoreDumps) {
    const char szReversed[] = "7bV9pK3xW2zQ";
    const size_t cchPin = sizeof(szReversed) - 1;
    CNySecure<char[sizeof(szReversed)]> needle;
    for (size_t i = 0; i < cchPin; ++i) {
        (*needle)[i] = szReversed[cchPin - 1 - i];
    }
    OpenCase(s_aPinDialogs[0]);
    NyGuiTestClick(Entry(s_aPinDialogs[0].vCaptions[0]));
    for (size_t i = cchPin; i-- > 0;) {
        NyTestKey(std::string(1, szReversed[i]));
    }
    EXPECT_TRUE(WaitLabel(Counter(static_cast<unsigned int>(cchPin))));
    int fdMem = open("/proc/self/mem", O_RDONLY);
    ASSERT_GE(fdMem, 0);
    int nCopies = 0;
    const size_t cbChunk = 1 << 20;
    std::vector<char> vBytes(cbChunk + cchPin);
    const uintptr_t uBuf = reinterpret_cast<uintptr_t>(vBytes.data());
    for (const BlkMappingTag& m : Mappings()) {
        // Mappings beyond a gigabyte are a sanitizer's shadow and reserve regions.
        if (!m.bReadable || m.uEnd - m.uStart > (size_t(1) << 30)) {
            continue;
        }
        // Stepped by offset: on 32-bit x86 the stack's address plus a chunk can pass 4 GiB.
        for (uintptr_t uOfs = 0; uOfs < m.uEnd - m.uStart; uOfs += cbChunk) {
            const uintptr_t uAt = m.uStart + uOfs;
            size_t cbWant = std::min<size_t>(cbChunk + cchPin - 1, m.uEnd - uAt);
            ssize_t nRead = pread(fdMem, vBytes.data(), cbWant, static_cast<off_t>(uAt));
            for (ssize_t i = 0; i + static_cast<ssize_t>(cchPin) <= nRead; ++i) {
                uintptr_t uCopy = uAt + static_cast<uintptr_t>(i);
                bool bOwn = uCopy == reinterpret_cast<uintptr_t>(needle.Get()) ||
                            (uCopy >= uBuf && uCopy < uBuf + vBytes.size());
                if (!bOwn && memcmp(vBytes.data() + i, needle.Get(), cchPin) == 0) {
                    ++nCopies;
                    EXPECT_TRUE((m.bLocked || !NY_MLOCK_WORKS) && m.bDontDump)
                        << std::hex << "copy at " << uCopy;
                }
            }
        }
    }
    close(fdMem);
    EXPECT_GE(nCopies, 1) << "the typed PIN was not found at all";
    StopAndFinish();
}
