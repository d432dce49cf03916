// The dialogs' pictures, each read and decoded once per process instead of once per dialog.
// Called with the GDK lock held.
#pragma once

#include <gtk/gtk.h>

// The picture in file szPath (a new reference), loaded on first use; null when unreadable.
GdkPixbuf* NyGuiImage(const char* szPath);
