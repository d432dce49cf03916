#include "ui/GUILayoutCache.h"

#include <map>
#include <string>

namespace {

// All three are touched only under the GDK lock.
std::map<std::string, GtkBuilder*>& Prepared() {
    static auto* s_pPrepared = new std::map<std::string, GtkBuilder*>();
    return *s_pPrepared;
}
std::map<std::string, GdkPixbuf*>& Images() {
    static auto* s_pImages = new std::map<std::string, GdkPixbuf*>();
    return *s_pImages;
}
std::string& LastTaken() {
    static auto* s_pLast = new std::string();
    return *s_pLast;
}

GtkBuilder* BuildLayout(const char* szPath) {
    GtkBuilder* pBuilder = gtk_builder_new();
    GError* pError = nullptr;
    if (gtk_builder_add_from_file(pBuilder, szPath, &pError) == 0) {
        g_warning("%s: %s", szPath, pError != nullptr ? pError->message : "not loaded");
        g_clear_error(&pError);
    }
    return pBuilder;
}

// Idle callback (GDK lock held): a hidden window of that layout, ready for the next dialog.
gboolean PrepareIdle(gpointer pvPath) {
    auto* pstrPath = static_cast<std::string*>(pvPath);
    if (Prepared().count(*pstrPath) == 0) {
        Prepared()[*pstrPath] = BuildLayout(pstrPath->c_str());
    }
    delete pstrPath;
    return FALSE;
}

}  // namespace

GtkBuilder* NyGuiTakeLayout(const char* szPath) {
    LastTaken() = szPath;
    auto it = Prepared().find(szPath);
    if (it == Prepared().end()) {
        return BuildLayout(szPath);
    }
    GtkBuilder* pBuilder = it->second;
    Prepared().erase(it);
    return pBuilder;
}

void NyGuiPrepareNextLayout() {
    if (!LastTaken().empty()) {
        gdk_threads_add_idle(PrepareIdle, new std::string(LastTaken()));
    }
}

GdkPixbuf* NyGuiImage(const char* szPath) {
    auto it = Images().find(szPath);
    if (it == Images().end()) {
        GdkPixbuf* pPixbuf = gdk_pixbuf_new_from_file(szPath, nullptr);
        if (pPixbuf == nullptr) {
            return nullptr;
        }
        it = Images().emplace(szPath, pPixbuf).first;
    }
    return GDK_PIXBUF(g_object_ref(it->second));
}
