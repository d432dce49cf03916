// The widgets of this process's dialogs, found by their GtkBuilder ids and read in-process, for
// what a screen reader does not tell: the exact markup, and values that change faster than the
// accessibility tree can be polled. Every call takes the GDK lock and looks the widget up afresh,
// so a window that has gone meanwhile reads as absent instead of crashing.
#pragma once

#include <gtk/gtk.h>

#include <cstring>
#include <string>
#include <vector>

namespace NyGuiTestWidgetsDetail {

inline GtkWidget* FindIn(GtkWidget* pWidget, const char* szId) {
    const char* szName = gtk_buildable_get_name(GTK_BUILDABLE(pWidget));
    if (szName != nullptr && strcmp(szName, szId) == 0) {
        return pWidget;
    }
    if (!GTK_IS_CONTAINER(pWidget)) {
        return nullptr;
    }
    GList* pChildren = gtk_container_get_children(GTK_CONTAINER(pWidget));
    GtkWidget* pFound = nullptr;
    for (GList* p = pChildren; p != nullptr && pFound == nullptr; p = p->next) {
        pFound = FindIn(GTK_WIDGET(p->data), szId);
    }
    g_list_free(pChildren);
    return pFound;
}

// The widget with that id; the GDK lock must be held.
inline GtkWidget* Find(const char* szId) {
    GList* pWindows = gtk_window_list_toplevels();
    GtkWidget* pFound = nullptr;
    for (GList* p = pWindows; p != nullptr && pFound == nullptr; p = p->next) {
        pFound = FindIn(GTK_WIDGET(p->data), szId);
    }
    g_list_free(pWindows);
    return pFound;
}

// Runs pfn on the widget under the GDK lock; false when there is none.
template <typename F>
inline bool WithWidget(const char* szId, F pfn) {
    gdk_threads_enter();
    GtkWidget* pWidget = Find(szId);
    if (pWidget != nullptr) {
        pfn(pWidget);
    }
    gdk_threads_leave();
    return pWidget != nullptr;
}

}  // namespace NyGuiTestWidgetsDetail

// A label's text without markup, and its text with markup; "" when there is no such label.
inline std::string NyGuiTestLabelText(const char* szId) {
    std::string strText;
    NyGuiTestWidgetsDetail::WithWidget(
        szId, [&](GtkWidget* p) { strText = gtk_label_get_text(GTK_LABEL(p)); });
    return strText;
}

inline std::string NyGuiTestLabelMarkup(const char* szId) {
    std::string strText;
    NyGuiTestWidgetsDetail::WithWidget(
        szId, [&](GtkWidget* p) { strText = gtk_label_get_label(GTK_LABEL(p)); });
    return strText;
}

// Screen coordinates of a widget's centre; false when it is not on screen.
inline bool NyGuiTestWidgetCentre(const char* szId, int* piX, int* piY) {
    bool bShown = false;
    NyGuiTestWidgetsDetail::WithWidget(szId, [&](GtkWidget* p) {
        GdkWindow* pWindow = gtk_widget_get_window(p);
        if (pWindow == nullptr || !gtk_widget_get_mapped(p)) {
            return;
        }
        GtkAllocation alloc;
        gtk_widget_get_allocation(p, &alloc);
        int iX = 0;
        int iY = 0;
        gdk_window_get_origin(pWindow, &iX, &iY);
        // A widget without a window of its own is allocated in its parent window's coordinates.
        if (!gtk_widget_get_has_window(p)) {
            iX += alloc.x;
            iY += alloc.y;
        }
        *piX = iX + alloc.width / 2;
        *piY = iY + alloc.height / 2;
        bShown = true;
    });
    return bShown;
}

// Calls pfnHandler each time the label's text is set, until the label goes.
inline gulong NyGuiTestOnLabelSet(const char* szId, GCallback pfnHandler, gpointer pvData) {
    gulong uHandler = 0;
    NyGuiTestWidgetsDetail::WithWidget(szId, [&](GtkWidget* p) {
        uHandler = g_signal_connect(p, "notify::label", pfnHandler, pvData);
    });
    return uHandler;
}

// Stock id of the icon an entry shows at its end ("" for none).
inline std::string NyGuiTestEntryEndIcon(const char* szId) {
    std::string strIcon;
    NyGuiTestWidgetsDetail::WithWidget(szId, [&](GtkWidget* p) {
        const gchar* szStock = gtk_entry_get_icon_stock(GTK_ENTRY(p), GTK_ENTRY_ICON_SECONDARY);
        strIcon = szStock != nullptr ? szStock : "";
    });
    return strIcon;
}
