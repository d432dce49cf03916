#include "ui/GUIconfirm.h"

#include <cstring>

#include "CConfig.h"
#include "log/NyLog.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"
#include "ui/GUIImageCache.h"
#include "ui/GUIconfirmText.h"
#include "uiblock/NyUiConfirmParam.h"

namespace {

constexpr unsigned int NY_CONFIRM_ID_TITLE = 0x21006C;
constexpr unsigned int NY_CONFIRM_ID_REMAIN = 0x210077;  // "%d" seconds left

constexpr guint NY_CONFIRM_TICK_MS = 1000;
// The device picture is shown at this size whatever the file's own.
constexpr int NY_CONFIRM_IMAGE_WIDTH = 200;
constexpr int NY_CONFIRM_IMAGE_HEIGHT = 100;
// Window-manager functions of a window that must not be closed by the user.
constexpr GdkWMFunction NY_CONFIRM_WM_MOVE_ONLY = GDK_FUNC_MOVE;

}  // namespace

GUIconfirm::GUIconfirm(const tagBlkUiParam* pReq, CConfig* pConfig) : m_pConfig(pConfig) {
    InitBlockCopy(&m_blkParam, pReq);
}

GUIconfirm::~GUIconfirm() {
    WipeBlockCopy(&m_blkParam);
    m_pConfig = nullptr;
    m_pWindow = nullptr;
}

unsigned int GUIconfirm::run() {
    char szDir[NY_GUI_PATH_SIZE];
    if (GetResourceDir(szDir) != NY_OK) {
        return NY_ERR_BAD_ARGUMENT;
    }
    NY_LOG(LOG_INFO, "GUIconfirm::run() enter");
    AcquireGui();
    Build(szDir);
    ShowAndRun(&m_pWindow, nullptr, m_bClosable ? NY_GUI_WM_FUNCTIONS : NY_CONFIRM_WM_MOVE_ONLY,
               &m_u4Finished, &m_bStopRequested);
    m_u4Finished.store(1);  // also when the window could not be built
    ReleaseGui();
    NY_LOG(LOG_INFO, "GUIconfirm::run() leave");
    return NY_OK;
}

void GUIconfirm::Build(const char* szDir) {
    GtkBuilder* pBuilder = LoadBuilder(szDir, "confirm.glade");
    m_pWindow = GetWidget(pBuilder, "confirm_window");
    m_pTips = GetWidget(pBuilder, "confirm_tips");
    m_pRemainCounts = GetWidget(pBuilder, "confirm_remaincounts");
    m_pDeviceImage = GetWidget(pBuilder, "confirm_image2");
    SetLogo(GetWidget(pBuilder, "confirm_image1"), szDir);
    g_object_unref(pBuilder);

    uint32_t u4Kind = NyUiParamGetU4(&m_blkParam, UI_OFS_CONFIRM_KIND);
    m_bClosable = NyUiParamGetU4(&m_blkParam, UI_OFS_CONFIRM_CLOSABLE) != 0;
    LoadDeviceImage(szDir, u4Kind);
    SetWidgetText(m_pConfig, NY_CONFIRM_ID_TITLE, m_pWindow);
    char szText[NY_GUI_LONG_TEXT_SIZE];
    if (SelectMessage(szText, sizeof(szText))) {
        ShowMessage(szText, WrapLimit(u4Kind));
    }
    SetWidgetFont(m_pTips, NY_GUI_FONT, NY_GUI_FONT_SIZE, NY_FALSE);
    SetWidgetFont(m_pRemainCounts, NY_GUI_FONT, NY_GUI_FONT_SIZE, NY_FALSE);

    if (m_pWindow != nullptr) {
        gtk_window_set_modal(GTK_WINDOW(m_pWindow), TRUE);
        g_signal_connect(m_pWindow, "destroy", G_CALLBACK(destroy_callback), this);
        g_signal_connect(m_pWindow, "delete-event", G_CALLBACK(delete_callback), this);
    }
    m_u4RemainSeconds = NyConfirmFirstCount(NyUiParamGetU4(&m_blkParam, UI_OFS_CONFIRM_TIMEOUT));
    m_bCountdown = NyConfirmHasCountdown(NyUiParamGetU4(&m_blkParam, UI_OFS_CONFIRM_TIMEOUT));
    Tick();
    m_uTimerId = g_timeout_add(NY_CONFIRM_TICK_MS, Countdown_callback, this);
}

void GUIconfirm::LoadDeviceImage(const char* szDir, uint32_t u4Kind) {
    char szPath[NY_GUI_PATH_SIZE];
    ResourcePath(
        szDir,
        NyUiIsFingerprintKind(u4Kind) ? "USBKey_Fingerprint_Confirm.gif" : "USBKey_Confirm.png",
        szPath);
    GdkPixbuf* pPixbuf = NyGuiImage(szPath);
    if (pPixbuf == nullptr) {
        return;
    }
    GdkPixbuf* pScaled = gdk_pixbuf_scale_simple(pPixbuf, NY_CONFIRM_IMAGE_WIDTH,
                                                 NY_CONFIRM_IMAGE_HEIGHT, GDK_INTERP_HYPER);
    if (pScaled != nullptr && m_pDeviceImage != nullptr) {
        gtk_image_set_from_pixbuf(GTK_IMAGE(m_pDeviceImage), pScaled);
    }
    if (pScaled != nullptr) {
        g_object_unref(pScaled);
    }
    g_object_unref(pPixbuf);
}

bool GUIconfirm::SelectMessage(char* szText, unsigned int u4Size) {
    uint32_t u4Kind = NyUiParamGetU4(&m_blkParam, UI_OFS_CONFIRM_KIND);
    uint32_t u4Detail = NyUiParamGetU4(&m_blkParam, UI_OFS_CONFIRM_DETAIL);
    if (u4Kind == UI_CTT_FINGERPRINT_ENROL) {
        unsigned int u4TextId = NyConfirmStageTextId(u4Detail);
        LoadText(m_pConfig, u4TextId != 0 ? u4TextId : NY_CONFIRM_ID_ENROL, szText, u4Size);
        return true;
    }
    if (u4Kind == UI_CTT_FINGERPRINT_VERIFY) {
        VerifyMessage(szText, u4Size);
        return true;
    }
    const BlkConfirmTextTag* pEntry = NyConfirmKindText(u4Kind);
    if (pEntry == nullptr) {
        return false;
    }
    LoadText(m_pConfig, pEntry->u4TextId, szText, u4Size);
    if (pEntry->bFormatted) {
        char szFormat[NY_GUI_LONG_TEXT_SIZE];
        NyStrCopy(szFormat, sizeof(szFormat), szText);
        NyStrPrintf(szText, u4Size, szFormat, u4Detail);
    }
    return true;
}

void GUIconfirm::VerifyMessage(char* szText, unsigned int u4Size) {
    uint32_t u4Attempts = NyUiParamGetU4(&m_blkParam, UI_OFS_CONFIRM_ATTEMPTS);
    char szVerify[NY_GUI_LONG_TEXT_SIZE];
    LoadText(m_pConfig, NY_CONFIRM_ID_VERIFY, szVerify, sizeof(szVerify));
    if (u4Attempts < NY_CONFIRM_ATTEMPTS_SHOWN_MIN || u4Attempts > NY_CONFIRM_ATTEMPTS_SHOWN_MAX) {
        NyStrCopy(szText, u4Size, szVerify);
        return;
    }
    char szAttempts[NY_GUI_LONG_TEXT_SIZE];
    LoadText(m_pConfig, NY_CONFIRM_ID_ATTEMPTS, szAttempts, sizeof(szAttempts));
    NyStrPrintf(szText, u4Size, "%s%u\n%s", szAttempts, u4Attempts, szVerify);
}

unsigned int GUIconfirm::WrapLimit(uint32_t u4Kind) const {
    if (u4Kind == NY_CONFIRM_KIND_PLAIN) {
        return NY_CONFIRM_KIND1_WRAP_LIMIT;
    }
    gint iWidthChars = m_pTips != nullptr ? gtk_label_get_width_chars(GTK_LABEL(m_pTips)) : 0;
    return iWidthChars > 0 ? static_cast<unsigned int>(iWidthChars) : 0;
}

void GUIconfirm::ShowMessage(const char* szText, unsigned int u4Limit) {
    if (m_pTips == nullptr) {
        return;
    }
    gtk_label_set_text(GTK_LABEL(m_pTips), szText);
    if (strlen(szText) > u4Limit) {
        gtk_label_set_line_wrap(GTK_LABEL(m_pTips), TRUE);
    }
}

void GUIconfirm::Tick() {
    if (m_pRemainCounts != nullptr) {
        char szFormat[NY_GUI_TEXT_SIZE];
        char szText[NY_GUI_TEXT_SIZE];
        LoadText(m_pConfig, NY_CONFIRM_ID_REMAIN, szFormat, sizeof(szFormat));
        NyStrPrintf(szText, sizeof(szText), szFormat, m_u4RemainSeconds);
        // Without a time-out to count down the label stays empty (a countdown frozen at 0 or
        // running through negative seconds tells the user nothing true).
        gtk_label_set_text(GTK_LABEL(m_pRemainCounts), m_bCountdown ? szText : "");
    }
    if (m_u4RemainSeconds > 0) {
        --m_u4RemainSeconds;
    }
}

unsigned int GUIconfirm::update(const unsigned char* pu1Data, unsigned int u4Len) {
    if (pu1Data == nullptr) {
        return NY_ERR_BAD_ARGUMENT;
    }
    gdk_threads_enter();
    uint32_t u4Result = m_blkParam.enRes;
    memcpy(&m_blkParam, pu1Data, u4Len < sizeof(m_blkParam) ? u4Len : sizeof(m_blkParam));
    m_blkParam.enRes = u4Result;
    uint32_t u4Kind = NyUiParamGetU4(&m_blkParam, UI_OFS_CONFIRM_KIND);
    if (NyUiIsFingerprintKind(u4Kind)) {
        m_u4RemainSeconds = NyUiParamGetU4(&m_blkParam, UI_OFS_CONFIRM_TIMEOUT);
        m_bCountdown = NyConfirmHasCountdown(m_u4RemainSeconds);
        unsigned int u4TextId =
            NyConfirmUpdateTextId(NyUiParamGetU4(&m_blkParam, UI_OFS_CONFIRM_DETAIL));
        if (u4TextId != 0) {
            char szText[NY_GUI_LONG_TEXT_SIZE];
            LoadText(m_pConfig, u4TextId, szText, sizeof(szText));
            ShowMessage(szText, WrapLimit(u4Kind));
        }
    }
    gdk_threads_leave();
    return NY_OK;
}

unsigned int GUIconfirm::stop() {
    NY_LOG(LOG_INFO, "GUIconfirm::stop() enter");
    gdk_threads_enter();
    m_bStopRequested.store(true);
    // Only a dialog whose window exists owns the running main loop.
    if (m_pWindow != nullptr) {
        QuitMainLoop();
        NY_LOG(LOG_INFO, "GUIconfirm::stop() start destory");
        GtkWidget* pWindow = m_pWindow;
        m_pWindow = nullptr;
        gtk_widget_destroy(pWindow);
        NY_LOG(LOG_INFO, "GUIconfirm::stop() start end");
    }
    gdk_threads_leave();
    return NY_OK;
}

unsigned int GUIconfirm::GetResponse(unsigned char* pu1Buf, unsigned int* pu4Len) {
    CopyBlockOut(&m_blkParam, pu1Buf, pu4Len);
    return NY_OK;
}

unsigned int GUIconfirm::IsFinished() {
    return m_u4Finished.load();
}

void GUIconfirm::destroy_callback(GtkWidget* /*pWidget*/, gpointer pvSelf) {
    GUIconfirm* pSelf = static_cast<GUIconfirm*>(pvSelf);
    NY_LOG(LOG_INFO, "GUIconfirm::destroy_callback enter");
    if (pSelf->m_blkParam.enRes != UI_RESULT_OK) {
        pSelf->m_blkParam.enRes = UI_RESULT_CANCEL;
    }
    if (pSelf->m_uTimerId != 0) {
        g_source_remove(pSelf->m_uTimerId);
        pSelf->m_uTimerId = 0;
    }
    pSelf->m_pWindow = nullptr;
    pSelf->m_pTips = nullptr;
    pSelf->m_pRemainCounts = nullptr;
    pSelf->m_pDeviceImage = nullptr;
    pSelf->m_u4Finished.store(1);
    QuitMainLoop();
    NY_LOG(LOG_INFO, "GUIconfirm::destroy_callback leave");
}

// A window that may not be closed ignores the close request of the window manager.
gboolean GUIconfirm::delete_callback(GtkWidget* /*pWidget*/, GdkEvent* /*pEvent*/,
                                     gpointer pvSelf) {
    return static_cast<GUIconfirm*>(pvSelf)->m_bClosable ? FALSE : TRUE;
}

// Runs from the main loop without the GDK lock, so it takes it for its GTK calls.
gboolean GUIconfirm::Countdown_callback(gpointer pvSelf) {
    gdk_threads_enter();
    static_cast<GUIconfirm*>(pvSelf)->Tick();
    gdk_threads_leave();
    return TRUE;
}
