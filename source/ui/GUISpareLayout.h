// Dialog windows built ahead of use. Building a window from its layout file (parsing, creating
// the widgets, realizing them, laying out its texts in their fonts) is most of the time between
// a request and its dialog on screen, so a hidden window of each layout in use is built while
// nothing else is going on, and the next dialog of that layout takes it instead of building its
// own. The steps that set a widget up the same way for every request (texts of the
// configuration, fonts, colours) are noted while a dialog is built and done on the next spare
// too, which is then laid out once; the dialog finds them done. A spare serves one dialog: every
// dialog still gets a window of its own, never one that another dialog has used.
// Everything here runs with the GDK lock held.
#pragma once

#include <gtk/gtk.h>

#include <functional>

// A builder over the layout file szPath: the spare when one is ready, else one built now. A
// missing or broken file is left to GTK's warnings (the widgets then come back null).
GtkBuilder* NyGuiTakeLayout(const char* szPath);
// Notes a step done on pWidget (a widget of the layout last taken, known by its id there) for
// the next spare of that layout.
void NyGuiNoteStep(GtkWidget* pWidget, std::function<void(GtkWidget*)> fnStep);
// Builds a spare of the layout last taken once pWindow (the dialog shown from it) has been
// drawn, from the GTK main loop when it has nothing else to do.
void NyGuiPrepareSpareAfterDrawn(GtkWidget* pWindow);
// Builds a spare of the layout last taken now.
void NyGuiPrepareSpareNow();
