#include "ui/GUISpareLayout.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

using Steps = std::vector<std::pair<std::string, std::function<void(GtkWidget*)>>>;

// All three are touched only under the GDK lock; kept for the life of the process.
std::map<std::string, GtkBuilder*>& Spares() {
    static auto* s_pSpares = new std::map<std::string, GtkBuilder*>();
    return *s_pSpares;
}
// The steps noted while the last dialog of each layout was built.
std::map<std::string, Steps>& NotedSteps() {
    static auto* s_pSteps = new std::map<std::string, Steps>();
    return *s_pSteps;
}
std::string& LastTaken() {
    static auto* s_pLast = new std::string();
    return *s_pLast;
}

void RealizeTree(GtkWidget* pWidget, gpointer /*pvData*/) {
    gtk_widget_realize(pWidget);
    if (GTK_IS_CONTAINER(pWidget)) {
        gtk_container_forall(GTK_CONTAINER(pWidget), RealizeTree, nullptr);
    }
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

// A spare gets the steps noted for its layout, then its windows are realized and laid out:
// creating the X windows and shaping the texts cost about as much as the parse. The windows
// stay unmapped until a dialog shows them.
void PrepareSpare(const std::string& strPath) {
    if (Spares().count(strPath) != 0) {
        return;
    }
    GtkBuilder* pBuilder = BuildLayout(strPath.c_str());
    for (const auto& step : NotedSteps()[strPath]) {
        GObject* pObject = gtk_builder_get_object(pBuilder, step.first.c_str());
        if (pObject != nullptr && GTK_IS_WIDGET(pObject)) {
            step.second(GTK_WIDGET(pObject));
        }
    }
    GSList* pObjects = gtk_builder_get_objects(pBuilder);
    for (GSList* p = pObjects; p != nullptr; p = p->next) {
        if (GTK_IS_WINDOW(p->data)) {
            RealizeTree(GTK_WIDGET(p->data), nullptr);
            GtkRequisition requisition;
            gtk_widget_size_request(GTK_WIDGET(p->data), &requisition);
        }
    }
    g_slist_free(pObjects);
    Spares()[strPath] = pBuilder;
}

// Idle callback: runs without the GDK lock.
gboolean PrepareIdle(gpointer pvPath) {
    gdk_threads_enter();
    PrepareSpare(*static_cast<std::string*>(pvPath));
    gdk_threads_leave();
    return FALSE;
}

void DeletePath(gpointer pvPath) {
    delete static_cast<std::string*>(pvPath);
}

void DeleteHandlerPath(gpointer pvPath, GClosure* /*pClosure*/) {
    DeletePath(pvPath);
}

// Once the dialog has been drawn, the spare is built at low priority so that it never comes
// between the user and the dialog just shown.
gboolean PrepareAfterExpose(GtkWidget* pWidget, GdkEventExpose* /*pEvent*/, gpointer pvPath) {
    g_idle_add_full(G_PRIORITY_LOW, PrepareIdle,
                    new std::string(*static_cast<std::string*>(pvPath)), DeletePath);
    // Once is enough; the handler's copy of the path goes with it.
    g_signal_handlers_disconnect_by_func(pWidget, reinterpret_cast<gpointer>(PrepareAfterExpose),
                                         pvPath);
    return FALSE;
}

}  // namespace

GtkBuilder* NyGuiTakeLayout(const char* szPath) {
    LastTaken() = szPath;
    NotedSteps()[szPath].clear();
    auto it = Spares().find(szPath);
    if (it == Spares().end()) {
        return BuildLayout(szPath);
    }
    GtkBuilder* pBuilder = it->second;
    Spares().erase(it);
    return pBuilder;
}

void NyGuiNoteStep(GtkWidget* pWidget, std::function<void(GtkWidget*)> fnStep) {
    const gchar* szId = pWidget != nullptr && GTK_IS_BUILDABLE(pWidget)
                            ? gtk_buildable_get_name(GTK_BUILDABLE(pWidget))
                            : nullptr;
    if (szId != nullptr && !LastTaken().empty()) {
        NotedSteps()[LastTaken()].emplace_back(szId, std::move(fnStep));
    }
}

void NyGuiPrepareSpareAfterDrawn(GtkWidget* pWindow) {
    if (pWindow == nullptr || LastTaken().empty()) {
        return;
    }
    g_signal_connect_data(pWindow, "expose-event", G_CALLBACK(PrepareAfterExpose),
                          new std::string(LastTaken()), DeleteHandlerPath, G_CONNECT_AFTER);
}

void NyGuiPrepareSpareNow() {
    if (!LastTaken().empty()) {
        PrepareSpare(LastTaken());
    }
}
