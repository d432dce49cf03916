#include "ui/GUIunblock.h"

#include "ui/GUIEntryFilter.h"

namespace {

constexpr unsigned int NY_UNBLOCK_ID_TITLE = 0x21007B;
constexpr unsigned int NY_UNBLOCK_ID_TIPS = 0x21007E;
constexpr unsigned int NY_UNBLOCK_ID_SO = 0x210080;
constexpr unsigned int NY_UNBLOCK_ID_USER = 0x210083;
constexpr unsigned int NY_UNBLOCK_ID_OK = 0x210011;
constexpr unsigned int NY_UNBLOCK_ID_CANCEL = 0x210012;

}  // namespace

GUIunblock::GUIunblock(const tagBlkUiParam* pReq, CConfig* pConfig)
    : GUIPinDialog(pReq, pConfig, "GUIunblock") {}

GtkWidget* GUIunblock::Build(const char* szDir) {
    GtkWidget* pOk = nullptr;
    GtkWidget* pCancel = nullptr;
    GtkBuilder* pBuilder = LoadDialog(szDir, "unblock", &pOk, &pCancel);
    m_pSoEntry = GetWidget(pBuilder, "unblock_so_pin");
    m_pUserEntry = GetWidget(pBuilder, "unblock_usr_pin");
    m_pCountSo = GetWidget(pBuilder, "unblock_count_tip_so");
    m_pCountUser = GetWidget(pBuilder, "unblock_count_tip_usr");

    uint32_t u4MaxLen = NyUiParamGetU4(&m_blkParam, UI_OFS_UNBLOCK_MAX_LEN);
    PreparePinEntry(m_pSoEntry, u4MaxLen);
    PreparePinEntry(m_pUserEntry, u4MaxLen);
    SetTexts(pBuilder, pOk, pCancel);

    ConnectButtons(m_pWindow, pOk, pCancel);
    for (GtkWidget* pEntry : {m_pSoEntry, m_pUserEntry}) {
        ConnectEntry(pEntry, true, G_CALLBACK(GUIEntryFilter::on_entry_insert), this);
    }
    return FinishBuild(pBuilder, m_pSoEntry);
}

void GUIunblock::SetTexts(GtkBuilder* pBuilder, GtkWidget* pOk, GtkWidget* pCancel) {
    GtkWidget* pTips = GetWidget(pBuilder, "unblock_stc_tips");
    GtkWidget* pSoCaption = GetWidget(pBuilder, "unblock_stc_pos1");
    GtkWidget* pUserCaption = GetWidget(pBuilder, "unblock_stc_pos2");
    SetWidgetText(m_pConfig, NY_UNBLOCK_ID_TITLE, m_pWindow);
    SetWidgetText(m_pConfig, NY_UNBLOCK_ID_TIPS, pTips);
    SetWidgetText(m_pConfig, NY_UNBLOCK_ID_SO, pSoCaption);
    SetWidgetText(m_pConfig, NY_UNBLOCK_ID_USER, pUserCaption);
    SetWidgetText(m_pConfig, NY_UNBLOCK_ID_OK, pOk);
    SetWidgetText(m_pConfig, NY_UNBLOCK_ID_CANCEL, pCancel);
    AlignCaptions({pSoCaption, pUserCaption});
    SetEntryCaption(m_pSoEntry, pSoCaption);
    SetEntryCaption(m_pUserEntry, pUserCaption);
    SetFonts({pOk, pCancel}, {m_pSoEntry, m_pUserEntry},
             {pTips, pSoCaption, pUserCaption, m_pCountSo, m_pCountUser});
}

bool GUIunblock::RefreshCounters() {
    uint32_t u4MinLen = NyUiParamGetU4(&m_blkParam, UI_OFS_UNBLOCK_MIN_LEN);
    bool bSo = ShowInputCount(m_pConfig, m_pSoEntry, m_pCountSo) >= u4MinLen;
    bool bUser = ShowInputCount(m_pConfig, m_pUserEntry, m_pCountUser) >= u4MinLen;
    return bSo && bUser;
}

bool GUIunblock::Accept() {
    StorePin(&m_blkParam, UI_OFS_UNBLOCK_SO_PIN, UI_OFS_UNBLOCK_SO_PIN_LEN, m_pSoEntry);
    StorePin(&m_blkParam, UI_OFS_UNBLOCK_USER_PIN, UI_OFS_UNBLOCK_USER_PIN_LEN, m_pUserEntry);
    return true;
}

void GUIunblock::ForgetWidgets() {
    m_pCountSo = m_pCountUser = m_pSoEntry = m_pUserEntry = nullptr;
}
