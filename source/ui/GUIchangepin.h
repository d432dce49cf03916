// The change-PIN dialog: asks for the current PIN, a new PIN and the new PIN again, checks the
// new PIN against the PIN policy and returns old and new PIN in the answer block. Command
// 0x10006 makes the change compulsory: no Cancel, no close button.
#pragma once

#include "ui/GUIPinDialog.h"

class GUIchangepin : public GUIPinDialog {
public:
    GUIchangepin(const tagBlkUiParam* pReq, CConfig* pConfig);
    ~GUIchangepin() override = default;

    // The message for a PIN validator result into szBuf (iSize bytes); see CPinValidater.
    static unsigned int ValidateResultToMsgString(int iResult, char* szBuf, int iSize,
                                                  CConfig* pConfig);

protected:
    GtkWidget* Build(const char* szDir) override;
    bool RefreshCounters() override;
    bool Accept() override;
    void ForgetWidgets() override;
    GdkWMFunction WindowFunctions() const override;

private:
    void MakeCompulsory(GtkWidget* pCancel);
    void SetTexts(GtkBuilder* pBuilder, GtkWidget* pOk, GtkWidget* pCancel);
    bool IsCompulsory() const;

    GtkWidget* m_pOldEntry = nullptr;
    GtkWidget* m_pNewEntry = nullptr;
    GtkWidget* m_pConfirmEntry = nullptr;
    GtkWidget* m_pCountOld = nullptr;
    GtkWidget* m_pCountNew = nullptr;
    GtkWidget* m_pCountConfirm = nullptr;
    GtkWidget* m_pErrorTips = nullptr;
};
