#include "NyGuiTestWidgets.h"

#include <cstring>

namespace {

GtkWidget* FindIn(GtkWidget* pWidget, const char* szId) {
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
GtkWidget* Find(const char* szId) {
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
bool WithWidget(const char* szId, F pfn) {
    gdk_threads_enter();
    GtkWidget* pWidget = Find(szId);
    if (pWidget != nullptr) {
        pfn(pWidget);
    }
    gdk_threads_leave();
    return pWidget != nullptr;
}

}  // namespace

std::string NyGuiTestLabelText(const char* szId) {
    std::string strText;
    WithWidget(szId, [&](GtkWidget* p) { strText = gtk_label_get_text(GTK_LABEL(p)); });
    return strText;
}

std::string NyGuiTestLabelMarkup(const char* szId) {
    std::string strText;
    WithWidget(szId, [&](GtkWidget* p) { strText = gtk_label_get_label(GTK_LABEL(p)); });
    return strText;
}

bool NyGuiTestWidgetCentre(const char* szId, int* piX, int* piY) {
    bool bShown = false;
    WithWidget(szId, [&](GtkWidget* p) {
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

gulong NyGuiTestOnLabelSet(const char* szId, GCallback pfnHandler, gpointer pvData) {
    gulong uHandler = 0;
    WithWidget(szId, [&](GtkWidget* p) {
        uHandler = g_signal_connect(p, "notify::label", pfnHandler, pvData);
    });
    return uHandler;
}

std::string NyGuiTestEntryEndIcon(const char* szId) {
    std::string strIcon;
    WithWidget(szId, [&](GtkWidget* p) {
        const gchar* szStock = gtk_entry_get_icon_stock(GTK_ENTRY(p), GTK_ENTRY_ICON_SECONDARY);
        strIcon = szStock != nullptr ? szStock : "";
    });
    return strIcon;
}
