// The dialog interface every window of the UI server derives from, plus the widget helpers and
// the lock that keeps one dialog on screen at a time.
#pragma once

#include <gtk/gtk.h>

#include <cstdint>

#include "runtime/NyTypes.h"

struct tagBlkUiParam;
class CConfig;

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
    // The light grey background of every dialog window; returns 1.
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
};
