// What the change-PIN, new-PIN, unblock and change-label dialogs share: the block copy that
// becomes the answer, the common run() sequence, OK and Cancel, the destroy callback, stop(),
// and the 50 ms poll that refreshes the input counters and the OK button. A dialog supplies its
// widgets (Build), its counters and minimum lengths (RefreshCounters) and its own checks before
// an answer is written (Accept).
#pragma once

#include <atomic>
#include <cstdint>
#include <initializer_list>

#include "runtime/NySecureMem.h"
#include "ui/GUIBase.h"
#include "uiblock/NyUiParam.h"

class GUIPinDialog : public GUIBase {
public:
    unsigned int run() override;
    unsigned int stop() override;
    unsigned int GetResponse(unsigned char* pu1Buf, unsigned int* pu4Len) override;
    unsigned int IsFinished() override;
    // Builds the dialog's window without showing it and destroys it again, so that a spare
    // window of its layout, set up as this dialog sets it up, is ready for the next dialog
    // (GUISpareLayout.h). Takes the GUI lock like run(); logs nothing.
    void Rehearse();

protected:
    // Copies the request (a null request gives a zeroed block) and marks it cancelled.
    // szClassName names the dialog in its log lines ("<name>::run() enter").
    GUIPinDialog(const tagBlkUiParam* pReq, CConfig* pConfig, const char* szClassName);
    // Wipes the block copy: it holds the PINs just typed.
    ~GUIPinDialog() override;

    // Fetches the widgets, sets texts and fonts, connects the signals (ConnectButtons,
    // ConnectEntry), between LoadDialog and FinishBuild; returns the entry that gets the focus
    // first. Called under the GUI lock.
    virtual GtkWidget* Build(const char* szDir) = 0;
    // Shows each entry's counter; true when every entry holds at least its minimum length.
    virtual bool RefreshCounters() = 0;
    // OK with every entry long enough: the dialog's own checks, then its entries into the
    // block. False keeps the dialog open.
    virtual bool Accept() = 0;
    // The window is gone: forget the dialog's widget pointers.
    virtual void ForgetWidgets() = 0;
    // What the window manager may do with the window.
    virtual GdkWMFunction WindowFunctions() const { return NY_GUI_WM_FUNCTIONS; }

    // The first steps of Build: res/<szName>.glade loaded, its "<szName>_window" as the window,
    // "<szName>_idok" and "<szName>_idcancle" handed out, the logo in "<szName>_image".
    GtkBuilder* LoadDialog(const char* szDir, const char* szName, GtkWidget** ppOk,
                           GtkWidget** ppCancel);
    // The last steps of Build: the poll started, the builder dropped, the focus given to
    // pFirst, which is returned.
    GtkWidget* FinishBuild(GtkBuilder* pBuilder, GtkWidget* pFirst);
    // The window's "destroy", OK and Cancel "pressed" and "activate"; Escape is Cancel while
    // the Cancel button is shown.
    void ConnectButtons(GtkWidget* pWindow, GtkWidget* pOk, GtkWidget* pCancel);
    // Enter in the entry is OK. A PIN entry also refuses pasting. pfnFilter (may be null) is
    // the entry's "insert-text" handler, called with pvFilterData.
    void ConnectEntry(GtkWidget* pEntry, bool bPin, GCallback pfnFilter, gpointer pvFilterData);
    // Fonts of the dialog: "Sans" 9 on button labels and labels, 10 on entries.
    void SetFonts(std::initializer_list<GtkWidget*> lButtons,
                  std::initializer_list<GtkWidget*> lEntries,
                  std::initializer_list<GtkWidget*> lLabels);
    // Captions stand right-aligned against their entries, centred in height.
    static void AlignCaptions(std::initializer_list<GtkWidget*> lCaptions);
    // A configuration number, or u4Default when it is missing or there is no configuration.
    unsigned int ConfigU4(unsigned int u4Id, unsigned int u4Default) const;
    // Refusal of the entered PINs: szMessage on pLabel, the entries emptied, the focus on
    // pFocus.
    static void Refuse(GtkWidget* pLabel, const char* szMessage,
                       std::initializer_list<GtkWidget*> lCleared, GtkWidget* pFocus);
    // Byte length of an entry's text (0 for a null entry).
    static unsigned int EntryLength(GtkWidget* pEntry);
    static const char* EntryText(GtkWidget* pEntry);

    // The block copy lives in locked memory that core dumps leave out: it holds the PINs.
    CNySecure<tagBlkUiParam> m_secureBlock;
    tagBlkUiParam& m_blkParam = *m_secureBlock;
    CConfig* m_pConfig = nullptr;
    // The destroy callback logs its entry and exit ("<name>::destroy_callback() enter").
    bool m_bLogDestroy = false;
    GtkWidget* m_pWindow = nullptr;
    GtkWidget* m_pOkButton = nullptr;
    GtkWidget* m_pCancelButton = nullptr;

private:
    // Starts the 50 ms poll and sets the OK button from the entries as they are.
    void StartPolling();
    void RefreshOk();
    void OnDestroyed();
    void OnOk();
    void OnCancel();

    static void destroy_callback(GtkWidget* pWidget, gpointer pvSelf);
    static gboolean OnOk_callback(GtkWidget* pWidget, gpointer pvSelf);
    static void OnCancle_callback(GtkWidget* pWidget, gpointer pvSelf);
    static gboolean Poll_callback(gpointer pvSelf);
    static gboolean EscapeKey_callback(GtkWidget* pWidget, GdkEventKey* pEvent, gpointer pvSelf);
    static void EntryChanged_callback(GtkEditable* pEditable, gpointer pvSelf);

    const char* m_szClassName;
    std::atomic<uint32_t> m_u4Finished{0};
    guint m_uTimerId = 0;
    std::atomic<bool> m_bStopRequested{false};
};
