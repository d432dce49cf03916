// The verify-PIN dialog: asks for one PIN of the token and returns it in the answer block.
#pragma once

#include "ui/GUIPinDialog.h"

class GUIverify : public GUIPinDialog {
public:
    // Copies the request (a null request gives a zeroed block) and marks it cancelled.
    GUIverify(const tagBlkUiParam* pReq, CConfig* pConfig);
    ~GUIverify() override = default;

protected:
    GtkWidget* Build(const char* szDir) override;
    // The character counter; true at the minimum length or more.
    bool RefreshCounters() override;
    // The PIN and its length into the block.
    bool Accept() override;
    void ForgetWidgets() override;

private:
    GtkWidget* m_pInputTips = nullptr;
    GtkWidget* m_pPinEntry = nullptr;
};
