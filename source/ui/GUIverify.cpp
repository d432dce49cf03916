#include "ui/GUIverify.h"

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

GUIverify::GUIverify(const tagBlkUiParam* pReq, CConfig* pConfig)
    : GUIPinDialog(pReq, pConfig, "GUIverify") {
    m_bLogDestroy = true;
}

GtkWidget* GUIverify::Build(const char* szDir) {
    GtkWidget* pOk = nullptr;
    GtkWidget* pCancel = nullptr;
    GtkBuilder* pBuilder = LoadDialog(szDir, "verify", &pOk, &pCancel);
    m_pPinEntry = GetWidget(pBuilder, "verify_pin");
    m_pInputTips = GetWidget(pBuilder, "verify_inputtips");
    GtkWidget* pTips = GetWidget(pBuilder, "verify_tips");
    GtkWidget* pCaption = GetWidget(pBuilder, "verify_pos");

    PreparePinEntry(m_pPinEntry, NyUiParamGetU4(&m_blkParam, UI_OFS_VERIFY_MAX_LEN));
    bool bAltKind = NyUiParamGetU4(&m_blkParam, UI_OFS_VERIFY_PIN_KIND) == NY_VERIFY_PIN_KIND_ALT;
    SetWidgetText(m_pConfig, bAltKind ? NY_VERIFY_ID_TITLE_KIND2 : NY_VERIFY_ID_TITLE, m_pWindow);
    SetWidgetText(m_pConfig, NY_VERIFY_ID_TIPS, pTips);
    SetWidgetText(m_pConfig, NY_VERIFY_ID_CAPTION, pCaption);
    SetWidgetText(m_pConfig, NY_VERIFY_ID_OK, pOk);
    SetWidgetText(m_pConfig, NY_VERIFY_ID_CANCEL, pCancel);
    SetEntryCaption(m_pPinEntry, pCaption);
    SetFonts({pOk, pCancel}, {m_pPinEntry}, {m_pInputTips, pTips, pCaption});

    ConnectButtons(m_pWindow, pOk, pCancel);
    ConnectEntry(m_pPinEntry, true, G_CALLBACK(GUIEntryFilter::on_entry_insert), this);
    return FinishBuild(pBuilder, m_pPinEntry);
}

bool GUIverify::RefreshCounters() {
    return ShowInputCount(m_pConfig, m_pPinEntry, m_pInputTips) >=
           NyUiParamGetU4(&m_blkParam, UI_OFS_VERIFY_MIN_LEN);
}

bool GUIverify::Accept() {
    StorePin(&m_blkParam, UI_OFS_VERIFY_PIN, UI_OFS_VERIFY_PIN_LEN, m_pPinEntry);
    return true;
}

void GUIverify::ForgetWidgets() {
    m_pPinEntry = nullptr;
    m_pInputTips = nullptr;
}
