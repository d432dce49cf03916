#include "ui/GUIgetpinconfirm.h"

#include "CConfig.h"
#include "CPinValidater.h"
#include "ui/GUIEntryFilter.h"

namespace {

constexpr unsigned int NY_GETPIN_ID_TITLE = 0x21007A;
constexpr unsigned int NY_GETPIN_ID_TITLE_KIND2 = 0x210106;
constexpr unsigned int NY_GETPIN_ID_TIPS = 0x21007E;
constexpr unsigned int NY_GETPIN_ID_NEW = 0x210082;
constexpr unsigned int NY_GETPIN_ID_CONFIRM = 0x210084;
constexpr unsigned int NY_GETPIN_ID_OK = 0x210011;
constexpr unsigned int NY_GETPIN_ID_CANCEL = 0x210012;
// PIN kind that selects the administrator's title.
constexpr uint32_t NY_GETPIN_KIND_ALT = 2;
// There is no old PIN: a new PIN only has to differ from nothing.
constexpr char NY_GETPIN_NO_OLD_PIN[] = "";

}  // namespace

GUIgetpinconfirm::GUIgetpinconfirm(const tagBlkUiParam* pReq, CConfig* pConfig)
    : GUIPinDialog(pReq, pConfig, "GUIgetpinconfirm") {}

unsigned int GUIgetpinconfirm::ValidateResultToMsgString(int iResult, char* szBuf, int iSize,
                                                         CConfig* pConfig) {
    return CPinValidater::ResultToMsgString(iResult, szBuf, iSize, pConfig);
}

GtkWidget* GUIgetpinconfirm::Build(const char* szDir) {
    GtkWidget* pOk = nullptr;
    GtkWidget* pCancel = nullptr;
    GtkBuilder* pBuilder = LoadDialog(szDir, "getpinconfirm", &pOk, &pCancel);
    m_pPinEntry = GetWidget(pBuilder, "getpinconfirm_pin");
    m_pConfirmEntry = GetWidget(pBuilder, "getpinconfirm_pin_confirm");
    m_pPinCount = GetWidget(pBuilder, "getpinconfirm_pin_count");
    m_pConfirmCount = GetWidget(pBuilder, "getpinconfirm_confirm_count");
    m_pErrorTips = GetWidget(pBuilder, "getpinconfirm_error_tips");

    uint32_t u4MaxLen = NyUiParamGetU4(&m_blkParam, UI_OFS_VERIFY_MAX_LEN);
    PreparePinEntry(m_pPinEntry, u4MaxLen);
    PreparePinEntry(m_pConfirmEntry, u4MaxLen);
    SetTexts(pBuilder, pOk, pCancel);

    ConnectButtons(m_pWindow, pOk, pCancel);
    for (GtkWidget* pEntry : {m_pPinEntry, m_pConfirmEntry}) {
        ConnectEntry(pEntry, true, G_CALLBACK(GUIEntryFilter::on_entry_insert_special),
                     const_cast<char*>(NY_GUI_PIN_SPECIAL_CHARS));
    }
    return FinishBuild(pBuilder, m_pPinEntry);
}

void GUIgetpinconfirm::SetTexts(GtkBuilder* pBuilder, GtkWidget* pOk, GtkWidget* pCancel) {
    GtkWidget* pTips = GetWidget(pBuilder, "getpinconfirm_stc_tips");
    GtkWidget* pPinCaption = GetWidget(pBuilder, "getpinconfirm_pos1");
    GtkWidget* pConfirmCaption = GetWidget(pBuilder, "getpinconfirm_pos2");
    bool bAltKind = NyUiParamGetU4(&m_blkParam, UI_OFS_VERIFY_PIN_KIND) == NY_GETPIN_KIND_ALT;
    SetWidgetText(m_pConfig, bAltKind ? NY_GETPIN_ID_TITLE_KIND2 : NY_GETPIN_ID_TITLE, m_pWindow);
    SetWidgetText(m_pConfig, NY_GETPIN_ID_TIPS, pTips);
    SetWidgetText(m_pConfig, NY_GETPIN_ID_NEW, pPinCaption);
    SetWidgetText(m_pConfig, NY_GETPIN_ID_CONFIRM, pConfirmCaption);
    SetWidgetText(m_pConfig, NY_GETPIN_ID_OK, pOk);
    SetWidgetText(m_pConfig, NY_GETPIN_ID_CANCEL, pCancel);
    SetEntryCaption(m_pPinEntry, pPinCaption);
    SetEntryCaption(m_pConfirmEntry, pConfirmCaption);
    SetFonts({pOk, pCancel}, {m_pPinEntry, m_pConfirmEntry},
             {pTips, pPinCaption, pConfirmCaption, m_pPinCount, m_pConfirmCount, m_pErrorTips});
}

bool GUIgetpinconfirm::RefreshCounters() {
    uint32_t u4MinLen = NyUiParamGetU4(&m_blkParam, UI_OFS_VERIFY_MIN_LEN);
    bool bPin = ShowInputCount(m_pConfig, m_pPinEntry, m_pPinCount) >= u4MinLen;
    bool bConfirm = ShowInputCount(m_pConfig, m_pConfirmEntry, m_pConfirmCount) >= u4MinLen;
    return bPin && bConfirm;
}

bool GUIgetpinconfirm::Accept() {
    CPinValidater validater(m_pConfig);
    int iResult = validater.Validate(NY_GETPIN_NO_OLD_PIN, EntryText(m_pPinEntry),
                                     EntryText(m_pConfirmEntry));
    // Weak PINs pass here; only a mismatch or a PIN equal to the empty old one is refused.
    if (iResult == VALIDATE_RESULT_SAME_AS_OLD || iResult == VALIDATE_RESULT_CONFIRM_DIFFERS) {
        char szMessage[NY_GUI_LONG_TEXT_SIZE];
        ValidateResultToMsgString(iResult, szMessage, sizeof(szMessage), m_pConfig);
        Refuse(m_pErrorTips, szMessage, {m_pPinEntry, m_pConfirmEntry}, m_pPinEntry);
        return false;
    }
    StorePin(&m_blkParam, UI_OFS_VERIFY_PIN, UI_OFS_VERIFY_PIN_LEN, m_pPinEntry);
    return true;
}

void GUIgetpinconfirm::ForgetWidgets() {
    m_pPinEntry = m_pConfirmEntry = nullptr;
    m_pPinCount = m_pConfirmCount = m_pErrorTips = nullptr;
}
