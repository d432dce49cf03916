// The change-label dialog: asks for a new name of the token and, when the request gives PIN
// lengths, for the PIN that authorises the change. Without a PIN the PIN row is hidden and the
// name row moves to where the two rows were.
#pragma once

#include "ui/GUIPinDialog.h"

class GUIchangelabel : public GUIPinDialog {
public:
    GUIchangelabel(const tagBlkUiParam* pReq, CConfig* pConfig);
    ~GUIchangelabel() override = default;

protected:
    GtkWidget* Build(const char* szDir) override;
    bool RefreshCounters() override;
    bool Accept() override;
    void ForgetWidgets() override;

private:
    void SetTexts(GtkBuilder* pBuilder, GtkWidget* pOk, GtkWidget* pCancel);
    // Hides the PIN row and centres the name row.
    void HidePinRow(GtkBuilder* pBuilder);

    GtkWidget* m_pNameEntry = nullptr;
    GtkWidget* m_pPinEntry = nullptr;
    GtkWidget* m_pPinCount = nullptr;
    bool m_bPinRequired = false;
};
