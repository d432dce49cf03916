// Signal handlers that guard the text entries of the dialogs: no pasting into PIN entries, and
// only the characters a PIN (or a label) may hold.
#pragma once

#include <gtk/gtk.h>

// Bytes admitted besides letters and digits by the wider filter: for new PINs, and the same
// followed by '?' for device labels.
extern const char NY_GUI_PIN_SPECIAL_CHARS[];
extern const char NY_GUI_LABEL_SPECIAL_CHARS[];

class GUIEntryFilter {
public:
    // "key-press-event" and "button-press-event" of a PIN entry: TRUE (consumed) for Ctrl+V
    // and for the right button, which would open the menu with Paste. The event is read as a
    // key event and as a button event at once, so the button test applies to every event.
    static gboolean Copypaste_callback(GtkWidget* pWidget, GdkEvent* pEvent, gpointer pvData);

    // "insert-text" of a PIN entry: the insertion goes ahead only if every byte is a letter or
    // a digit; otherwise nothing of it is inserted.
    static void on_entry_insert(GtkEditable* pEditable, gchar* szText, gint iLen, gint* piPos,
                                gpointer pvData);

    // "insert-text" with letters, digits and the bytes of the NUL-terminated set passed as the
    // handler's data (NY_GUI_PIN_SPECIAL_CHARS or NY_GUI_LABEL_SPECIAL_CHARS). A lone space is
    // admitted only inside the text, never at its start or end.
    static void on_entry_insert_special(GtkEditable* pEditable, gchar* szText, gint iLen,
                                        gint* piPos, gpointer pvSpecialChars);

    // Closes every other way text can be pasted or dropped into a PIN entry: the
    // "paste-clipboard" action (whatever key the theme binds to it, and the menu's Paste), the
    // middle button's primary selection, the keyboard's context menu, and drag and drop.
    static void BlockPasteRoutes(GtkWidget* pEntry);

    // "insert-text" of a PIN entry: refuses an insertion that would make the text longer, in
    // bytes, than the answer's PIN field can carry.
    static void on_entry_insert_capacity(GtkEditable* pEditable, gchar* szText, gint iLen,
                                         gint* piPos, gpointer pvData);

    // Whether every byte of szText[0, iLen) is a letter, a digit or in szSpecial (may be null).
    static bool IsAdmitted(const char* szText, gint iLen, const char* szSpecial);
};
