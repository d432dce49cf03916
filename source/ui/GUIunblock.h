// The unblock dialog: asks for the administrator PIN and a new user PIN and returns both as
// typed once they reach the minimum length. No PIN policy applies.
#pragma once

#include "ui/GUIPinDialog.h"

class GUIunblock : public GUIPinDialog {
public:
    GUIunblock(const tagBlkUiParam* pReq, CConfig* pConfig);
    ~GUIunblock() override = default;

protected:
    GtkWidget* Build(const char* szDir) override;
    bool RefreshCounters() override;
    bool Accept() override;
    void ForgetWidgets() override;

private:
    void SetTexts(GtkBuilder* pBuilder, GtkWidget* pOk, GtkWidget* pCancel);

    GtkWidget* m_pCountSo = nullptr;
    GtkWidget* m_pCountUser = nullptr;
    GtkWidget* m_pSoEntry = nullptr;
    GtkWidget* m_pUserEntry = nullptr;
};
