#include "ui/GUIchangelabel.h"

#include <algorithm>
#include <cstring>

#include "runtime/NySafe.h"
#include "ui/GUIEntryFilter.h"

namespace {

constexpr unsigned int NY_LABEL_ID_TITLE = 0x210099;
constexpr unsigned int NY_LABEL_ID_NAME = 0x21009A;
constexpr unsigned int NY_LABEL_ID_PIN = 0x21007F;
constexpr unsigned int NY_LABEL_ID_OK = 0x210011;
constexpr unsigned int NY_LABEL_ID_CANCEL = 0x210012;
// Where the name row goes in "changelabel_fixed" when there is no PIN row.
constexpr gint NY_LABEL_SINGLE_CAPTION_X = 65;
constexpr gint NY_LABEL_SINGLE_ENTRY_X = 144;
constexpr gint NY_LABEL_SINGLE_ROW_Y = 128;

// The name entry takes no more than the answer's name field can carry (no limit given, or a
// larger one, means that field's limit).
gint NameMaxLength(uint32_t u4Requested) {
    return static_cast<gint>(u4Requested == 0 ? NY_UI_LABEL_MAX_LEN
                                              : std::min(u4Requested, NY_UI_LABEL_MAX_LEN));
}

// The entry's text into the name field (cut at 64 bytes) and its byte length.
void StoreName(tagBlkUiParam* pBlock, const char* szName) {
    char* szField = reinterpret_cast<char*>(NyUiParamBytes(pBlock, UI_OFS_LABEL_NAME));
    memset(szField, 0, NY_UI_LABEL_FIELD_SIZE);
    NyStrCopy(szField, NY_UI_LABEL_FIELD_SIZE, szName);
    NyUiParamSetU4(pBlock, UI_OFS_LABEL_NAME_LEN, static_cast<uint32_t>(strlen(szField)));
}

}  // namespace

GUIchangelabel::GUIchangelabel(const tagBlkUiParam* pReq, CConfig* pConfig)
    : GUIPinDialog(pReq, pConfig, "GUIchangelabel") {
    m_bPinRequired = NyUiParamGetU4(&m_blkParam, UI_OFS_LABEL_PIN_MIN_LEN) != 0 ||
                     NyUiParamGetU4(&m_blkParam, UI_OFS_LABEL_PIN_MAX_LEN) != 0;
}

GtkWidget* GUIchangelabel::Build(const char* szDir) {
    GtkWidget* pOk = nullptr;
    GtkWidget* pCancel = nullptr;
    GtkBuilder* pBuilder = LoadDialog(szDir, "changelabel", &pOk, &pCancel);
    m_pNameEntry = GetWidget(pBuilder, "changelabel_newname");
    m_pPinEntry = GetWidget(pBuilder, "changelabel_pin");
    m_pPinCount = GetWidget(pBuilder, "changelabel_count");

    PreparePinEntry(m_pPinEntry, NyUiParamGetU4(&m_blkParam, UI_OFS_LABEL_PIN_MAX_LEN));
    if (m_pNameEntry != nullptr) {
        gtk_entry_set_max_length(
            GTK_ENTRY(m_pNameEntry),
            NameMaxLength(NyUiParamGetU4(&m_blkParam, UI_OFS_LABEL_NAME_MAX_LEN)));
    }
    SetTexts(pBuilder, pOk, pCancel);
    if (!m_bPinRequired) {
        HidePinRow(pBuilder);
    }

    ConnectButtons(m_pWindow, pOk, pCancel);
    ConnectEntry(m_pNameEntry, false, G_CALLBACK(GUIEntryFilter::on_entry_insert_special),
                 const_cast<char*>(NY_GUI_LABEL_SPECIAL_CHARS));
    ConnectEntry(m_pPinEntry, true, nullptr, nullptr);
    return FinishBuild(pBuilder, m_pNameEntry);
}

void GUIchangelabel::SetTexts(GtkBuilder* pBuilder, GtkWidget* pOk, GtkWidget* pCancel) {
    GtkWidget* pNameCaption = GetWidget(pBuilder, "changelabel_pos1");
    GtkWidget* pPinCaption = GetWidget(pBuilder, "changelabel_pos2");
    SetWidgetText(m_pConfig, NY_LABEL_ID_TITLE, m_pWindow);
    SetWidgetText(m_pConfig, NY_LABEL_ID_NAME, pNameCaption);
    SetWidgetText(m_pConfig, NY_LABEL_ID_PIN, pPinCaption);
    SetWidgetText(m_pConfig, NY_LABEL_ID_OK, pOk);
    SetWidgetText(m_pConfig, NY_LABEL_ID_CANCEL, pCancel);
    AlignCaptions({pNameCaption, pPinCaption});
    SetEntryCaption(m_pNameEntry, pNameCaption);
    SetEntryCaption(m_pPinEntry, pPinCaption);
    SetFonts({pOk, pCancel}, {m_pNameEntry, m_pPinEntry}, {pNameCaption, pPinCaption, m_pPinCount});
}

void GUIchangelabel::HidePinRow(GtkBuilder* pBuilder) {
    for (GtkWidget* pWidget : {GetWidget(pBuilder, "changelabel_pos2"), m_pPinEntry, m_pPinCount}) {
        if (pWidget != nullptr) {
            gtk_widget_hide(pWidget);
        }
    }
    GtkWidget* pFixed = GetWidget(pBuilder, "changelabel_fixed");
    GtkWidget* pNameCaption = GetWidget(pBuilder, "changelabel_pos1");
    if (pFixed != nullptr && pNameCaption != nullptr && m_pNameEntry != nullptr) {
        gtk_fixed_move(GTK_FIXED(pFixed), pNameCaption, NY_LABEL_SINGLE_CAPTION_X,
                       NY_LABEL_SINGLE_ROW_Y);
        gtk_fixed_move(GTK_FIXED(pFixed), m_pNameEntry, NY_LABEL_SINGLE_ENTRY_X,
                       NY_LABEL_SINGLE_ROW_Y);
    }
}

bool GUIchangelabel::RefreshCounters() {
    bool bName =
        EntryLength(m_pNameEntry) >= NyUiParamGetU4(&m_blkParam, UI_OFS_LABEL_NAME_MIN_LEN);
    if (!m_bPinRequired) {
        return bName;
    }
    bool bPin = ShowInputCount(m_pConfig, m_pPinEntry, m_pPinCount) >=
                NyUiParamGetU4(&m_blkParam, UI_OFS_LABEL_PIN_MIN_LEN);
    return bName && bPin;
}

bool GUIchangelabel::Accept() {
    StoreName(&m_blkParam, EntryText(m_pNameEntry));
    StorePin(&m_blkParam, UI_OFS_LABEL_PIN, UI_OFS_LABEL_PIN_LEN,
             m_bPinRequired ? m_pPinEntry : nullptr);
    return true;
}

void GUIchangelabel::ForgetWidgets() {
    m_pNameEntry = m_pPinEntry = m_pPinCount = nullptr;
}
