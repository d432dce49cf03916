#include "ui/GUIBase.h"

#include <X11/Xlib.h>
#include <gdk/gdkx.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "CConfig.h"
#include "log/NyLog.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"
#include "ui/GUIImageCache.h"
#include "ui/GUISecureBuffer.h"
#include "ui/GUISpareLayout.h"
#include "uiblock/NyUiParam.h"

GMutex GUIBase::s_GuiMutex;

namespace {

// 16-bit GDK colour components of the dialogs' light grey background.
constexpr guint16 NY_GUI_BG_COMPONENT = 0xF0F0;
// Text shown on a PIN entry's counter label: a format with the character count.
constexpr unsigned int NY_GUI_ID_INPUT_COUNT = 0x210085;
constexpr gunichar NY_GUI_PIN_MASK_CHAR = '*';

// Once the window manager has mapped the dialog, the dialog asks to be the active window, so
// that the keyboard cannot fall back to the application that had it before.
gboolean ActivateWhenMapped(GtkWidget* pWidget, GdkEvent* /*pEvent*/, gpointer /*pvData*/) {
    GdkWindow* pWindow = gtk_widget_get_window(pWidget);
    if (pWindow != nullptr) {
        gdk_window_focus(pWindow, gdk_x11_get_server_time(pWindow));
    }
    return FALSE;
}

gboolean QuitWhenFinished(gpointer pvFinished) {
    if (static_cast<const std::atomic<uint32_t>*>(pvFinished)->load() != 0) {
        gtk_main_quit();
    }
    return TRUE;
}

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
    std::shared_ptr<PangoFontDescription> pDesc(pango_font_description_from_string(szFamily),
                                                pango_font_description_free);
    if (pDesc == nullptr) {
        NY_LOG(LOG_ERROR,
               "GUIBase::SetWidgetFont() call pango_font_description_from_string fault... ");
        return 0;
    }
    pango_font_description_set_size(pDesc.get(), static_cast<gint>(u4Size) * PANGO_SCALE);
    ApplyFont(pTarget, pDesc.get());
    NyGuiNoteStep(pWidget, [pDesc, enChild](GtkWidget* pSpare) {
        GtkWidget* pSpareTarget = enChild == NY_FALSE  ? pSpare
                                  : GTK_IS_BIN(pSpare) ? gtk_bin_get_child(GTK_BIN(pSpare))
                                                       : nullptr;
        if (pSpareTarget != nullptr) {
            ApplyFont(pSpareTarget, pDesc.get());
        }
    });
    return 1;
}

// A font already in place is left alone: setting it again would lay the widget out anew.
void GUIBase::ApplyFont(GtkWidget* pWidget, const PangoFontDescription* pDesc) {
    const GtkRcStyle* pRcStyle = gtk_widget_get_modifier_style(pWidget);
    if (pRcStyle->font_desc == nullptr ||
        !pango_font_description_equal(pRcStyle->font_desc, pDesc)) {
        gtk_widget_modify_font(pWidget, const_cast<PangoFontDescription*>(pDesc));
    }
}

unsigned int GUIBase::Set_BG_Color(GtkWidget* pWidget) {
    if (pWidget == nullptr) {
        return 0;
    }
    ApplyBackground(pWidget);
    NyGuiNoteStep(pWidget, ApplyBackground);
    return 1;
}

void GUIBase::ApplyBackground(GtkWidget* pWidget) {
    static const GdkColor s_color = {0, NY_GUI_BG_COMPONENT, NY_GUI_BG_COMPONENT,
                                     NY_GUI_BG_COMPONENT};
    const GtkRcStyle* pRcStyle = gtk_widget_get_modifier_style(pWidget);
    if ((pRcStyle->color_flags[GTK_STATE_NORMAL] & GTK_RC_BG) == 0 ||
        !gdk_color_equal(&pRcStyle->bg[GTK_STATE_NORMAL], &s_color)) {
        gtk_widget_modify_bg(pWidget, GTK_STATE_NORMAL, &s_color);
    }
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

void GUIBase::InitBlockCopy(tagBlkUiParam* pCopy, const tagBlkUiParam* pReq) {
    if (pReq != nullptr) {
        memcpy(pCopy, pReq, sizeof(*pCopy));
    } else {
        memset(pCopy, 0, sizeof(*pCopy));
    }
    pCopy->enRes = UI_RESULT_CANCEL;
}

void GUIBase::WipeBlockCopy(tagBlkUiParam* pCopy) {
    NyMemSafeClear(pCopy, sizeof(*pCopy));
}

unsigned int GUIBase::CopyBlockOut(const tagBlkUiParam* pCopy, unsigned char* pu1Buf,
                                   unsigned int* pu4Len) {
    return NyGetReturnData(pCopy, sizeof(*pCopy), pu1Buf, pu4Len);
}

unsigned int GUIBase::GetResourceDir(char* szDir) {
    memset(szDir, 0, NY_GUI_PATH_SIZE);
    if (GetModuleFileName(szDir, NY_GUI_PATH_SIZE) != NY_OK || szDir[0] == '\0') {
        return NY_ERR_BAD_ARGUMENT;
    }
    return NY_OK;
}

void GUIBase::AcquireGui() {
    g_mutex_lock(&s_GuiMutex);
    gdk_threads_enter();
    UseSharedFontMap();
}

// Pango keeps its default font map per thread, and every asynchronous dialog runs on a thread
// of its own: without this each dialog would load the system's fonts afresh, which costs more
// than building the rest of the window. One map serves every dialog thread in turn (they run
// one at a time, under the GDK lock).
void GUIBase::UseSharedFontMap() {
    static PangoFontMap* s_pFontMap = nullptr;
    if (s_pFontMap == nullptr) {
        s_pFontMap = pango_cairo_font_map_get_default();
        g_object_ref(s_pFontMap);
        return;
    }
    // Asking a new thread for its default would already build a map of its own: set it at once.
    pango_cairo_font_map_set_default(PANGO_CAIRO_FONT_MAP(s_pFontMap));
}

void GUIBase::ReleaseGui() {
    gdk_threads_leave();
    g_mutex_unlock(&s_GuiMutex);
}

void GUIBase::ResourcePath(const char* szDir, const char* szName, char* szPath) {
    NyStrPrintf(szPath, NY_GUI_PATH_SIZE, "%s/res/%s", szDir, szName);
}

GtkBuilder* GUIBase::LoadBuilder(const char* szDir, const char* szGladeName) {
    char szPath[NY_GUI_PATH_SIZE];
    ResourcePath(szDir, szGladeName, szPath);
    return NyGuiTakeLayout(szPath);
}

GtkWidget* GUIBase::GetWidget(GtkBuilder* pBuilder, const char* szId) {
    return GTK_WIDGET(gtk_builder_get_object(pBuilder, szId));
}

void GUIBase::SetLogo(GtkWidget* pImage, const char* szDir) {
    char szPath[NY_GUI_PATH_SIZE];
    ResourcePath(szDir, "Logo_Long.bmp", szPath);
    GdkPixbuf* pPixbuf = NyGuiImage(szPath);
    if (pImage != nullptr && pPixbuf != nullptr) {
        gtk_image_set_from_pixbuf(GTK_IMAGE(pImage), pPixbuf);
    }
    if (pPixbuf != nullptr) {
        g_object_unref(pPixbuf);
    }
}

void GUIBase::PreparePinEntry(GtkWidget* pEntry, uint32_t u4MaxLen) {
    if (pEntry == nullptr) {
        return;
    }
    GtkEntryBuffer* pBuffer = NyGuiSecureEntryBufferNew();
    gtk_entry_set_buffer(GTK_ENTRY(pEntry), pBuffer);
    g_object_unref(pBuffer);
    gtk_entry_set_visibility(GTK_ENTRY(pEntry), FALSE);
    gtk_entry_set_invisible_char(GTK_ENTRY(pEntry), NY_GUI_PIN_MASK_CHAR);
    // Never more than the answer's PIN field carries (a maximum of 0 would mean unlimited):
    // what is typed is what the client gets, never a silently cut copy.
    uint32_t u4Capacity = NY_UI_PIN_FIELD_SIZE - 1;
    uint32_t u4Cap = u4MaxLen == 0 || u4MaxLen > u4Capacity ? u4Capacity : u4MaxLen;
    gtk_entry_set_max_length(GTK_ENTRY(pEntry), static_cast<gint>(u4Cap));
}

void GUIBase::LoadText(CConfig* pConfig, unsigned int u4Id, char* szText, unsigned int u4Size) {
    memset(szText, 0, u4Size);
    if (pConfig != nullptr && pConfig->GetString(u4Id, szText, u4Size) != NY_OK) {
        szText[0] = '\0';
    }
}

void GUIBase::SetWidgetText(CConfig* pConfig, unsigned int u4Id, GtkWidget* pWidget,
                            unsigned int u4Size) {
    char szText[NY_GUI_LONG_TEXT_SIZE];
    LoadText(pConfig, u4Id, szText, std::min(u4Size, NY_GUI_LONG_TEXT_SIZE));
    if (pWidget == nullptr) {
        return;
    }
    ApplyText(pWidget, szText);
    NyGuiNoteStep(pWidget, [strText = std::string(szText)](GtkWidget* pSpare) {
        ApplyText(pSpare, strText.c_str());
    });
}

// A text already in place is left alone: setting it again would lay the widget out anew.
void GUIBase::ApplyText(GtkWidget* pWidget, const char* szText) {
    if (GTK_IS_WINDOW(pWidget)) {
        const gchar* szOld = gtk_window_get_title(GTK_WINDOW(pWidget));
        if (szOld == nullptr || strcmp(szOld, szText) != 0) {
            gtk_window_set_title(GTK_WINDOW(pWidget), szText);
        }
    } else if (GTK_IS_BUTTON(pWidget)) {
        const gchar* szOld = gtk_button_get_label(GTK_BUTTON(pWidget));
        if (szOld == nullptr || strcmp(szOld, szText) != 0) {
            gtk_button_set_label(GTK_BUTTON(pWidget), szText);
        }
    } else if (GTK_IS_LABEL(pWidget)) {
        GtkLabel* pLabel = GTK_LABEL(pWidget);
        if (gtk_label_get_use_markup(pLabel) || gtk_label_get_use_underline(pLabel) ||
            strcmp(gtk_label_get_label(pLabel), szText) != 0) {
            gtk_label_set_text(pLabel, szText);
        }
    }
}

void GUIBase::SetEntryCaption(GtkWidget* pEntry, GtkWidget* pCaption) {
    if (pEntry == nullptr || pCaption == nullptr) {
        return;
    }
    gtk_label_set_mnemonic_widget(GTK_LABEL(pCaption), pEntry);
    atk_object_set_name(gtk_widget_get_accessible(pEntry), gtk_label_get_text(GTK_LABEL(pCaption)));
}

unsigned int GUIBase::ShowInputCount(CConfig* pConfig, GtkWidget* pEntry, GtkWidget* pLabel) {
    if (pEntry == nullptr) {
        return 0;
    }
    // Characters, as the user sees them (one '*' each), not bytes.
    unsigned int u4Len = static_cast<unsigned int>(gtk_entry_get_text_length(GTK_ENTRY(pEntry)));
    char szText[NY_GUI_TEXT_SIZE] = "";
    if (u4Len != 0) {
        char szFormat[NY_GUI_TEXT_SIZE];
        LoadText(pConfig, NY_GUI_ID_INPUT_COUNT, szFormat, sizeof(szFormat));
        NyStrPrintf(szText, sizeof(szText), szFormat, u4Len);
    }
    if (pLabel != nullptr) {
        gtk_label_set_text(GTK_LABEL(pLabel), szText);
    }
    return u4Len;
}

void GUIBase::StorePin(tagBlkUiParam* pBlock, uint32_t u4PinOffset, uint32_t u4LenOffset,
                       GtkWidget* pEntry) {
    const char* szPin = pEntry != nullptr ? gtk_entry_get_text(GTK_ENTRY(pEntry)) : "";
    char* szField = reinterpret_cast<char*>(NyUiParamBytes(pBlock, u4PinOffset));
    memset(szField, 0, NY_UI_PIN_FIELD_SIZE);
    NyStrCopy(szField, NY_UI_PIN_FIELD_SIZE, szPin);
    NyUiParamSetU4(pBlock, u4LenOffset, static_cast<uint32_t>(strlen(szField)));
}

void GUIBase::ShowAndRun(GtkWidget** ppWindow, GtkWidget* pFocus, GdkWMFunction enFunctions,
                         const std::atomic<uint32_t>* pu4Finished,
                         const std::atomic<bool>* pbStopRequested) {
    if (*ppWindow == nullptr) {
        return;
    }
    if (pbStopRequested->load()) {
        gtk_widget_destroy(*ppWindow);
        *ppWindow = nullptr;
        return;
    }
    Set_BG_Color(*ppWindow);
    gtk_window_set_keep_above(GTK_WINDOW(*ppWindow), TRUE);
    g_signal_connect(*ppWindow, "map-event", G_CALLBACK(ActivateWhenMapped), nullptr);
    gtk_widget_show(*ppWindow);
    gdk_window_set_functions(gtk_widget_get_window(*ppWindow), enFunctions);
    SetInputFoucs(pFocus);
    // The map request goes out now, not when the main loop first looks at the display.
    gdk_flush();
    guint uWatch = g_timeout_add(NY_GUI_POLL_MS, QuitWhenFinished,
                                 const_cast<std::atomic<uint32_t>*>(pu4Finished));
    NyGuiPrepareSpareAfterDrawn(*ppWindow);
    gtk_main();
    g_source_remove(uWatch);
}

unsigned int GUIBase::StopDialog(GtkWidget** ppWindow, std::atomic<bool>* pbStopRequested) {
    gdk_threads_enter();
    pbStopRequested->store(true);
    // Only a dialog whose window exists owns the running main loop: a dialog still waiting
    // for its turn must not end the loop of the one on screen.
    if (*ppWindow != nullptr) {
        QuitMainLoop();
        GtkWidget* pWindow = *ppWindow;
        *ppWindow = nullptr;
        gtk_widget_destroy(pWindow);
    }
    gdk_threads_leave();
    return NY_OK;
}

void GUIBase::QuitMainLoop() {
    if (gtk_main_level() > 0) {
        gtk_main_quit();
    }
}
