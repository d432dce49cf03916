#include "ui/GUImessage.h"

#include <cstring>

#include "CConfig.h"
#include "log/NyLog.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"

namespace {

// Message ids with rules of their own.
constexpr uint32_t NY_MSG_ID_SUCCESS = 0;
constexpr uint32_t NY_MSG_ID_WRONG_PIN_MASK = 0xFFFFFFF0;
constexpr uint32_t NY_MSG_ID_WRONG_PIN_BASE = 0xE06163C0;  // low nibble: tries left
constexpr uint32_t NY_MSG_ID_WRONG_PIN = 0xE06163CF;
constexpr uint32_t NY_MSG_ID_LOCKED = 0xE0616983;
constexpr uint32_t NY_MSG_ID_NOT_LOCKED = 0xE0603015;
constexpr uint32_t NY_MSG_ID_WRONG_KEY = 0xE0616FFE;
constexpr uint32_t NY_MSG_TRIES_NIBBLE_NONE = 15;

// Parameter values and tags.
constexpr uint32_t NY_MSG_PARAM_FINGERPRINT = 11;
constexpr uint32_t NY_MSG_PARAM_FINGERPRINT_NOT_LOCKED = 12;
constexpr uint32_t NY_MSG_PARAM_ONE_TRY = 1;
constexpr uint32_t NY_MSG_FINGERPRINT_TAG = 0x0B;  // bits 23-16 of a fingerprint counter

// Texts.
constexpr unsigned int NY_MSG_TXT_TITLE = 0x0021009C;
constexpr unsigned int NY_MSG_TXT_OK = 0x00210011;
constexpr unsigned int NY_MSG_TXT_CANCEL = 0x00210012;
constexpr unsigned int NY_MSG_TXT_YES = 0x00210013;
constexpr unsigned int NY_MSG_TXT_NO = 0x00210014;
constexpr unsigned int NY_MSG_TXT_FINGERPRINT_FAILED = 0x0001005A;
constexpr unsigned int NY_MSG_TXT_LAST_TRY = 0x0001004D;
constexpr unsigned int NY_MSG_TXT_WRONG_PIN = 0x00010043;
constexpr unsigned int NY_MSG_TXT_PIN_LOCKED = 0x00010049;
constexpr unsigned int NY_MSG_TXT_FINGERPRINT_LOCKED = 0x0001005B;
constexpr unsigned int NY_MSG_TXT_FINGERPRINT_NOT_LOCKED = 0x0021012C;
constexpr unsigned int NY_MSG_TXT_PIN_NOT_LOCKED = 0x00010059;
constexpr unsigned int NY_MSG_TXT_WRONG_KEY = 0x00010047;
constexpr unsigned int NY_MSG_TXT_UNKNOWN_ERROR = 0x00010048;  // "... 0x%08x!"
constexpr unsigned int NY_MSG_TXT_SUCCESS = 0x0001004C;

// Where the single OK button goes in "message_fixed".
constexpr gint NY_MSG_SINGLE_BUTTON_X = 117;
constexpr gint NY_MSG_SINGLE_BUTTON_Y = 69;

struct BlkMsgTextTag {
    uint32_t u4Key;  // message id, or success parameter
    unsigned int u4TextId;
    bool bQuestion;  // shown with Yes and No
};

// Success notices (message id 0), by parameter; any other parameter: NY_MSG_TXT_SUCCESS.
constexpr BlkMsgTextTag NY_MSG_SUCCESS_TEXTS[] = {
    {1, 0x0001001D, false},  {2, 0x0001001E, false},  {3, 0x0001001F, false},
    {4, 0x00010020, false},  {5, 0x00010022, false},  {6, 0x00010021, false},
    {9, 0x00010053, false},  {10, 0x00010057, false}, {11, 0x00010055, false},
    {12, 0x0021012E, false},
};

// Result codes shown as one text each. 0xE0600000 is absent on purpose: its text is the
// unknown-error text formatted with the id, exactly what an unlisted id gets.
constexpr BlkMsgTextTag NY_MSG_TEXTS[] = {
    {0xE0600001, 0x00010023, false}, {0xE0600002, 0x00010024, false},
    {0xE0600003, 0x00010025, false}, {0xE0600004, 0x00010026, false},
    {0xE0600005, 0x00010027, false}, {0xE0600006, 0x00010028, false},
    {0xE0600007, 0x00010029, false}, {0xE0600008, 0x0001002B, false},
    {0xE0601000, 0x0001002C, false}, {0xE0601001, 0x0001002D, false},
    {0xE0601002, 0x0001002E, false}, {0xE0601003, 0x0001002F, false},
    {0xE0601004, 0x00010029, false}, {0xE0601005, 0x00010030, false},
    {0xE0601006, 0x00010031, false}, {0xE0601007, 0x00010032, false},
    {0xE0601008, 0x00010033, false}, {0xE0602000, 0x00010029, false},
    {0xE0602001, 0x00010026, false}, {0xE0602002, 0x00010027, false},
    {0xE0603000, 0x0001002E, false}, {0xE0603002, 0x00010034, false},
    {0xE0603003, 0x00010035, false}, {0xE0603004, 0x00010029, false},
    {0xE0603005, 0x00010036, false}, {0xE0603007, 0x0001002A, false},
    {0xE0603008, 0x00010037, false}, {0xE0603009, 0x00010038, false},
    {0xE060300A, 0x00010039, false}, {0xE0603100, 0x0001003A, false},
    {0xE0603102, 0x0001003B, false}, {0xE0603103, 0x0001003D, false},
    {0xE0603104, 0x0001003E, false}, {0xE0603105, 0x0001003F, false},
    {0xE0603106, 0x00010040, false}, {0xE0603107, 0x0001002B, false},
    {0xE0603108, 0x0001002F, false}, {0xE0603109, 0x00010041, false},
    {0xE0606000, 0x00010046, false}, {0xE0616FF2, 0x0001002D, false},
    {0xE061FFFF, 0x00010045, false}, {0x60606001, 0x00210051, false},
    {0x60606002, 0x00010022, true},
};

template <size_t N>
const BlkMsgTextTag* FindText(const BlkMsgTextTag (&aTable)[N], uint32_t u4Key) {
    for (const BlkMsgTextTag& blk : aTable) {
        if (blk.u4Key == u4Key) {
            return &blk;
        }
    }
    return nullptr;
}

bool IsFingerprintCounter(uint32_t u4Value) {
    return ((u4Value >> 16) & 0xFF) == NY_MSG_FINGERPRINT_TAG;
}

}  // namespace

GUImessage::GUImessage(const tagBlkUiParam* pReq, CConfig* pConfig) : m_pConfig(pConfig) {
    InitBlockCopy(&m_blkParam, pReq);
}

GUImessage::~GUImessage() {
    WipeBlockCopy(&m_blkParam);
    m_pConfig = nullptr;
    m_pWindow = nullptr;
}

unsigned int GUImessage::run() {
    char szDir[NY_GUI_PATH_SIZE];
    if (GetResourceDir(szDir) != NY_OK) {
        return NY_ERR_BAD_ARGUMENT;
    }
    NY_LOG(LOG_INFO, "GUImessage::run() enter");
    AcquireGui();
    Build(szDir);
    // A single-button notice has no close button: the window manager may only move it.
    GdkWMFunction enFunctions =
        m_u4ButtonMode == NY_MSG_BUTTONS_SINGLE ? GDK_FUNC_MOVE : NY_GUI_WM_FUNCTIONS;
    ShowAndRun(&m_pWindow, m_pWindow, enFunctions, &m_u4Finished, &m_bStopRequested);
    ReleaseGui();
    NY_LOG(LOG_INFO, "GUImessage::run() leave");
    return NY_OK;
}

void GUImessage::Build(const char* szDir) {
    GtkBuilder* pBuilder = LoadBuilder(szDir, "message.glade");
    m_pWindow = GetWidget(pBuilder, "message_window");
    m_pOkButton = GetWidget(pBuilder, "message_idok");
    GtkWidget* pCancel = GetWidget(pBuilder, "message_idcancle");
    GtkWidget* pFixed = GetWidget(pBuilder, "message_fixed");
    GtkWidget* pTips = GetWidget(pBuilder, "message_tips");
    if (m_pWindow != nullptr) {
        g_signal_connect(m_pWindow, "destroy", G_CALLBACK(destroy_callback), this);
    }
    if (m_pOkButton != nullptr && pCancel != nullptr) {
        g_signal_connect(m_pOkButton, "pressed", G_CALLBACK(OnOk_callback), this);
        g_signal_connect(m_pOkButton, "activate", G_CALLBACK(OnOk_callback), this);
        g_signal_connect(pCancel, "pressed", G_CALLBACK(OnCancle_callback), this);
        g_signal_connect(pCancel, "activate", G_CALLBACK(OnCancle_callback), this);
    }
    SetWidgetText(m_pConfig, NY_MSG_TXT_TITLE, m_pWindow, NY_GUI_LONG_TEXT_SIZE);
    SetWidgetText(m_pConfig, NY_MSG_TXT_OK, m_pOkButton, NY_GUI_LONG_TEXT_SIZE);
    SetWidgetText(m_pConfig, NY_MSG_TXT_CANCEL, pCancel, NY_GUI_LONG_TEXT_SIZE);

    char szText[NY_GUI_LONG_TEXT_SIZE];
    memset(szText, 0, sizeof(szText));
    ParseMessage(szText, sizeof(szText));
    ArrangeButtons(pCancel, pFixed);

    SetWidgetFont(m_pOkButton, NY_GUI_FONT, NY_GUI_FONT_SIZE, NY_TRUE);
    SetWidgetFont(pCancel, NY_GUI_FONT, NY_GUI_FONT_SIZE, NY_TRUE);
    SetWidgetFont(pTips, NY_GUI_FONT, NY_GUI_FONT_SIZE, NY_FALSE);
    ShowCentred(pTips, szText);
    g_object_unref(pBuilder);
}

// A wrapping label lays a short text out from its left edge: a text that fits on one line is
// shown without wrapping, so that it centres over the centred button; a longer one wraps.
void GUImessage::ShowCentred(GtkWidget* pLabel, const char* szText) {
    if (pLabel == nullptr) {
        return;
    }
    gtk_label_set_text(GTK_LABEL(pLabel), szText);
    gint iWidth = 0;
    gtk_widget_get_size_request(pLabel, &iWidth, nullptr);
    PangoLayout* pLayout = gtk_widget_create_pango_layout(pLabel, szText);
    gint iTextWidth = 0;
    pango_layout_get_pixel_size(pLayout, &iTextWidth, nullptr);
    g_object_unref(pLayout);
    gtk_label_set_line_wrap(GTK_LABEL(pLabel), iWidth <= 0 || iTextWidth > iWidth);
}

void GUImessage::ArrangeButtons(GtkWidget* pCancel, GtkWidget* pFixed) {
    if (m_u4ButtonMode == NY_MSG_BUTTONS_YES_NO) {
        SetWidgetText(m_pConfig, NY_MSG_TXT_YES, m_pOkButton, NY_GUI_LONG_TEXT_SIZE);
        SetWidgetText(m_pConfig, NY_MSG_TXT_NO, pCancel, NY_GUI_LONG_TEXT_SIZE);
        return;
    }
    if (m_u4ButtonMode == NY_MSG_BUTTONS_KEEP) {
        return;
    }
    if (m_u4ButtonMode == NY_MSG_BUTTONS_SINGLE && m_pWindow != nullptr) {
        gtk_window_set_deletable(GTK_WINDOW(m_pWindow), FALSE);
        // Not every window manager honours the hint; a close request is refused here too.
        g_signal_connect(m_pWindow, "delete-event", G_CALLBACK(gtk_true), nullptr);
    }
    if (pCancel != nullptr) {
        gtk_widget_hide(pCancel);
    }
    if (pFixed != nullptr && m_pOkButton != nullptr) {
        gtk_fixed_move(GTK_FIXED(pFixed), m_pOkButton, NY_MSG_SINGLE_BUTTON_X,
                       NY_MSG_SINGLE_BUTTON_Y);
    }
}

void GUImessage::ParseMessage(char* szText, unsigned int u4Size) {
    uint32_t u4MsgId = NyUiParamGetU4(&m_blkParam, UI_OFS_MESSAGE_ID);
    uint32_t u4Param = NyUiParamGetU4(&m_blkParam, UI_OFS_MESSAGE_PARAM);
    uint32_t u4Count = u4Param;
    if ((u4MsgId & NY_MSG_ID_WRONG_PIN_MASK) == NY_MSG_ID_WRONG_PIN_BASE) {
        uint32_t u4Nibble = u4MsgId & ~NY_MSG_ID_WRONG_PIN_MASK;
        if (u4Nibble < NY_MSG_TRIES_NIBBLE_NONE && u4Param != NY_MSG_PARAM_FINGERPRINT) {
            u4Count = u4Nibble;
            u4MsgId = NY_MSG_ID_WRONG_PIN;
        }
    }
    NY_LOG(LOG_INFO, "GUImessage::ParseMessage enter, u4MsgId = %08X", u4MsgId);

    char szWork[NY_GUI_LONG_TEXT_SIZE];
    memset(szWork, 0, sizeof(szWork));
    if (u4MsgId == NY_MSG_ID_WRONG_PIN) {
        SelectWrongPin(u4Count, szWork);
    } else if (u4MsgId == NY_MSG_ID_WRONG_PIN_BASE || u4MsgId == NY_MSG_ID_LOCKED) {
        SelectLocked(u4Param, szWork);
    } else {
        SelectByTable(u4MsgId, u4Param, szWork);
    }
    NyStrCopy(szText, u4Size, szWork);
}

void GUImessage::SelectWrongPin(uint32_t u4Count, char* szWork) {
    NY_LOG(LOG_INFO, "GUImessage::ParseMessage, u4MsgParam = 0x%08X", u4Count);
    if (IsFingerprintCounter(u4Count)) {
        NY_LOG(LOG_INFO, "GUImessage::ParseMessage, u4MsgParam = 0x%08X", u4Count);
        FormatText(NY_MSG_TXT_FINGERPRINT_FAILED, u4Count & 0xFFFF, szWork);
        m_u4ButtonMode = NY_MSG_BUTTONS_YES_NO;
    } else if (u4Count != 0) {
        // The last try has a text of its own where the configuration provides one.
        if (u4Count == NY_MSG_PARAM_ONE_TRY && m_pConfig != nullptr &&
            m_pConfig->GetString(NY_MSG_TXT_LAST_TRY, szWork, NY_GUI_LONG_TEXT_SIZE) == NY_OK) {
            m_u4ButtonMode = NY_MSG_BUTTONS_SINGLE;
            return;
        }
        FormatText(NY_MSG_TXT_WRONG_PIN, u4Count, szWork);
        m_u4ButtonMode = NY_MSG_BUTTONS_YES_NO;
    } else {
        LoadText(m_pConfig, NY_MSG_TXT_PIN_LOCKED, szWork, NY_GUI_LONG_TEXT_SIZE);
    }
}

void GUImessage::SelectLocked(uint32_t u4Param, char* szWork) {
    bool bFingerprint = IsFingerprintCounter(u4Param) || u4Param == NY_MSG_PARAM_FINGERPRINT;
    LoadText(m_pConfig, bFingerprint ? NY_MSG_TXT_FINGERPRINT_LOCKED : NY_MSG_TXT_PIN_LOCKED,
             szWork, NY_GUI_LONG_TEXT_SIZE);
}

void GUImessage::SelectByTable(uint32_t u4MsgId, uint32_t u4Param, char* szWork) {
    if (u4MsgId == NY_MSG_ID_NOT_LOCKED) {
        LoadText(m_pConfig,
                 u4Param == NY_MSG_PARAM_FINGERPRINT_NOT_LOCKED ? NY_MSG_TXT_FINGERPRINT_NOT_LOCKED
                                                                : NY_MSG_TXT_PIN_NOT_LOCKED,
                 szWork, NY_GUI_LONG_TEXT_SIZE);
        m_u4ButtonMode = NY_MSG_BUTTONS_SINGLE;
        return;
    }
    if (u4MsgId == NY_MSG_ID_WRONG_KEY) {
        if (m_pConfig != nullptr &&
            m_pConfig->GetString(NY_MSG_TXT_WRONG_KEY, szWork, NY_GUI_LONG_TEXT_SIZE) == NY_OK) {
            m_u4ButtonMode = NY_MSG_BUTTONS_SINGLE;
        } else {
            FormatText(NY_MSG_TXT_UNKNOWN_ERROR, NY_MSG_ID_WRONG_KEY, szWork);
        }
        return;
    }
    if (u4MsgId == NY_MSG_ID_SUCCESS) {
        const BlkMsgTextTag* pEntry = FindText(NY_MSG_SUCCESS_TEXTS, u4Param);
        LoadText(m_pConfig, pEntry != nullptr ? pEntry->u4TextId : NY_MSG_TXT_SUCCESS, szWork,
                 NY_GUI_LONG_TEXT_SIZE);
        return;
    }
    const BlkMsgTextTag* pEntry = FindText(NY_MSG_TEXTS, u4MsgId);
    if (pEntry == nullptr) {
        FormatText(NY_MSG_TXT_UNKNOWN_ERROR, u4MsgId, szWork);
        return;
    }
    LoadText(m_pConfig, pEntry->u4TextId, szWork, NY_GUI_LONG_TEXT_SIZE);
    if (pEntry->bQuestion) {
        m_u4ButtonMode = NY_MSG_BUTTONS_YES_NO;
    }
}

void GUImessage::FormatText(unsigned int u4TextId, uint32_t u4Value, char* szWork) {
    char szFormat[NY_GUI_LONG_TEXT_SIZE];
    LoadText(m_pConfig, u4TextId, szFormat, sizeof(szFormat));
    NyStrPrintf(szWork, NY_GUI_LONG_TEXT_SIZE, szFormat, u4Value);
}

unsigned int GUImessage::stop() {
    return StopDialog(&m_pWindow, &m_bStopRequested);
}

unsigned int GUImessage::GetResponse(unsigned char* pu1Buf, unsigned int* pu4Len) {
    CopyBlockOut(&m_blkParam, pu1Buf, pu4Len);
    return NY_OK;
}

unsigned int GUImessage::IsFinished() {
    return m_u4Finished.load();
}

void GUImessage::destroy_callback(GtkWidget* /*pWidget*/, gpointer pvSelf) {
    GUImessage* pSelf = static_cast<GUImessage*>(pvSelf);
    if (pSelf->m_blkParam.enRes != UI_RESULT_OK) {
        pSelf->m_blkParam.enRes = UI_RESULT_CANCEL;
    }
    pSelf->m_pWindow = nullptr;
    pSelf->m_pOkButton = nullptr;
    pSelf->m_u4Finished.store(1);
    QuitMainLoop();
}

void GUImessage::OnOk_callback(GtkWidget* /*pWidget*/, gpointer pvSelf) {
    GUImessage* pSelf = static_cast<GUImessage*>(pvSelf);
    if (pSelf->m_pWindow == nullptr) {
        return;
    }
    uint32_t u4Choice =
        pSelf->m_u4ButtonMode == NY_MSG_BUTTONS_YES_NO ? NY_MSG_CHOICE_YES : NY_MSG_CHOICE_NONE;
    // One try left on a wrong PIN: going on is always the answer.
    if (NyUiParamGetU4(&pSelf->m_blkParam, UI_OFS_MESSAGE_ID) == NY_MSG_ID_WRONG_PIN &&
        NyUiParamGetU4(&pSelf->m_blkParam, UI_OFS_MESSAGE_PARAM) == NY_MSG_PARAM_ONE_TRY) {
        u4Choice = NY_MSG_CHOICE_YES;
    }
    NyUiParamSetU4(&pSelf->m_blkParam, UI_OFS_MESSAGE_CHOICE, u4Choice);
    pSelf->m_blkParam.enRes = UI_RESULT_OK;
    GtkWidget* pWindow = pSelf->m_pWindow;
    pSelf->m_pWindow = nullptr;
    gtk_widget_destroy(pWindow);
}

void GUImessage::OnCancle_callback(GtkWidget* /*pWidget*/, gpointer pvSelf) {
    GUImessage* pSelf = static_cast<GUImessage*>(pvSelf);
    if (pSelf->m_pWindow == nullptr) {
        return;
    }
    uint32_t u4Choice = pSelf->m_u4ButtonMode == NY_MSG_BUTTONS_YES_NO ? NY_MSG_CHOICE_NO
                        : pSelf->m_u4ButtonMode == NY_MSG_BUTTONS_KEEP ? NY_MSG_CHOICE_CANCEL
                                                                       : NY_MSG_CHOICE_NONE;
    NyUiParamSetU4(&pSelf->m_blkParam, UI_OFS_MESSAGE_CHOICE, u4Choice);
    pSelf->m_blkParam.enRes = UI_RESULT_CANCEL;
    QuitMainLoop();
    GtkWidget* pWindow = pSelf->m_pWindow;
    pSelf->m_pWindow = nullptr;
    gtk_widget_destroy(pWindow);
}
