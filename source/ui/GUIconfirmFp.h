// The fingerprint dialog: guides the user while the token enrols or checks a fingerprint. The
// client feeds it the token's progress with update() and ends it with stop(), both from the
// service thread; neither touches GTK. They only change fields under the dialog's mutex, and a
// timer on the dialog's own thread applies the changes to the widgets.
#pragma once

#include <atomic>
#include <cstdint>

#include "comm/CLock.h"
#include "ui/GUIBase.h"
#include "uiblock/NyUiParam.h"

class GUIconfirmFp : public GUIBase {
public:
    // Copies the request (a null request gives a zeroed block) and marks it cancelled.
    GUIconfirmFp(const tagBlkUiParam* pReq, CConfig* pConfig);
    ~GUIconfirmFp() override;

    unsigned int run() override;
    // Asks the dialog's thread to close the window (within one timer period); returns at once.
    unsigned int stop() override;
    // Replaces the block with the update's (the result word stays the dialog's own); for the
    // fingerprint kinds a stage different from the current one is shown on the next timer
    // tick. Ignored once stop() was called. NY_ERR_BAD_ARGUMENT for null data.
    unsigned int update(const unsigned char* pu1Data, unsigned int u4Len) override;
    unsigned int GetResponse(unsigned char* pu1Buf, unsigned int* pu4Len) override;
    unsigned int IsFinished() override;

    // The tips markup of a stage code; null for a stage that leaves the tips as they are.
    static const char* StageMarkup(uint32_t u4Stage);

private:
    void Build(const char* szDir);
    void BuildPaths(const char* szDir);
    void ConnectSignals(GtkWidget* pCancelBox);
    bool IsClosing();
    // Applied on the dialog's thread, each under the mutex and only when its flag is set.
    void RefreshTips();
    void RefreshCancelImage();
    void SetPointerOver(bool bOver);

    static void destroy_callback(GtkWidget* pWidget, gpointer pvSelf);
    static gboolean OnCancle_callback(GtkWidget* pWidget, GdkEventButton* pEvent, gpointer pvSelf);
    static gboolean OnEnter_callback(GtkWidget* pWidget, GdkEventCrossing* pEvent, gpointer pvSelf);
    static gboolean OnLeave_callback(GtkWidget* pWidget, GdkEventCrossing* pEvent, gpointer pvSelf);
    static gboolean OnTimerCallBackFun(gpointer pvSelf);

    GtkWidget* m_pWindow = nullptr;
    GtkWidget* m_pTitle = nullptr;
    GtkWidget* m_pTips = nullptr;
    GtkWidget* m_pMiddleImage = nullptr;
    GtkWidget* m_pCancelImage = nullptr;
    char m_szInputFpPath[NY_GUI_PATH_SIZE] = "";
    char m_szInputFpAgainPath[NY_GUI_PATH_SIZE] = "";
    char m_szCancelPath[NY_GUI_PATH_SIZE] = "";
    char m_szCancelHoverPath[NY_GUI_PATH_SIZE] = "";
    // The stage, the block and the four flags are used under m_lock; the widgets only on the
    // dialog's thread.
    uint32_t m_u4Stage = 0;
    tagBlkUiParam m_blkParam;
    CConfig* m_pConfig = nullptr;
    std::atomic<uint32_t> m_u4Finished{0};
    guint m_uTimerId = 0;
    bool m_bRefreshTips = false;
    bool m_bRefreshCancel = false;
    bool m_bPointerOver = false;
    bool m_bClosing = false;
    CLock m_lock;
};
