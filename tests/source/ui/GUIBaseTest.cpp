// The dialog base: resource folder, focus, the block copy and its hand-out, the
// character filters, on real widgets.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "NyGuiTestEnv.h"
#include "log/NyLog.h"
#include "runtime/NyResult.h"
#include "support/NyTestLogCapture.h"
#include "ui/GUIEntryFilter.h"
#include "ui/GUIverify.h"

namespace {

// Reaches the protected helpers the way a dialog does.
class CBaseProbe : public GUIBase {
public:
    using GUIBase::GetResourceDir;
};

class GUIBaseTest : public testing::Test {
protected:
    // Whether a record at error level carried exactly this message.
    bool LoggedError(const std::string& strMessage) const {
        std::vector<std::string> v = m_log.MessagesAt(LOG_ERROR);
        return std::find(v.begin(), v.end(), strMessage) != v.end();
    }
    CNyTestLogCapture m_log;
};

}  // namespace

// The module's folder is the executable's, where the resources are; a path that fills the
// buffer fails and is logged.
TEST_F(GUIBaseTest, ModuleFileNameIsTheExecutablesDirectory) {
    char szDir[NY_GUI_PATH_SIZE];
    ASSERT_EQ(NY_OK, GUIBase::GetModuleFileName(szDir, sizeof(szDir)));
    EXPECT_EQ(std::string(NY_TEST_BIN_DIR), szDir);
    ASSERT_EQ(NY_OK, CBaseProbe::GetResourceDir(szDir));
    for (const char* szName : {"verify.glade", "message.glade", "Logo_Long.bmp"}) {
        std::string strPath = std::string(szDir) + "/res/" + szName;
        EXPECT_EQ(0, access(strPath.c_str(), R_OK)) << strPath;
    }
    std::vector<char> vBuf(std::string(NY_TEST_BIN_DIR "/x").size(), 'q');
    EXPECT_EQ(NY_ERR_BAD_ARGUMENT,
              GUIBase::GetModuleFileName(vBuf.data(), static_cast<unsigned>(vBuf.size())));
    EXPECT_EQ(NY_ERR_BAD_ARGUMENT, GUIBase::GetModuleFileName(nullptr, 256));
    EXPECT_TRUE(LoggedError("GUIBase::GetModuleFileName function error"));
}

// Counts focus events that are focus-in and sent (anything else counts a hundred).
static gboolean OnFocusIn(GtkWidget*, GdkEventFocus* pEvent, gpointer pvCount) {
    *static_cast<int*>(pvCount) += pEvent->in != 0 && pEvent->send_event != 0 ? 1 : 100;
    return FALSE;
}

// A window gets a sent focus-in.
TEST_F(GUIBaseTest, WindowGetsASentFocusIn) {
    GUIBase base;
    int nSeen = 0;
    gdk_threads_enter();
    GtkWidget* pWindow = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_widget_realize(pWindow);
    g_signal_connect(pWindow, "focus-in-event", G_CALLBACK(OnFocusIn), &nSeen);
    base.FocusEvent(gtk_widget_get_window(pWindow));
    base.FocusEvent(nullptr);  // ignored
    gtk_widget_destroy(pWindow);
    gdk_threads_leave();
    EXPECT_EQ(1, nSeen);
}

namespace {

struct BlkInsertCase {
    GCallback pfnFilter;
    const char* szSpecial;  // the filter's data
    std::string strBefore;
    gint iCursor;
    const char* szInsert;
    std::string strAfter;
};

// Inserts through the entry's "insert-text" signal with the filter connected, as typing or
// pasting would, and returns the text that results.
std::string InsertThroughFilter(const BlkInsertCase& c) {
    gdk_threads_enter();
    GtkWidget* pEntry = gtk_entry_new();
    g_object_ref_sink(pEntry);
    gtk_entry_set_text(GTK_ENTRY(pEntry), c.strBefore.c_str());
    g_signal_connect(pEntry, "insert-text", c.pfnFilter, const_cast<char*>(c.szSpecial));
    gtk_editable_set_position(GTK_EDITABLE(pEntry), c.iCursor);
    gint iPos = c.iCursor;
    gtk_editable_insert_text(GTK_EDITABLE(pEntry), c.szInsert, -1, &iPos);
    std::string strText = gtk_entry_get_text(GTK_ENTRY(pEntry));
    g_object_unref(pEntry);
    gdk_threads_leave();
    return strText;
}

}  // namespace

// The PIN filter admits letters and digits and rejects any other insertion whole; the wide
// filters admit their special sets (the label's also '?') and inner spaces only; the capacity
// filter refuses what would not fit the answer's 32-byte PIN field.
TEST_F(GUIBaseTest, EntryFiltersAdmitTheirCharactersAndRejectAnyOtherInsertionWhole) {
    const GCallback P = G_CALLBACK(GUIEntryFilter::on_entry_insert);
    const GCallback W = G_CALLBACK(GUIEntryFilter::on_entry_insert_special);
    const GCallback C = G_CALLBACK(GUIEntryFilter::on_entry_insert_capacity);
    const char* N = NY_GUI_PIN_SPECIAL_CHARS;
    const char* L = NY_GUI_LABEL_SPECIAL_CHARS;
    const std::string str31(31, 'x');
    // clang-format off
    const BlkInsertCase aCases[] = {
        {P, nullptr, "", 0, "abcXYZ019", "abcXYZ019"}, {P, nullptr, "ab", 2, "c", "abc"},
        {P, nullptr, "ab", 1, "Z", "aZb"}, {P, nullptr, "ab", 2, "-", "ab"},
        {P, nullptr, "ab", 2, "cd!e", "ab"}, {P, nullptr, "ab", 2, " ", "ab"},
        {P, nullptr, "", 0, "12 34", ""}, {P, nullptr, "ab", 2, "\xC3\xA9", "ab"},
        {P, nullptr, "ab", 2, "", "ab"},
        {W, N, "", 0, "~`!@#$%^&*()_+{}|:\"<>-=[]\\;',./", "~`!@#$%^&*()_+{}|:\"<>-=[]\\;',./"},
        {W, N, "ab", 2, "?", "ab"}, {W, N, "ab", 1, " ", "a b"}, {W, N, "ab", 0, " ", "ab"},
        {W, N, "ab", 2, " ", "ab"}, {W, N, "", 0, " ", ""}, {W, N, "ab", 1, " c", "ab"},
        {W, N, "ab", 2, "\xE4\xB8\xAD", "ab"},
        {W, L, "ab", 2, "?", "ab?"}, {W, L, "ab", 1, " ", "a b"}, {W, L, "ab", 2, " ", "ab"},
        {C, nullptr, str31, 31, "y", str31 + "y"}, {C, nullptr, str31 + "y", 32, "z", str31 + "y"},
        {C, nullptr, str31, 31, "\xC3\xA9", str31}, {C, nullptr, "ab", 2, "\xE4\xB8\xAD", "ab\xE4\xB8\xAD"},
    };
    // clang-format on
    for (const BlkInsertCase& c : aCases) {
        EXPECT_EQ(c.strAfter, InsertThroughFilter(c))
            << "insert \"" << c.szInsert << "\" into \"" << c.strBefore << "\"";
    }
}
