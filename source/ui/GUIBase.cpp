#include "ui/GUIBase.h"

#include <X11/Xlib.h>
#include <gdk/gdkx.h>
#include <unistd.h>

#include <cstring>

#include "log/NyLog.h"
#include "runtime/NyResult.h"

GMutex GUIBase::s_GuiMutex;

namespace {

// 16-bit GDK colour components of the dialogs' light grey background.
constexpr guint16 NY_GUI_BG_COMPONENT = 0xF0F0;

}  // namespace

unsigned int GUIBase::run() {
    return NY_OK;
}

unsigned int GUIBase::stop() {
    return NY_OK;
}

unsigned int GUIBase::update(const unsigned char* /*pu1Data*/, unsigned int /*u4Len*/) {
    return NY_OK;
}

unsigned int GUIBase::GetResponse(unsigned char* /*pu1Buf*/, unsigned int* /*pu4Len*/) {
    return NY_OK;
}

unsigned int GUIBase::IsFinished() {
    return 0;
}

unsigned int GUIBase::GetModuleFileName(char* szBuf, unsigned int u4Size) {
    ssize_t nLen = -1;
    if (szBuf != nullptr && u4Size > 1) {
        nLen = readlink("/proc/self/exe", szBuf, u4Size - 1);
    }
    if (nLen < 0 || static_cast<size_t>(nLen) >= u4Size - 1) {
        NY_LOG(LOG_ERROR, "GUIBase::GetModuleFileName function error");
        return NY_ERR_BAD_ARGUMENT;
    }
    szBuf[nLen] = '\0';
    char* pSlash = strrchr(szBuf, '/');
    if (pSlash != nullptr) {
        *pSlash = '\0';
    }
    return NY_OK;
}

unsigned int GUIBase::SetWidgetFont(GtkWidget* pWidget, const char* szFamily, unsigned int u4Size,
                                    EnBool enChild) {
    GtkWidget* pTarget = pWidget;
    if (pWidget != nullptr && enChild != NY_FALSE) {
        pTarget = GTK_IS_BIN(pWidget) ? gtk_bin_get_child(GTK_BIN(pWidget)) : nullptr;
    }
    if (szFamily == nullptr || pTarget == nullptr) {
        NY_LOG(LOG_ERROR, "GUIBase::SetWidgetFont() param is error");
        return 0;
    }
    PangoFontDescription* pDesc = pango_font_description_from_string(szFamily);
    if (pDesc == nullptr) {
        NY_LOG(LOG_ERROR,
               "GUIBase::SetWidgetFont() call pango_font_description_from_string fault... ");
        return 0;
    }
    pango_font_description_set_size(pDesc, static_cast<gint>(u4Size) * PANGO_SCALE);
    gtk_widget_modify_font(pTarget, pDesc);
    pango_font_description_free(pDesc);
    return 1;
}

unsigned int GUIBase::Set_BG_Color(GtkWidget* pWidget) {
    if (pWidget == nullptr) {
        return 0;
    }
    GdkColor color = {0, NY_GUI_BG_COMPONENT, NY_GUI_BG_COMPONENT, NY_GUI_BG_COMPONENT};
    gtk_widget_modify_bg(pWidget, GTK_STATE_NORMAL, &color);
    return 1;
}

void GUIBase::FocusEvent(GdkDrawable* pWindow) {
    if (pWindow == nullptr || !GDK_IS_WINDOW(pWindow)) {
        return;
    }
    GdkEvent* pEvent = gdk_event_new(GDK_FOCUS_CHANGE);
    pEvent->focus_change.window = GDK_WINDOW(g_object_ref(pWindow));
    pEvent->focus_change.send_event = TRUE;
    pEvent->focus_change.in = TRUE;
    gtk_main_do_event(pEvent);
    gdk_event_free(pEvent);  // drops the reference taken above
}

void GUIBase::SetInputFoucs(GtkWidget* pWidget) {
    GdkDisplay* pDisplay =
        pWidget != nullptr ? gtk_widget_get_display(pWidget) : gdk_display_get_default();
    if (pDisplay == nullptr) {
        return;
    }
    Display* pXDisplay = GDK_DISPLAY_XDISPLAY(pDisplay);
    XSetInputFocus(pXDisplay, XDefaultRootWindow(pXDisplay), RevertToNone, CurrentTime);
    XFlush(pXDisplay);
}
