// The on-device confirmation dialog: tells the user to confirm an operation on the token itself
// and counts down the seconds the token waits. It has no buttons; the client ends it with
// stop() once the token has answered and may push status changes with update() meanwhile.
#pragma once

#include <atomic>
#include <cstdint>

#include "ui/GUIBase.h"
#include "uiblock/NyUiParam.h"

class GUIconfirm : public GUIBase {
public:
    // Copies the request (a null request gives a zeroed block) and marks it cancelled.
    GUIconfirm(const tagBlkUiParam* pReq, CConfig* pConfig);
    ~GUIconfirm() override;

    unsigned int run() override;
    unsigned int stop() override;
    // Replaces the block with the update's (the result word stays the dialog's own). For the
    // fingerprint kinds the countdown restarts from the new time-out and the message follows
    // the detail value. NY_ERR_BAD_ARGUMENT for null data.
    unsigned int update(const unsigned char* pu1Data, unsigned int u4Len) override;
    unsigned int GetResponse(unsigned char* pu1Buf, unsigned int* pu4Len) override;
    unsigned int IsFinished() override;

    // The message for a block's kind, detail and attempts values into szText (u4Size bytes);
    // false for a kind that has none. Public so that the choice can be checked without a
    // display.
    bool SelectMessage(char* szText, unsigned int u4Size);

private:
    void Build(const char* szDir);
    void LoadDeviceImage(const char* szDir, uint32_t u4Kind);
    // Kind 16's message: the attempts left (when 1 or 2) on a line above the verification text.
    void VerifyMessage(char* szText, unsigned int u4Size);
    // Length in bytes beyond which the message label wraps.
    unsigned int WrapLimit(uint32_t u4Kind) const;
    // Sets the message and switches line wrapping on when it is longer than u4Limit bytes.
    void ShowMessage(const char* szText, unsigned int u4Limit);
    // Shows the remaining seconds and counts one down (never below 0); GDK lock held.
    void Tick();

    static void destroy_callback(GtkWidget* pWidget, gpointer pvSelf);
    static gboolean delete_callback(GtkWidget* pWidget, GdkEvent* pEvent, gpointer pvSelf);
    static gboolean Countdown_callback(gpointer pvSelf);

    GtkWidget* m_pWindow = nullptr;
    GtkWidget* m_pRemainCounts = nullptr;
    GtkWidget* m_pTips = nullptr;
    uint32_t m_u4RemainSeconds = 0;  // under the GDK lock
    bool m_bCountdown = false;       // the time-out is one to count down; under the GDK lock
    tagBlkUiParam m_blkParam;        // under the GDK lock once run() has started
    CConfig* m_pConfig = nullptr;
    std::atomic<uint32_t> m_u4Finished{0};
    guint m_uTimerId = 0;
    GtkWidget* m_pDeviceImage = nullptr;
    bool m_bClosable = true;
    std::atomic<bool> m_bStopRequested{false};
};
