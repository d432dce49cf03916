#include "NyGuiTestWidgets.h"

#include <cstring>

#include "support/NyTestProcess.h"

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

void CollectPinTexts(GtkWidget* pWidget, std::vector<std::string>* pvTexts) {
    if (GTK_IS_ENTRY(pWidget) && !gtk_entry_get_visibility(GTK_ENTRY(pWidget)) &&
        gtk_widget_get_visible(pWidget)) {
        pvTexts->push_back(gtk_entry_get_text(GTK_ENTRY(pWidget)));
    }
    if (GTK_IS_CONTAINER(pWidget)) {
        GList* pChildren = gtk_container_get_children(GTK_CONTAINER(pWidget));
        for (GList* p = pChildren; p != nullptr; p = p->next) {
            CollectPinTexts(GTK_WIDGET(p->data), pvTexts);
        }
        g_list_free(pChildren);
    }
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

std::string NyGuiTestResPath(const std::string& strName) {
    return std::string(NY_TEST_BIN_DIR) + "/res/" + strName;
}

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

bool NyGuiTestLabelWraps(const char* szId) {
    bool bWraps = false;
    WithWidget(szId, [&](GtkWidget* p) { bWraps = gtk_label_get_line_wrap(GTK_LABEL(p)); });
    return bWraps;
}

GdkPixbuf* NyGuiTestImagePixbuf(const char* szId, bool bChild) {
    GdkPixbuf* pPixbuf = nullptr;
    WithWidget(szId, [&](GtkWidget* p) {
        GtkWidget* pImage = bChild ? gtk_bin_get_child(GTK_BIN(p)) : p;
        if (pImage != nullptr && GTK_IS_IMAGE(pImage) &&
            gtk_image_get_storage_type(GTK_IMAGE(pImage)) == GTK_IMAGE_PIXBUF) {
            pPixbuf = GDK_PIXBUF(g_object_ref(gtk_image_get_pixbuf(GTK_IMAGE(pImage))));
        }
    });
    return pPixbuf;
}

bool NyGuiTestSamePixels(GdkPixbuf* pA, GdkPixbuf* pB) {
    if (pA == nullptr || pB == nullptr) {
        return false;
    }
    int iWidth = gdk_pixbuf_get_width(pA);
    int iHeight = gdk_pixbuf_get_height(pA);
    int iChannels = gdk_pixbuf_get_n_channels(pA);
    if (iWidth != gdk_pixbuf_get_width(pB) || iHeight != gdk_pixbuf_get_height(pB) ||
        iChannels != gdk_pixbuf_get_n_channels(pB)) {
        return false;
    }
    for (int y = 0; y < iHeight; ++y) {
        const guchar* pu1RowA = gdk_pixbuf_get_pixels(pA) + y * gdk_pixbuf_get_rowstride(pA);
        const guchar* pu1RowB = gdk_pixbuf_get_pixels(pB) + y * gdk_pixbuf_get_rowstride(pB);
        if (memcmp(pu1RowA, pu1RowB, static_cast<size_t>(iWidth * iChannels)) != 0) {
            return false;
        }
    }
    return true;
}

bool NyGuiTestImageShowsFile(const char* szId, const std::string& strFile, bool bChild) {
    GdkPixbuf* pShown = NyGuiTestImagePixbuf(szId, bChild);
    GdkPixbuf* pFile = gdk_pixbuf_new_from_file(NyGuiTestResPath(strFile).c_str(), nullptr);
    bool bSame = NyGuiTestSamePixels(pShown, pFile);
    if (pShown != nullptr) {
        g_object_unref(pShown);
    }
    if (pFile != nullptr) {
        g_object_unref(pFile);
    }
    return bSame;
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

std::vector<std::string> NyGuiTestPinTexts() {
    std::vector<std::string> vTexts;
    gdk_threads_enter();
    GList* pWindows = gtk_window_list_toplevels();
    for (GList* p = pWindows; p != nullptr; p = p->next) {
        CollectPinTexts(GTK_WIDGET(p->data), &vTexts);
    }
    g_list_free(pWindows);
    gdk_threads_leave();
    return vTexts;
}
