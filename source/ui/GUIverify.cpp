#include "ui/GUIverify.h"

#include "log/NyLog.h"
#include "runtime/NyResult.h"
#include "ui/GUIEntryFilter.h"

namespace {

// Texts of the dialog.
constexpr unsigned int NY_VERIFY_ID_TITLE = 0x21007A;
constexpr unsigned int NY_VERIFY_ID_TITLE_KIND2 = 0x210106;
constexpr unsigned int NY_VERIFY_ID_TIPS = 0x21007E;
constexpr unsigned int NY_VERIFY_ID_CAPTION = 0x21007F;
constexpr unsigned int NY_VERIFY_ID_OK = 0x210011;
constexpr unsigned int NY_VERIFY_ID_CANCEL = 0x210012;
// PIN kind that selects the second title.
constexpr uint32_t NY_VERIFY_PIN_KIND_ALT = 2;

}  // namespace

GUIverify::GUIverify(const tagBlkUiParam* pReq, CConfig* pConfig) : m_pConfig(pConfig) {
    InitBlockCopy(&m_blkParam, pReq);
}

GUIverify::~GUIverify() {
    WipeBlockCopy(&m_blkParam);
    m_pConfig = nullptr;
    m_pWindow = nullptr;
}

unsigned int GUIverify::run() {
    char szDir[NY_GUI_PATH_SIZE];
    if (GetResourceDir(szDir) != NY_OK) {
        return NY_ERR_BAD_ARGUMENT;
    }
    NY_LOG(LOG_INFO, "GUIverify::run() enter");
    AcquireGui();
    Build(szDir);
    ShowAndRun(&m_pWindow, m_pPinEntry, NY_GUI_WM_FUNCTIONS, &m_u4Finished, &m_bStopRequested);
    ReleaseGui();
    NY_LOG(LOG_INFO, "GUIverify::run() leave");
    return NY_OK;
}

void GUIverify::Build(const char* szDir) {
    GtkBuilder* pBuilder = LoadBuilder(szDir, "verify.glade");
    m_pWindow = GetWidget(pBuilder, "verify_window");
    m_pOkButton = GetWidget(pBuilder, "verify_idok");
    GtkWidget* pCancel = GetWidget(pBuilder, "verify_idcancle");
    m_pPinEntry = GetWidget(pBuilder, "verify_pin");
    m_pInputTips = GetWidget(pBuilder, "verify_inputtips");
    GtkWidget* pTips = GetWidget(pBuilder, "verify_tips");
    GtkWidget* pCaption = GetWidget(pBuilder, "verify_pos");
    SetLogo(GetWidget(pBuilder, "verify_image"), szDir);

    PreparePinEntry(m_pPinEntry, NyUiParamGetU4(&m_blkParam, UI_OFS_VERIFY_MAX_LEN));
    bool bAltKind = NyUiParamGetU4(&m_blkParam, UI_OFS_VERIFY_PIN_KIND) == NY_VERIFY_PIN_KIND_ALT;
    SetWidgetText(m_pConfig, bAltKind ? NY_VERIFY_ID_TITLE_KIND2 : NY_VERIFY_ID_TITLE, m_pWindow);
    SetWidgetText(m_pConfig, NY_VERIFY_ID_TIPS, pTips);
    SetWidgetText(m_pConfig, NY_VERIFY_ID_CAPTION, pCaption);
    SetWidgetText(m_pConfig, NY_VERIFY_ID_OK, m_pOkButton);
    SetWidgetText(m_pConfig, NY_VERIFY_ID_CANCEL, pCancel);
    SetEntryCaption(m_pPinEntry, pCaption);

    SetWidgetFont(m_pOkButton, NY_GUI_FONT, NY_GUI_FONT_SIZE, NY_TRUE);
    SetWidgetFont(pCancel, NY_GUI_FONT, NY_GUI_FONT_SIZE, NY_TRUE);
    SetWidgetFont(m_pPinEntry, NY_GUI_FONT, NY_GUI_PIN_FONT_SIZE, NY_FALSE);
    SetWidgetFont(m_pInputTips, NY_GUI_FONT, NY_GUI_FONT_SIZE, NY_FALSE);
    SetWidgetFont(pTips, NY_GUI_FONT, NY_GUI_FONT_SIZE, NY_FALSE);
    SetWidgetFont(pCaption, NY_GUI_FONT, NY_GUI_FONT_SIZE, NY_FALSE);

    if (m_pWindow != nullptr) {
        g_signal_connect(m_pWindow, "destroy", G_CALLBACK(destroy_callback), this);
    }
    if (m_pOkButton != nullptr && pCancel != nullptr && m_pPinEntry != nullptr) {
        g_signal_connect(m_pOkButton, "pressed", G_CALLBACK(OnOk_callback), this);
        g_signal_connect(m_pOkButton, "activate", G_CALLBACK(OnOk_callback), this);
        g_signal_connect(pCancel, "pressed", G_CALLBACK(OnCancle_callback), this);
        g_signal_connect(pCancel, "activate", G_CALLBACK(OnCancle_callback), this);
        g_signal_connect(m_pPinEntry, "activate", G_CALLBACK(OnOk_callback), this);
        g_signal_connect(m_pPinEntry, "key-press-event",
                         G_CALLBACK(GUIEntryFilter::Copypaste_callback), this);
        g_signal_connect(m_pPinEntry, "button-press-event",
                         G_CALLBACK(GUIEntryFilter::Copypaste_callback), this);
        g_signal_connect(m_pPinEntry, "insert-text", G_CALLBACK(GUIEntryFilter::on_entry_insert),
                         this);
    }
    m_uTimerId = g_timeout_add(NY_GUI_POLL_MS, Poll_callback, this);
    RefreshInput();
    g_object_unref(pBuilder);
}

bool GUIverify::IsLongEnough() {
    return ShowInputCount(m_pConfig, m_pPinEntry, m_pInputTips) >=
           NyUiParamGetU4(&m_blkParam, UI_OFS_VERIFY_MIN_LEN);
}

unsigned int GUIverify::stop() {
    return StopDialog(&m_pWindow, &m_bStopRequested);
}

unsigned int GUIverify::GetResponse(unsigned char* pu1Buf, unsigned int* pu4Len) {
    CopyBlockOut(&m_blkParam, pu1Buf, pu4Len);
    return NY_OK;
}

unsigned int GUIverify::IsFinished() {
    return m_u4Finished.load();
}

void GUIverify::destroy_callback(GtkWidget* /*pWidget*/, gpointer pvSelf) {
    GUIverify* pSelf = static_cast<GUIverify*>(pvSelf);
    NY_LOG(LOG_INFO, "GUIverify::destroy_callback() enter");
    if (pSelf->m_blkParam.enRes != UI_RESULT_OK) {
        pSelf->m_blkParam.enRes = UI_RESULT_CANCEL;
    }
    if (pSelf->m_uTimerId != 0) {
        g_source_remove(pSelf->m_uTimerId);
        pSelf->m_uTimerId = 0;
    }
    pSelf->m_pWindow = nullptr;
    pSelf->m_pPinEntry = nullptr;
    pSelf->m_pInputTips = nullptr;
    pSelf->m_pOkButton = nullptr;
    pSelf->m_u4Finished.store(1);
    QuitMainLoop();
    NY_LOG(LOG_INFO, "GUIverify::destroy_callback() leave");
}

gboolean GUIverify::OnOk_callback(GtkWidget* /*pWidget*/, gpointer pvSelf) {
    GUIverify* pSelf = static_cast<GUIverify*>(pvSelf);
    if (pSelf->m_pWindow == nullptr || !pSelf->IsLongEnough()) {
        return FALSE;
    }
    StorePin(&pSelf->m_blkParam, UI_OFS_VERIFY_PIN, UI_OFS_VERIFY_PIN_LEN, pSelf->m_pPinEntry);
    pSelf->m_blkParam.enRes = UI_RESULT_OK;
    gtk_widget_destroy(pSelf->m_pWindow);
    return TRUE;
}

void GUIverify::OnCancle_callback(GtkWidget* /*pWidget*/, gpointer pvSelf) {
    GUIverify* pSelf = static_cast<GUIverify*>(pvSelf);
    pSelf->m_blkParam.enRes = UI_RESULT_CANCEL;
    QuitMainLoop();
    if (pSelf->m_pWindow != nullptr) {
        GtkWidget* pWindow = pSelf->m_pWindow;
        pSelf->m_pWindow = nullptr;
        gtk_widget_destroy(pWindow);
    }
}

// Runs from the main loop without the GDK lock, so it takes it for its GTK calls.
gboolean GUIverify::Poll_callback(gpointer pvSelf) {
    GUIverify* pSelf = static_cast<GUIverify*>(pvSelf);
    gdk_threads_enter();
    pSelf->RefreshInput();
    gdk_threads_leave();
    return TRUE;
}

void GUIverify::RefreshInput() {
    if (m_pWindow != nullptr && m_pOkButton != nullptr) {
        gtk_widget_set_sensitive(m_pOkButton, IsLongEnough() ? TRUE : FALSE);
    }
}
