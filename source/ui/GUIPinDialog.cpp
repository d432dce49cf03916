#include "ui/GUIPinDialog.h"

#include <gdk/gdkkeysyms.h>

#include <cstring>

#include "CConfig.h"
#include "log/NyLog.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"
#include "ui/GUIEntryFilter.h"
#include "ui/GUISecureBuffer.h"
#include "ui/GUISpareLayout.h"

namespace {

constexpr gfloat NY_GUI_CAPTION_XALIGN = 1.0f;
constexpr gfloat NY_GUI_CAPTION_YALIGN = 0.5f;
// A refusal reads as an error: dark red text.
constexpr GdkColor NY_GUI_ERROR_COLOUR = {0, 0xC000, 0x1000, 0x1000};

}  // namespace

GUIPinDialog::GUIPinDialog(const tagBlkUiParam* pReq, CConfig* pConfig, const char* szClassName)
    : m_pConfig(pConfig), m_szClassName(szClassName) {
    InitBlockCopy(&m_blkParam, pReq);
    NyGuiNoteSecureMemory(&m_blkParam);
}

GUIPinDialog::~GUIPinDialog() {
    WipeBlockCopy(&m_blkParam);
    m_pConfig = nullptr;
    m_pWindow = nullptr;
}

unsigned int GUIPinDialog::run() {
    char szDir[NY_GUI_PATH_SIZE];
    if (GetResourceDir(szDir) != NY_OK) {
        return NY_ERR_BAD_ARGUMENT;
    }
    NY_LOG(LOG_INFO, "%s::run() enter", m_szClassName);
    AcquireGui();
    GtkWidget* pFocus = Build(szDir);
    ShowAndRun(&m_pWindow, pFocus, WindowFunctions(), &m_u4Finished, &m_bStopRequested);
    ReleaseGui();
    NY_LOG(LOG_INFO, "%s::run() leave", m_szClassName);
    return NY_OK;
}

void GUIPinDialog::Rehearse() {
    char szDir[NY_GUI_PATH_SIZE];
    if (GetResourceDir(szDir) != NY_OK) {
        return;
    }
    m_bLogDestroy = false;
    AcquireGui();
    Build(szDir);
    if (m_pWindow != nullptr) {
        gtk_widget_destroy(m_pWindow);
        m_pWindow = nullptr;
    }
    NyGuiPrepareSpareNow();
    ReleaseGui();
}

unsigned int GUIPinDialog::stop() {
    return StopDialog(&m_pWindow, &m_bStopRequested);
}

unsigned int GUIPinDialog::GetResponse(unsigned char* pu1Buf, unsigned int* pu4Len) {
    CopyBlockOut(&m_blkParam, pu1Buf, pu4Len);
    return NY_OK;
}

unsigned int GUIPinDialog::IsFinished() {
    return m_u4Finished.load();
}

GtkBuilder* GUIPinDialog::LoadDialog(const char* szDir, const char* szName, GtkWidget** ppOk,
                                     GtkWidget** ppCancel) {
    char szId[NY_GUI_TEXT_SIZE];
    NyStrPrintf(szId, sizeof(szId), "%s.glade", szName);
    GtkBuilder* pBuilder = LoadBuilder(szDir, szId);
    NyStrPrintf(szId, sizeof(szId), "%s_window", szName);
    m_pWindow = GetWidget(pBuilder, szId);
    NyStrPrintf(szId, sizeof(szId), "%s_idok", szName);
    *ppOk = GetWidget(pBuilder, szId);
    NyStrPrintf(szId, sizeof(szId), "%s_idcancle", szName);
    *ppCancel = GetWidget(pBuilder, szId);
    NyStrPrintf(szId, sizeof(szId), "%s_image", szName);
    SetLogo(GetWidget(pBuilder, szId), szDir);
    return pBuilder;
}

GtkWidget* GUIPinDialog::FinishBuild(GtkBuilder* pBuilder, GtkWidget* pFirst) {
    StartPolling();
    g_object_unref(pBuilder);
    if (pFirst != nullptr) {
        gtk_widget_grab_focus(pFirst);
    }
    return pFirst;
}

void GUIPinDialog::ConnectButtons(GtkWidget* pWindow, GtkWidget* pOk, GtkWidget* pCancel) {
    m_pOkButton = pOk;
    m_pCancelButton = pCancel;
    if (pWindow != nullptr) {
        g_signal_connect(pWindow, "destroy", G_CALLBACK(destroy_callback), this);
        g_signal_connect(pWindow, "key-press-event", G_CALLBACK(EscapeKey_callback), this);
    }
    if (pOk != nullptr) {
        g_signal_connect(pOk, "pressed", G_CALLBACK(OnOk_callback), this);
        g_signal_connect(pOk, "activate", G_CALLBACK(OnOk_callback), this);
    }
    if (pCancel != nullptr) {
        g_signal_connect(pCancel, "pressed", G_CALLBACK(OnCancle_callback), this);
        g_signal_connect(pCancel, "activate", G_CALLBACK(OnCancle_callback), this);
    }
}

void GUIPinDialog::ConnectEntry(GtkWidget* pEntry, bool bPin, GCallback pfnFilter,
                                gpointer pvFilterData) {
    if (pEntry == nullptr) {
        return;
    }
    g_signal_connect(pEntry, "activate", G_CALLBACK(OnOk_callback), this);
    // OK follows every change at once; the poll only refreshes what it shows meanwhile.
    g_signal_connect(pEntry, "changed", G_CALLBACK(EntryChanged_callback), this);
    if (bPin) {
        g_signal_connect(pEntry, "key-press-event", G_CALLBACK(GUIEntryFilter::Copypaste_callback),
                         this);
        g_signal_connect(pEntry, "button-press-event",
                         G_CALLBACK(GUIEntryFilter::Copypaste_callback), this);
        GUIEntryFilter::BlockPasteRoutes(pEntry);
        g_signal_connect(pEntry, "insert-text",
                         G_CALLBACK(GUIEntryFilter::on_entry_insert_capacity), nullptr);
    }
    if (pfnFilter != nullptr) {
        g_signal_connect(pEntry, "insert-text", pfnFilter, pvFilterData);
    }
}

void GUIPinDialog::StartPolling() {
    m_uTimerId = g_timeout_add(NY_GUI_POLL_MS, Poll_callback, this);
    RefreshOk();
}

void GUIPinDialog::SetFonts(std::initializer_list<GtkWidget*> lButtons,
                            std::initializer_list<GtkWidget*> lEntries,
                            std::initializer_list<GtkWidget*> lLabels) {
    for (GtkWidget* pButton : lButtons) {
        SetWidgetFont(pButton, NY_GUI_FONT, NY_GUI_FONT_SIZE, NY_TRUE);
    }
    for (GtkWidget* pEntry : lEntries) {
        SetWidgetFont(pEntry, NY_GUI_FONT, NY_GUI_PIN_FONT_SIZE, NY_FALSE);
    }
    for (GtkWidget* pLabel : lLabels) {
        SetWidgetFont(pLabel, NY_GUI_FONT, NY_GUI_FONT_SIZE, NY_FALSE);
    }
}

void GUIPinDialog::AlignCaptions(std::initializer_list<GtkWidget*> lCaptions) {
    for (GtkWidget* pCaption : lCaptions) {
        if (pCaption != nullptr) {
            gtk_misc_set_alignment(GTK_MISC(pCaption), NY_GUI_CAPTION_XALIGN,
                                   NY_GUI_CAPTION_YALIGN);
        }
    }
}

unsigned int GUIPinDialog::ConfigU4(unsigned int u4Id, unsigned int u4Default) const {
    return m_pConfig != nullptr ? m_pConfig->GetU4(u4Id, u4Default) : u4Default;
}

void GUIPinDialog::Refuse(GtkWidget* pLabel, const char* szMessage,
                          std::initializer_list<GtkWidget*> lCleared, GtkWidget* pFocus) {
    if (pLabel != nullptr) {
        gtk_widget_modify_fg(pLabel, GTK_STATE_NORMAL, &NY_GUI_ERROR_COLOUR);
        gtk_label_set_text(GTK_LABEL(pLabel), szMessage);
    }
    for (GtkWidget* pEntry : lCleared) {
        if (pEntry != nullptr) {
            gtk_entry_set_text(GTK_ENTRY(pEntry), "");
        }
    }
    if (pFocus != nullptr) {
        gtk_widget_grab_focus(pFocus);
    }
}

unsigned int GUIPinDialog::EntryLength(GtkWidget* pEntry) {
    return static_cast<unsigned int>(strlen(EntryText(pEntry)));
}

const char* GUIPinDialog::EntryText(GtkWidget* pEntry) {
    return pEntry != nullptr ? gtk_entry_get_text(GTK_ENTRY(pEntry)) : "";
}

void GUIPinDialog::RefreshOk() {
    if (m_pWindow != nullptr && m_pOkButton != nullptr) {
        gtk_widget_set_sensitive(m_pOkButton, RefreshCounters() ? TRUE : FALSE);
    }
}

void GUIPinDialog::OnDestroyed() {
    if (m_bLogDestroy) {
        NY_LOG(LOG_INFO, "%s::destroy_callback() enter", m_szClassName);
    }
    if (m_blkParam.enRes != UI_RESULT_OK) {
        m_blkParam.enRes = UI_RESULT_CANCEL;
    }
    if (m_uTimerId != 0) {
        g_source_remove(m_uTimerId);
        m_uTimerId = 0;
    }
    m_pWindow = nullptr;
    m_pOkButton = nullptr;
    m_pCancelButton = nullptr;
    ForgetWidgets();
    m_u4Finished.store(1);
    QuitMainLoop();
    if (m_bLogDestroy) {
        NY_LOG(LOG_INFO, "%s::destroy_callback() leave", m_szClassName);
    }
}

void GUIPinDialog::OnOk() {
    if (m_pWindow == nullptr || !RefreshCounters() || !Accept()) {
        return;
    }
    m_blkParam.enRes = UI_RESULT_OK;
    gtk_widget_destroy(m_pWindow);
}

void GUIPinDialog::OnCancel() {
    m_blkParam.enRes = UI_RESULT_CANCEL;
    QuitMainLoop();
    if (m_pWindow != nullptr) {
        GtkWidget* pWindow = m_pWindow;
        m_pWindow = nullptr;
        gtk_widget_destroy(pWindow);
    }
}

void GUIPinDialog::destroy_callback(GtkWidget* /*pWidget*/, gpointer pvSelf) {
    static_cast<GUIPinDialog*>(pvSelf)->OnDestroyed();
}

gboolean GUIPinDialog::OnOk_callback(GtkWidget* /*pWidget*/, gpointer pvSelf) {
    static_cast<GUIPinDialog*>(pvSelf)->OnOk();
    return FALSE;
}

void GUIPinDialog::OnCancle_callback(GtkWidget* /*pWidget*/, gpointer pvSelf) {
    static_cast<GUIPinDialog*>(pvSelf)->OnCancel();
}

gboolean GUIPinDialog::EscapeKey_callback(GtkWidget* /*pWidget*/, GdkEventKey* pEvent,
                                          gpointer pvSelf) {
    auto* pSelf = static_cast<GUIPinDialog*>(pvSelf);
    if (pEvent->keyval != GDK_Escape || pSelf->m_pCancelButton == nullptr ||
        !gtk_widget_get_visible(pSelf->m_pCancelButton)) {
        return FALSE;
    }
    pSelf->OnCancel();
    return TRUE;
}

// Emitted inside the dialog's own event handling, with the GDK lock already held.
void GUIPinDialog::EntryChanged_callback(GtkEditable* /*pEditable*/, gpointer pvSelf) {
    static_cast<GUIPinDialog*>(pvSelf)->RefreshOk();
}

// Runs from the main loop without the GDK lock, so it takes it for its GTK calls.
gboolean GUIPinDialog::Poll_callback(gpointer pvSelf) {
    gdk_threads_enter();
    static_cast<GUIPinDialog*>(pvSelf)->RefreshOk();
    gdk_threads_leave();
    return TRUE;
}
