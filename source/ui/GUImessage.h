// The message dialog: turns a result code (or a success notice) into a localized text, shows it
// with one or two buttons and reports which one the user pressed.
#pragma once

#include <atomic>
#include <cstdint>

#include "ui/GUIBase.h"
#include "uiblock/NyUiParam.h"

// Payload of the message command.
constexpr uint32_t UI_OFS_MESSAGE_ID = 312;
constexpr uint32_t UI_OFS_MESSAGE_PARAM = 316;
constexpr uint32_t UI_OFS_MESSAGE_CHOICE = 1348;  // out: the button pressed

// Button modes chosen with the text.
constexpr uint32_t NY_MSG_BUTTONS_SINGLE = 0;  // one OK button, no close button
constexpr uint32_t NY_MSG_BUTTONS_KEEP = 1;    // OK and Cancel as loaded
constexpr uint32_t NY_MSG_BUTTONS_YES_NO = 2;  // a question: Yes and No

// Choices written at UI_OFS_MESSAGE_CHOICE.
constexpr uint32_t NY_MSG_CHOICE_NONE = 0;
constexpr uint32_t NY_MSG_CHOICE_YES = 1;
constexpr uint32_t NY_MSG_CHOICE_NO = 2;
constexpr uint32_t NY_MSG_CHOICE_CANCEL = 3;

class GUImessage : public GUIBase {
public:
    GUImessage(const tagBlkUiParam* pReq, CConfig* pConfig);
    ~GUImessage() override;

    unsigned int run() override;
    unsigned int stop() override;
    unsigned int GetResponse(unsigned char* pu1Buf, unsigned int* pu4Len) override;
    unsigned int IsFinished() override;

    // Selects and formats the text for the block's message id and parameter into szText
    // (u4Size bytes) and sets the button mode. Public so that the selection can be checked
    // without a display.
    void ParseMessage(char* szText, unsigned int u4Size);
    uint32_t GetButtonMode() const { return m_u4ButtonMode; }

private:
    void Build(const char* szDir);
    // The message on its label, centred when it fits on one line, wrapped when longer.
    static void ShowCentred(GtkWidget* pLabel, const char* szText);
    void ArrangeButtons(GtkWidget* pCancel, GtkWidget* pFixed);
    // Text selection by message id, after the wrong-PIN code has been normalised.
    void SelectWrongPin(uint32_t u4Count, char* szWork);
    void SelectLocked(uint32_t u4Param, char* szWork);
    void SelectByTable(uint32_t u4MsgId, uint32_t u4Param, char* szWork);
    // Text u4TextId formatted with one number into szWork (NY_GUI_LONG_TEXT_SIZE bytes).
    void FormatText(unsigned int u4TextId, uint32_t u4Value, char* szWork);

    static void destroy_callback(GtkWidget* pWidget, gpointer pvSelf);
    static void OnOk_callback(GtkWidget* pWidget, gpointer pvSelf);
    static void OnCancle_callback(GtkWidget* pWidget, gpointer pvSelf);

    tagBlkUiParam m_blkParam;
    uint32_t m_u4ButtonMode = NY_MSG_BUTTONS_SINGLE;
    GtkWidget* m_pWindow = nullptr;
    std::atomic<uint32_t> m_u4Finished{0};
    CConfig* m_pConfig = nullptr;
    GtkWidget* m_pOkButton = nullptr;
    std::atomic<bool> m_bStopRequested{false};
};
