#include "ui/GUIchangepin.h"

#include "CConfig.h"
#include "CPinValidater.h"
#include "ui/GUIEntryFilter.h"

namespace {

constexpr unsigned int NY_CHANGEPIN_ID_TITLE = 0x21007C;
constexpr unsigned int NY_CHANGEPIN_ID_TITLE_KIND2 = 0x21007D;
constexpr unsigned int NY_CHANGEPIN_ID_TIPS = 0x21007E;
constexpr unsigned int NY_CHANGEPIN_ID_OLD = 0x210081;
constexpr unsigned int NY_CHANGEPIN_ID_NEW = 0x210082;
constexpr unsigned int NY_CHANGEPIN_ID_CONFIRM = 0x210084;
constexpr unsigned int NY_CHANGEPIN_ID_OK = 0x210011;
constexpr unsigned int NY_CHANGEPIN_ID_CANCEL = 0x210012;
// PIN kind that selects the administrator's title.
constexpr uint32_t NY_CHANGEPIN_KIND_ALT = 2;
// A compulsory change offers the window manager no close.
constexpr GdkWMFunction NY_CHANGEPIN_COMPULSORY_FUNCTIONS = GDK_FUNC_MOVE;

// Whether a validator finding refuses the PIN, given the two policy settings (read with
// default 0): weak PINs pass only when allowed; 10, 11, and 12 while single-class PINs are
// forbidden, never pass.
bool IsRefused(int iResult, unsigned int u4AllowSingleClass, unsigned int u4AllowWeak) {
    return (u4AllowSingleClass == 0 && iResult == VALIDATE_RESULT_ONLY_CHARS_OR_NUMBERS) ||
           u4AllowWeak == 0 || iResult == VALIDATE_RESULT_SAME_AS_OLD ||
           iResult == VALIDATE_RESULT_CONFIRM_DIFFERS;
}

}  // namespace

GUIchangepin::GUIchangepin(const tagBlkUiParam* pReq, CConfig* pConfig)
    : GUIPinDialog(pReq, pConfig, "GUIchangepin") {}

unsigned int GUIchangepin::ValidateResultToMsgString(int iResult, char* szBuf, int iSize,
                                                     CConfig* pConfig) {
    return CPinValidater::ResultToMsgString(iResult, szBuf, iSize, pConfig);
}

bool GUIchangepin::IsCompulsory() const {
    return m_blkParam.enUiCmdType == UI_CMD_CHANGE_PIN_FORCED;
}

GdkWMFunction GUIchangepin::WindowFunctions() const {
    return IsCompulsory() ? NY_CHANGEPIN_COMPULSORY_FUNCTIONS : NY_GUI_WM_FUNCTIONS;
}

GtkWidget* GUIchangepin::Build(const char* szDir) {
    GtkWidget* pOk = nullptr;
    GtkWidget* pCancel = nullptr;
    GtkBuilder* pBuilder = LoadDialog(szDir, "changepin", &pOk, &pCancel);
    m_pOldEntry = GetWidget(pBuilder, "changepin_oldpin");
    m_pNewEntry = GetWidget(pBuilder, "changepin_newpin");
    m_pConfirmEntry = GetWidget(pBuilder, "changepin_confirm");
    m_pCountOld = GetWidget(pBuilder, "changepin_count_old");
    m_pCountNew = GetWidget(pBuilder, "changepin_count_new");
    m_pCountConfirm = GetWidget(pBuilder, "changepin_count_confirm");
    m_pErrorTips = GetWidget(pBuilder, "changepin_error_tips");

    uint32_t u4MaxLen = NyUiParamGetU4(&m_blkParam, UI_OFS_CHANGE_MAX_LEN);
    for (GtkWidget* pEntry : {m_pOldEntry, m_pNewEntry, m_pConfirmEntry}) {
        PreparePinEntry(pEntry, u4MaxLen);
    }
    if (IsCompulsory()) {
        MakeCompulsory(pCancel);
    }
    SetTexts(pBuilder, pOk, pCancel);

    ConnectButtons(m_pWindow, pOk, pCancel);
    for (GtkWidget* pEntry : {m_pOldEntry, m_pNewEntry, m_pConfirmEntry}) {
        ConnectEntry(pEntry, true, G_CALLBACK(GUIEntryFilter::on_entry_insert), this);
    }
    return FinishBuild(pBuilder, m_pOldEntry);
}

// Only OK (or a stop) can end a compulsory change.
void GUIchangepin::MakeCompulsory(GtkWidget* pCancel) {
    if (m_pCountOld != nullptr) {
        gtk_widget_set_sensitive(m_pCountOld, FALSE);
    }
    if (pCancel != nullptr) {
        gtk_widget_hide(pCancel);
    }
    if (m_pWindow != nullptr) {
        gtk_window_set_deletable(GTK_WINDOW(m_pWindow), FALSE);
        // A close request that reaches the window anyway leaves the dialog open.
        g_signal_connect(m_pWindow, "delete-event", G_CALLBACK(gtk_true), nullptr);
    }
}

void GUIchangepin::SetTexts(GtkBuilder* pBuilder, GtkWidget* pOk, GtkWidget* pCancel) {
    GtkWidget* pTips = GetWidget(pBuilder, "changepin_tips");
    GtkWidget* pOldCaption = GetWidget(pBuilder, "changepin_old_pos");
    GtkWidget* pNewCaption = GetWidget(pBuilder, "changepin_new_pos");
    GtkWidget* pConfirmCaption = GetWidget(pBuilder, "changepin_confirm_pos");
    bool bAltKind = NyUiParamGetU4(&m_blkParam, UI_OFS_CHANGE_PIN_KIND) == NY_CHANGEPIN_KIND_ALT;
    SetWidgetText(m_pConfig, bAltKind ? NY_CHANGEPIN_ID_TITLE_KIND2 : NY_CHANGEPIN_ID_TITLE,
                  m_pWindow);
    SetWidgetText(m_pConfig, NY_CHANGEPIN_ID_TIPS, pTips);
    SetWidgetText(m_pConfig, NY_CHANGEPIN_ID_OLD, pOldCaption);
    SetWidgetText(m_pConfig, NY_CHANGEPIN_ID_NEW, pNewCaption);
    SetWidgetText(m_pConfig, NY_CHANGEPIN_ID_CONFIRM, pConfirmCaption);
    SetWidgetText(m_pConfig, NY_CHANGEPIN_ID_OK, pOk);
    SetWidgetText(m_pConfig, NY_CHANGEPIN_ID_CANCEL, pCancel);
    SetEntryCaption(m_pOldEntry, pOldCaption);
    SetEntryCaption(m_pNewEntry, pNewCaption);
    SetEntryCaption(m_pConfirmEntry, pConfirmCaption);
    SetFonts({pOk, pCancel}, {m_pOldEntry, m_pNewEntry, m_pConfirmEntry},
             {pTips, pOldCaption, pNewCaption, pConfirmCaption, m_pCountOld, m_pCountNew,
              m_pCountConfirm, m_pErrorTips});
}

bool GUIchangepin::RefreshCounters() {
    uint32_t u4MinLen = NyUiParamGetU4(&m_blkParam, UI_OFS_CHANGE_MIN_LEN);
    bool bOld = ShowInputCount(m_pConfig, m_pOldEntry, m_pCountOld) >= u4MinLen;
    bool bNew = ShowInputCount(m_pConfig, m_pNewEntry, m_pCountNew) >= u4MinLen;
    bool bConfirm = ShowInputCount(m_pConfig, m_pConfirmEntry, m_pCountConfirm) >= u4MinLen;
    return bOld && bNew && bConfirm;
}

bool GUIchangepin::Accept() {
    CPinValidater validater(m_pConfig);
    int iResult = validater.Validate(EntryText(m_pOldEntry), EntryText(m_pNewEntry),
                                     EntryText(m_pConfirmEntry));
    unsigned int u4AllowSingleClass = ConfigU4(NY_CFG_PIN_ALLOW_SINGLE_CLASS, 0u);
    unsigned int u4AllowWeak = ConfigU4(NY_CFG_PIN_ALLOW_WEAK, 0u);
    if (iResult != VALIDATE_RESULT_OK && IsRefused(iResult, u4AllowSingleClass, u4AllowWeak)) {
        char szMessage[NY_GUI_LONG_TEXT_SIZE];
        ValidateResultToMsgString(iResult, szMessage, sizeof(szMessage), m_pConfig);
        Refuse(m_pErrorTips, szMessage, {m_pNewEntry, m_pConfirmEntry}, m_pNewEntry);
        return false;
    }
    StorePin(&m_blkParam, UI_OFS_CHANGE_OLD_PIN, UI_OFS_CHANGE_OLD_PIN_LEN, m_pOldEntry);
    StorePin(&m_blkParam, UI_OFS_CHANGE_NEW_PIN, UI_OFS_CHANGE_NEW_PIN_LEN, m_pNewEntry);
    return true;
}

void GUIchangepin::ForgetWidgets() {
    m_pOldEntry = m_pNewEntry = m_pConfirmEntry = nullptr;
    m_pCountOld = m_pCountNew = m_pCountConfirm = m_pErrorTips = nullptr;
}
