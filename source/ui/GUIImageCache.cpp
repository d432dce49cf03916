#include "ui/GUIImageCache.h"

#include <map>
#include <string>

GdkPixbuf* NyGuiImage(const char* szPath) {
    // Touched only under the GDK lock; kept for the life of the process.
    static auto* s_pImages = new std::map<std::string, GdkPixbuf*>();
    auto it = s_pImages->find(szPath);
    if (it == s_pImages->end()) {
        GdkPixbuf* pPixbuf = gdk_pixbuf_new_from_file(szPath, nullptr);
        if (pPixbuf == nullptr) {
            return nullptr;
        }
        it = s_pImages->emplace(szPath, pPixbuf).first;
    }
    return GDK_PIXBUF(g_object_ref(it->second));
}
