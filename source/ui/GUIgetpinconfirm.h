// The new-PIN dialog: asks for a new PIN twice (for example when a PIN is set for the first
// time) and returns it. Only a mismatch, or an empty PIN, is refused; weak PINs pass.
#pragma once

#include "ui/GUIPinDialog.h"

class GUIgetpinconfirm : public GUIPinDialog {
public:
    GUIgetpinconfirm(const tagBlkUiParam* pReq, CConfig* pConfig);
    ~GUIgetpinconfirm() override = default;

    // The message for a PIN validator result into szBuf (iSize bytes); see CPinValidater.
    static unsigned int ValidateResultToMsgString(int iResult, char* szBuf, int iSize,
                                                  CConfig* pConfig);

protected:
    GtkWidget* Build(const char* szDir) override;
    bool RefreshCounters() override;
    bool Accept() override;
    void ForgetWidgets() override;

private:
    void SetTexts(GtkBuilder* pBuilder, GtkWidget* pOk, GtkWidget* pCancel);

    GtkWidget* m_pPinEntry = nullptr;
    GtkWidget* m_pConfirmEntry = nullptr;
    GtkWidget* m_pPinCount = nullptr;
    GtkWidget* m_pConfirmCount = nullptr;
    GtkWidget* m_pErrorTips = nullptr;
};
