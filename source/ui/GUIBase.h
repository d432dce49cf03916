// The dialog interface every window of the UI server derives from, the widget helpers, and the
// steps of building and running a dialog that every dialog shares.
//
// Threads: run() executes on the dialog's own thread (or the session thread) and holds
// s_GuiMutex throughout, so one dialog exists on screen at a time. All GTK work, building
// included, happens under the GDK thread lock; stop() and update() come from the service
// thread and take the same lock.
#pragma once

#include <gtk/gtk.h>

#include <atomic>
#include <cstdint>

#include "runtime/NyTypes.h"

struct tagBlkUiParam;
class CConfig;

// Capacities of the buffers the dialogs use for paths and texts.
constexpr unsigned int NY_GUI_PATH_SIZE = 256;
constexpr unsigned int NY_GUI_TEXT_SIZE = 512;
constexpr unsigned int NY_GUI_LONG_TEXT_SIZE = 1024;
// Fonts: every dialog uses one family; buttons and labels at 9 points, PIN entries at 10.
constexpr const char* NY_GUI_FONT = "Sans";
constexpr unsigned int NY_GUI_FONT_SIZE = 9;
constexpr unsigned int NY_GUI_PIN_FONT_SIZE = 10;
// Polling period of the input counters and OK enabling.
constexpr guint NY_GUI_POLL_MS = 50;
// Window-manager functions the dialogs allow: move and close, no resize, minimise or maximise.
constexpr GdkWMFunction NY_GUI_WM_FUNCTIONS =
    static_cast<GdkWMFunction>(GDK_FUNC_MOVE | GDK_FUNC_CLOSE);

class GUIBase {
public:
    GUIBase() = default;
    GUIBase(const GUIBase&) = delete;
    GUIBase& operator=(const GUIBase&) = delete;

    // The dialog operations, in this slot order (the service calls them through the table).
    // Build, show and run the dialog until it closes; 0 or an error code.
    virtual unsigned int run();
    // Close the dialog from outside (the service's terminate request).
    virtual unsigned int stop();
    // Progress data from the client while the dialog is shown.
    virtual unsigned int update(const unsigned char* pu1Data, unsigned int u4Len);
    // Copy the answer block out (size-query convention).
    virtual unsigned int GetResponse(unsigned char* pu1Buf, unsigned int* pu4Len);
    // Non-zero once the window has been destroyed.
    virtual unsigned int IsFinished();
    // Font "family" at u4Size points on w, or on its single child (a button's label) when
    // enChild is true. 1 when applied, 0 on bad arguments.
    virtual unsigned int SetWidgetFont(GtkWidget* pWidget, const char* szFamily,
                                       unsigned int u4Size, EnBool enChild);
    // The light grey background of every dialog window; 1, or 0 for a null widget.
    virtual unsigned int Set_BG_Color(GtkWidget* pWidget);
    // Delivers a synthetic focus-in event to a GDK window.
    virtual void FocusEvent(GdkDrawable* pWindow);
    // Moves the X input focus to the root window, taking the keyboard away from whichever
    // application had it; the dialog gets it back when the user clicks into it.
    virtual void SetInputFoucs(GtkWidget* pWidget);

    // Declared after the dialog operations so that their slot order stays as listed above.
    virtual ~GUIBase() = default;

    // Directory of the running executable (the folder that holds "res"), without the trailing
    // slash. 0, or NY_ERR_BAD_ARGUMENT when the path cannot be read or does not fit.
    static unsigned int GetModuleFileName(char* szBuf, unsigned int u4Size);

    // Held for the whole of a dialog's run(): one dialog builds and runs at a time. A GMutex of
    // static storage needs no initialisation (g_mutex_lock / g_mutex_unlock).
    static GMutex s_GuiMutex;

protected:
    // The block copy every dialog keeps: the request (or zeros for a null request) with the
    // result set to cancelled; wiped when the dialog goes; handed out whole as the answer.
    static void InitBlockCopy(tagBlkUiParam* pCopy, const tagBlkUiParam* pReq);
    static void WipeBlockCopy(tagBlkUiParam* pCopy);
    // Size-query copy of the block to the caller (0xE0600005 with the size for a short buffer);
    // the dialogs' GetResponse returns 0 whatever this reports.
    static unsigned int CopyBlockOut(const tagBlkUiParam* pCopy, unsigned char* pu1Buf,
                                     unsigned int* pu4Len);

    // Building blocks of run(), in the order a dialog uses them.

    // The executable's directory into szDir (NY_GUI_PATH_SIZE bytes); NY_ERR_BAD_ARGUMENT when
    // it cannot be read or comes out empty.
    static unsigned int GetResourceDir(char* szDir);
    // Takes s_GuiMutex, then the GDK lock, and sets up the thread for GTK work; ReleaseGui
    // gives both locks back.
    static void AcquireGui();
    static void ReleaseGui();
    // Makes the calling thread draw with the font map shared by all dialogs.
    static void UseSharedFontMap();
    // "<szDir>/res/<szName>" into szPath (NY_GUI_PATH_SIZE bytes).
    static void ResourcePath(const char* szDir, const char* szName, char* szPath);
    // A builder over res/<szGladeName>; a missing or broken file is left to GTK's warnings
    // (the widgets then come back null). Deliberately not loaded here when a spare is ready:
    // the window was built ahead, hidden, and is handed over (GUISpareLayout.h).
    static GtkBuilder* LoadBuilder(const char* szDir, const char* szGladeName);
    static GtkWidget* GetWidget(GtkBuilder* pBuilder, const char* szId);
    // Puts res/Logo_Long.bmp into an image widget.
    static void SetLogo(GtkWidget* pImage, const char* szDir);
    // A PIN entry: its text in locked, wiped memory, typed characters hidden as '*', at most
    // u4MaxLen of them and never more than the answer's PIN field holds.
    static void PreparePinEntry(GtkWidget* pEntry, uint32_t u4MaxLen);
    // Text u4Id of the configuration into szText (u4Size bytes); left empty when the lookup
    // fails, so that nothing stale is shown.
    static void LoadText(CConfig* pConfig, unsigned int u4Id, char* szText, unsigned int u4Size);
    // Text u4Id, fetched into a buffer of u4Size bytes (at most NY_GUI_LONG_TEXT_SIZE), as a
    // window's title, a button's label or a label's text, by the widget's type.
    static void SetWidgetText(CConfig* pConfig, unsigned int u4Id, GtkWidget* pWidget,
                              unsigned int u4Size = NY_GUI_TEXT_SIZE);
    // szText as a window's title, a button's label or a label's text, by the widget's type.
    static void ApplyText(GtkWidget* pWidget, const char* szText);
    // A font, and the dialogs' background colour, on a widget.
    static void ApplyFont(GtkWidget* pWidget, const PangoFontDescription* pDesc);
    static void ApplyBackground(GtkWidget* pWidget);
    // Ties an entry to its caption so that a screen reader announces the entry by it.
    static void SetEntryCaption(GtkWidget* pEntry, GtkWidget* pCaption);

    // The input counter of one PIN entry: shows text 0x210085 formatted with the entry's
    // character count on pLabel, or nothing when it is empty; returns the count.
    static unsigned int ShowInputCount(CConfig* pConfig, GtkWidget* pEntry, GtkWidget* pLabel);
    // The entry's text into the 33-byte PIN field at u4PinOffset (cut at 32 characters) and its
    // byte length into the u32 at u4LenOffset.
    static void StorePin(tagBlkUiParam* pBlock, uint32_t u4PinOffset, uint32_t u4LenOffset,
                         GtkWidget* pEntry);

    // Shows the built window and runs the GTK main loop until the dialog ends; called with the
    // GDK lock held. Background, keep-above, window-manager functions, then the X focus moved
    // off the application that had it; once mapped, the dialog also asks the window manager to
    // make it the active window, since a manager may otherwise hand the keyboard straight back
    // to that application. When a stop arrived while the window was being built
    // (*pbStopRequested), the window is destroyed instead of shown. pu4Finished is the
    // dialog's finished flag, which a watch checks so that an end that comes just before the
    // loop starts cannot be missed.
    void ShowAndRun(GtkWidget** ppWindow, GtkWidget* pFocus, GdkWMFunction enFunctions,
                    const std::atomic<uint32_t>* pu4Finished,
                    const std::atomic<bool>* pbStopRequested);
    // The stop() of every dialog: marks the stop and, when its window exists, quits the main
    // loop and destroys the window (whose destroy callback then ends the dialog). A stop that
    // comes before the window is built keeps it from being shown. Takes the GDK lock.
    static unsigned int StopDialog(GtkWidget** ppWindow, std::atomic<bool>* pbStopRequested);
    // gtk_main_quit() when a main loop runs (GTK complains otherwise).
    static void QuitMainLoop();
};
