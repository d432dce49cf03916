#include "ui/GUIEntryFilter.h"

#include <gdk/gdkkeysyms.h>

#include <cstring>

#include "uiblock/NyUiParam.h"

const char NY_GUI_PIN_SPECIAL_CHARS[] = "~`!@#$%^&*()_+{}|:\"<>-=[]\\;',./";
const char NY_GUI_LABEL_SPECIAL_CHARS[] = "~`!@#$%^&*()_+{}|:\"<>-=[]\\;',./?";

static_assert(sizeof(NY_GUI_PIN_SPECIAL_CHARS) == 31 + 1, "31 special characters for PINs");
static_assert(sizeof(NY_GUI_LABEL_SPECIAL_CHARS) == 32 + 1, "32 special characters for labels");

namespace {

constexpr guint NY_GUI_MIDDLE_BUTTON = 2;
constexpr guint NY_GUI_RIGHT_BUTTON = 3;
// Bytes of text a PIN field of the answer carries (without its terminator).
constexpr gint NY_GUI_PIN_FIELD_TEXT = NY_UI_PIN_FIELD_SIZE - 1;

void StopPaste(GtkEntry* pEntry, gpointer /*pvData*/) {
    g_signal_stop_emission_by_name(pEntry, "paste-clipboard");
}

gboolean RefuseMenu(GtkWidget* /*pWidget*/, gpointer /*pvData*/) {
    return TRUE;
}

gboolean RefuseMiddleButton(GtkWidget* /*pWidget*/, GdkEventButton* pEvent, gpointer /*pvData*/) {
    return pEvent->button == NY_GUI_MIDDLE_BUTTON ? TRUE : FALSE;
}

bool IsAlnum(char ch) {
    return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || (ch >= '0' && ch <= '9');
}

// Refuses the insertion in progress: the entry keeps its text as it was, and the default
// handler never sees the new text.
void RejectInsertion(GtkEditable* pEditable, gpointer pvHandler, gpointer pvData) {
    g_signal_handlers_block_by_func(pEditable, pvHandler, pvData);
    gchar* szCurrent = g_strdup(gtk_entry_get_text(GTK_ENTRY(pEditable)));
    gtk_entry_set_text(GTK_ENTRY(pEditable), szCurrent);
    g_free(szCurrent);
    g_signal_handlers_unblock_by_func(pEditable, pvHandler, pvData);
    g_signal_stop_emission_by_name(pEditable, "insert_text");
}

gint InsertionLength(const gchar* szText, gint iLen) {
    return iLen < 0 ? static_cast<gint>(strlen(szText)) : iLen;
}

}  // namespace

gboolean GUIEntryFilter::Copypaste_callback(GtkWidget* /*pWidget*/, GdkEvent* pEvent,
                                            gpointer /*pvData*/) {
    if (pEvent == nullptr) {
        return FALSE;
    }
    const GdkEventKey& key = pEvent->key;
    if ((key.state & GDK_CONTROL_MASK) != 0 && (key.keyval == GDK_V || key.keyval == GDK_v)) {
        return TRUE;
    }
    return pEvent->button.button == NY_GUI_RIGHT_BUTTON ? TRUE : FALSE;
}

void GUIEntryFilter::BlockPasteRoutes(GtkWidget* pEntry) {
    g_signal_connect(pEntry, "paste-clipboard", G_CALLBACK(StopPaste), nullptr);
    g_signal_connect(pEntry, "popup-menu", G_CALLBACK(RefuseMenu), nullptr);
    g_signal_connect(pEntry, "button-press-event", G_CALLBACK(RefuseMiddleButton), nullptr);
    gtk_drag_dest_unset(pEntry);
}

void GUIEntryFilter::on_entry_insert_capacity(GtkEditable* pEditable, gchar* szText, gint iLen,
                                              gint* /*piPos*/, gpointer /*pvData*/) {
    if (szText == nullptr || !GTK_IS_ENTRY(pEditable)) {
        return;
    }
    gint iHeld = static_cast<gint>(strlen(gtk_entry_get_text(GTK_ENTRY(pEditable))));
    if (iHeld + InsertionLength(szText, iLen) > NY_GUI_PIN_FIELD_TEXT) {
        g_signal_stop_emission_by_name(pEditable, "insert_text");
    }
}

bool GUIEntryFilter::IsAdmitted(const char* szText, gint iLen, const char* szSpecial) {
    for (gint i = 0; i < iLen; ++i) {
        char ch = szText[i];
        bool bSpecial = szSpecial != nullptr && ch != '\0' && strchr(szSpecial, ch) != nullptr;
        if (!IsAlnum(ch) && !bSpecial) {
            return false;
        }
    }
    return true;
}

void GUIEntryFilter::on_entry_insert(GtkEditable* pEditable, gchar* szText, gint iLen,
                                     gint* /*piPos*/, gpointer pvData) {
    if (szText == nullptr || !GTK_IS_ENTRY(pEditable)) {
        return;
    }
    if (!IsAdmitted(szText, InsertionLength(szText, iLen), nullptr)) {
        RejectInsertion(pEditable, reinterpret_cast<gpointer>(on_entry_insert), pvData);
    }
}

void GUIEntryFilter::on_entry_insert_special(GtkEditable* pEditable, gchar* szText, gint iLen,
                                             gint* /*piPos*/, gpointer pvSpecialChars) {
    if (szText == nullptr || !GTK_IS_ENTRY(pEditable)) {
        return;
    }
    gint iCount = InsertionLength(szText, iLen);
    bool bAdmitted = false;
    if (iCount == 1 && szText[0] == ' ') {
        gint iCursor = gtk_editable_get_position(pEditable);
        gint iEnd = static_cast<gint>(g_utf8_strlen(gtk_entry_get_text(GTK_ENTRY(pEditable)), -1));
        bAdmitted = iCursor != 0 && iCursor != iEnd;
    } else {
        bAdmitted = IsAdmitted(szText, iCount, static_cast<const char*>(pvSpecialChars));
    }
    if (!bAdmitted) {
        RejectInsertion(pEditable, reinterpret_cast<gpointer>(on_entry_insert_special),
                        pvSpecialChars);
    }
}
