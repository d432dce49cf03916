// The verify-PIN dialog: asks for one PIN of the token and returns it in the answer block.
#pragma once

#include <atomic>
#include <cstdint>

#include "ui/GUIBase.h"
#include "uiblock/NyUiParam.h"

class GUIverify : public GUIBase {
public:
    // Copies the request (a null request gives a zeroed block) and marks it cancelled.
    GUIverify(const tagBlkUiParam* pReq, CConfig* pConfig);
    // Wipes the block copy: it holds the PIN just typed.
    ~GUIverify() override;

    unsigned int run() override;
    unsigned int stop() override;
    unsigned int GetResponse(unsigned char* pu1Buf, unsigned int* pu4Len) override;
    unsigned int IsFinished() override;

private:
    void Build(const char* szDir);
    void ConnectSignals();
    // Counts the entry's characters on the counter label; true when it holds at least the
    // minimum length.
    bool IsLongEnough();
    // The counter and the OK button's sensitivity, from the entry as it is now.
    void RefreshInput();

    static void destroy_callback(GtkWidget* pWidget, gpointer pvSelf);
    static gboolean OnOk_callback(GtkWidget* pWidget, gpointer pvSelf);
    static void OnCancle_callback(GtkWidget* pWidget, gpointer pvSelf);
    static gboolean Poll_callback(gpointer pvSelf);

    GtkWidget* m_pInputTips = nullptr;
    GtkWidget* m_pWindow = nullptr;
    GtkWidget* m_pPinEntry = nullptr;
    tagBlkUiParam m_blkParam;
    CConfig* m_pConfig = nullptr;
    std::atomic<uint32_t> m_u4Finished{0};
    GtkWidget* m_pOkButton = nullptr;
    guint m_uTimerId = 0;
    std::atomic<bool> m_bStopRequested{false};
};
