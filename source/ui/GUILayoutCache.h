// Keeps the dialogs quick to the screen: the next window of a layout is built while the
// current one is on screen (so the next dialog of that kind starts from a built, hidden
// window instead of parsing its layout file), and images are loaded once per process. Every
// call is made with the GDK lock held.
#pragma once

#include <gtk/gtk.h>

// A builder over the layout file szPath (the caller's reference): the one built ahead of time
// when there is one, else a new one. A missing or broken file is left to GTK's warnings.
GtkBuilder* NyGuiTakeLayout(const char* szPath);
// Builds, once the dialog's main loop is idle, the next window of the layout last taken.
void NyGuiPrepareNextLayout();
// The picture in file szPath (a new reference), loaded on first use; null when unreadable.
GdkPixbuf* NyGuiImage(const char* szPath);
