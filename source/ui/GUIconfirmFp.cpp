#include "ui/GUIconfirmFp.h"

#include <cstring>

#include "log/NyLog.h"
#include "runtime/NyResult.h"
#include "uiblock/NyUiConfirmParam.h"

namespace {

// The dialog's texts are fixed markup, white titles and golden tips on the dark blue window.
constexpr const char* NY_FP_TITLE_ENROL = "<span color='white'>注册指纹</span>";
constexpr const char* NY_FP_TITLE_VERIFY = "<span color='white'>验证指纹</span>";
constexpr const char* NY_FP_TIPS_INITIAL =
    "<span color='DarkGoldenrod1'>请将指纹按压到指纹区域...</span>";

struct BlkFpStageTag {
    uint32_t u4Stage;
    const char* szMarkup;
};

// Stages named by the low byte of the stage code.
constexpr BlkFpStageTag NY_FP_STAGES[] = {
    {UI_FP_STAGE_CHANGE_FINGER, "<span color='DarkGoldenrod1'>请更换手指再次录入指纹！</span>"},
    {UI_FP_STAGE_INVALID_DATA, "<span color='DarkGoldenrod1'>指纹数据无效，请重新录入！</span>"},
    {UI_FP_STAGE_LIFT_FINGER, "<span color='DarkGoldenrod1'>请抬起手指！</span>"},
    {UI_FP_STAGE_PLACE_FINGER,
     "<span color='DarkGoldenrod1'>请将手指放在指纹识别区，进行录入指纹！</span>"},
};
constexpr const char* NY_FP_TIPS_VERIFY_FAILED =
    "<span color='DarkGoldenrod1'>验证指纹失败！</span>";

// The window's dark blue (16-bit GDK components).
constexpr guint16 NY_FP_BG_RED = 0x2828;
constexpr guint16 NY_FP_BG_GREEN = 0x4B4B;
constexpr guint16 NY_FP_BG_BLUE = 0x8C8C;

constexpr unsigned int NY_FP_TITLE_FONT_SIZE = 10;
constexpr unsigned int NY_FP_TIPS_FONT_SIZE = 8;
constexpr guint NY_FP_TIMER_MS = 100;

// The window's event mask is set twice; the second replaces the first.
constexpr gint NY_FP_WINDOW_EVENTS_FIRST = GDK_ENTER_NOTIFY_MASK;  // 4096
constexpr gint NY_FP_WINDOW_EVENTS = GDK_BUTTON_MOTION_MASK;       // 16

// Holds a CLock for the life of a scope.
class CFpLockGuard {
public:
    explicit CFpLockGuard(CLock* pLock) : m_pLock(pLock) { m_pLock->Lock(); }
    ~CFpLockGuard() { m_pLock->Unlock(); }
    CFpLockGuard(const CFpLockGuard&) = delete;
    CFpLockGuard& operator=(const CFpLockGuard&) = delete;

private:
    CLock* m_pLock;
};

}  // namespace

GUIconfirmFp::GUIconfirmFp(const tagBlkUiParam* pReq, CConfig* pConfig) : m_pConfig(pConfig) {
    InitBlockCopy(&m_blkParam, pReq);
}

GUIconfirmFp::~GUIconfirmFp() {
    WipeBlockCopy(&m_blkParam);
    m_pConfig = nullptr;
    m_pWindow = nullptr;
}

const char* GUIconfirmFp::StageMarkup(uint32_t u4Stage) {
    for (const BlkFpStageTag& stage : NY_FP_STAGES) {
        if (stage.u4Stage == (u4Stage & UI_FP_STAGE_MASK)) {
            return stage.szMarkup;
        }
    }
    return u4Stage == UI_FP_VERIFY_FAILED ? NY_FP_TIPS_VERIFY_FAILED : nullptr;
}

unsigned int GUIconfirmFp::run() {
    char szDir[NY_GUI_PATH_SIZE];
    if (GetResourceDir(szDir) != NY_OK) {
        return NY_ERR_BAD_ARGUMENT;
    }
    NY_LOG(LOG_INFO, "GUIconfirmFp::run() enter");
    AcquireGui();
    Build(szDir);
    if (m_pWindow != nullptr && IsClosing()) {
        gtk_widget_destroy(m_pWindow);  // stopped before it was shown
    } else if (m_pWindow != nullptr) {
        gtk_widget_show_all(m_pWindow);
        gtk_main();
    }
    m_u4Finished.store(1);
    ReleaseGui();
    NY_LOG(LOG_INFO, "GUIconfirmFp::run() leave");
    return NY_OK;
}

void GUIconfirmFp::Build(const char* szDir) {
    GtkBuilder* pBuilder = LoadBuilder(szDir, "confirmFp.glade");
    m_pWindow = GetWidget(pBuilder, "confirmFp_window");
    m_pTitle = GetWidget(pBuilder, "stc_title");
    m_pTips = GetWidget(pBuilder, "stc_tips");
    m_pMiddleImage = GetWidget(pBuilder, "image_middle");
    GtkWidget* pCancelBox = GetWidget(pBuilder, "eventbox_cancle");
    g_object_unref(pBuilder);
    if (m_pWindow == nullptr || m_pTitle == nullptr || m_pTips == nullptr ||
        m_pMiddleImage == nullptr || pCancelBox == nullptr) {
        NY_LOG(LOG_ERROR, "GUIconfirmFp::run() confirmFp.glade lacks a widget");
        if (m_pWindow != nullptr) {
            gtk_widget_destroy(m_pWindow);
            m_pWindow = nullptr;
        }
        return;
    }
    GdkColor color = {0, NY_FP_BG_RED, NY_FP_BG_GREEN, NY_FP_BG_BLUE};
    gtk_widget_modify_bg(m_pWindow, GTK_STATE_NORMAL, &color);
    gtk_window_set_position(GTK_WINDOW(m_pWindow), GTK_WIN_POS_CENTER_ALWAYS);
    gtk_window_set_keep_above(GTK_WINDOW(m_pWindow), TRUE);
    BuildPaths(szDir);
    gtk_image_set_from_file(GTK_IMAGE(m_pMiddleImage), m_szInputFpPath);

    bool bEnrol = NyUiParamGetU4(&m_blkParam, UI_OFS_CONFIRM_KIND) == UI_CTT_FINGERPRINT_ENROL;
    SetWidgetFont(m_pTitle, NY_GUI_FONT, NY_FP_TITLE_FONT_SIZE, NY_FALSE);
    gtk_label_set_markup(GTK_LABEL(m_pTitle), bEnrol ? NY_FP_TITLE_ENROL : NY_FP_TITLE_VERIFY);
    // The panel has no title bar; the window manager and screen readers still name it.
    gtk_window_set_title(GTK_WINDOW(m_pWindow), gtk_label_get_text(GTK_LABEL(m_pTitle)));
    SetWidgetFont(m_pTips, NY_GUI_FONT, NY_FP_TIPS_FONT_SIZE, NY_FALSE);
    gtk_label_set_markup(GTK_LABEL(m_pTips), NY_FP_TIPS_INITIAL);

    m_pCancelImage = gtk_image_new_from_file(m_szCancelPath);
    gtk_container_add(GTK_CONTAINER(pCancelBox), m_pCancelImage);
    gtk_widget_set_events(m_pWindow, NY_FP_WINDOW_EVENTS_FIRST);
    gtk_widget_set_events(m_pWindow, NY_FP_WINDOW_EVENTS);
    ConnectSignals(pCancelBox);
    m_uTimerId = g_timeout_add(NY_FP_TIMER_MS, OnTimerCallBackFun, this);
}

void GUIconfirmFp::BuildPaths(const char* szDir) {
    ResourcePath(szDir, "InputFp.png", m_szInputFpPath);
    ResourcePath(szDir, "InputFpAgin.png", m_szInputFpAgainPath);
    ResourcePath(szDir, "confirmFp_cancle.png", m_szCancelPath);
    ResourcePath(szDir, "confirmFp_cancle_hover.png", m_szCancelHoverPath);
}

void GUIconfirmFp::ConnectSignals(GtkWidget* pCancelBox) {
    g_signal_connect(pCancelBox, "button_press_event", G_CALLBACK(OnCancle_callback), this);
    g_signal_connect(pCancelBox, "enter_notify_event", G_CALLBACK(OnEnter_callback), this);
    g_signal_connect(pCancelBox, "leave_notify_event", G_CALLBACK(OnLeave_callback), this);
    g_signal_connect(m_pWindow, "destroy", G_CALLBACK(destroy_callback), this);
}

bool GUIconfirmFp::IsClosing() {
    CFpLockGuard guard(&m_lock);
    return m_bClosing;
}

unsigned int GUIconfirmFp::stop() {
    CFpLockGuard guard(&m_lock);
    m_bClosing = true;
    return NY_OK;
}

unsigned int GUIconfirmFp::update(const unsigned char* pu1Data, unsigned int u4Len) {
    if (pu1Data == nullptr) {
        return NY_ERR_BAD_ARGUMENT;
    }
    CFpLockGuard guard(&m_lock);
    if (m_bClosing) {
        return NY_OK;
    }
    uint32_t u4Result = m_blkParam.enRes;
    memcpy(&m_blkParam, pu1Data, u4Len < sizeof(m_blkParam) ? u4Len : sizeof(m_blkParam));
    m_blkParam.enRes = u4Result;
    if (!NyUiIsFingerprintKind(NyUiParamGetU4(&m_blkParam, UI_OFS_CONFIRM_KIND))) {
        return NY_OK;
    }
    uint32_t u4Stage = NyUiParamGetU4(&m_blkParam, UI_OFS_CONFIRM_DETAIL);
    if (u4Stage != m_u4Stage) {
        m_u4Stage = u4Stage;
        m_bRefreshTips = true;
    }
    return NY_OK;
}

unsigned int GUIconfirmFp::GetResponse(unsigned char* pu1Buf, unsigned int* pu4Len) {
    CFpLockGuard guard(&m_lock);
    CopyBlockOut(&m_blkParam, pu1Buf, pu4Len);
    return NY_OK;
}

unsigned int GUIconfirmFp::IsFinished() {
    return m_u4Finished.load();
}

void GUIconfirmFp::RefreshTips() {
    CFpLockGuard guard(&m_lock);
    if (!m_bRefreshTips) {
        return;
    }
    m_bRefreshTips = false;
    const char* szMarkup = StageMarkup(m_u4Stage);
    if (m_bClosing || m_pTips == nullptr || szMarkup == nullptr) {
        return;
    }
    gtk_label_set_markup(GTK_LABEL(m_pTips), szMarkup);
    if ((m_u4Stage & UI_FP_STAGE_MASK) == UI_FP_STAGE_CHANGE_FINGER) {
        gtk_image_set_from_file(GTK_IMAGE(m_pMiddleImage), m_szInputFpAgainPath);
    }
}

void GUIconfirmFp::RefreshCancelImage() {
    CFpLockGuard guard(&m_lock);
    if (!m_bRefreshCancel) {
        return;
    }
    m_bRefreshCancel = false;
    if (m_bClosing || m_pCancelImage == nullptr) {
        return;
    }
    gtk_image_set_from_file(GTK_IMAGE(m_pCancelImage),
                            m_bPointerOver ? m_szCancelHoverPath : m_szCancelPath);
}

void GUIconfirmFp::SetPointerOver(bool bOver) {
    CFpLockGuard guard(&m_lock);
    m_bPointerOver = bOver;
    m_bRefreshCancel = true;
}

void GUIconfirmFp::destroy_callback(GtkWidget* /*pWidget*/, gpointer pvSelf) {
    GUIconfirmFp* pSelf = static_cast<GUIconfirmFp*>(pvSelf);
    if (pSelf->m_uTimerId != 0) {
        g_source_remove(pSelf->m_uTimerId);
        pSelf->m_uTimerId = 0;
    }
    pSelf->m_pWindow = nullptr;
    pSelf->m_pTitle = nullptr;
    pSelf->m_pTips = nullptr;
    pSelf->m_pMiddleImage = nullptr;
    pSelf->m_pCancelImage = nullptr;
    QuitMainLoop();
}

gboolean GUIconfirmFp::OnCancle_callback(GtkWidget* /*pWidget*/, GdkEventButton* /*pEvent*/,
                                         gpointer pvSelf) {
    GUIconfirmFp* pSelf = static_cast<GUIconfirmFp*>(pvSelf);
    if (pSelf->m_pWindow != nullptr) {
        {
            CFpLockGuard guard(&pSelf->m_lock);
            pSelf->m_blkParam.enRes = UI_RESULT_CANCEL;
        }
        gtk_widget_destroy(pSelf->m_pWindow);  // the destroy callback forgets it
    }
    return TRUE;
}

gboolean GUIconfirmFp::OnEnter_callback(GtkWidget* /*pWidget*/, GdkEventCrossing* /*pEvent*/,
                                        gpointer pvSelf) {
    static_cast<GUIconfirmFp*>(pvSelf)->SetPointerOver(true);
    return TRUE;
}

gboolean GUIconfirmFp::OnLeave_callback(GtkWidget* /*pWidget*/, GdkEventCrossing* /*pEvent*/,
                                        gpointer pvSelf) {
    static_cast<GUIconfirmFp*>(pvSelf)->SetPointerOver(false);
    return TRUE;
}

// Runs from the main loop without the GDK lock, so it takes it for its GTK calls. The window is
// destroyed here, on the dialog's thread, when stop() asked for it.
gboolean GUIconfirmFp::OnTimerCallBackFun(gpointer pvSelf) {
    GUIconfirmFp* pSelf = static_cast<GUIconfirmFp*>(pvSelf);
    gdk_threads_enter();
    if (pSelf->m_pWindow != nullptr && pSelf->IsClosing()) {
        gtk_widget_destroy(pSelf->m_pWindow);
    }
    pSelf->RefreshTips();
    pSelf->RefreshCancelImage();
    gdk_threads_leave();
    return TRUE;
}
