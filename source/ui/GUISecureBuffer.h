// The text buffer of the PIN entries: a GtkEntryBuffer whose text lives in locked memory that
// core dumps leave out (NySecureAlloc), and whose bytes are wiped as soon as the text shrinks
// and when the buffer goes. GTK's own buffer keeps the text on the ordinary heap.
#pragma once

#include <gtk/gtk.h>

// A new buffer (one reference, the caller's) that holds at most NY_GUI_SECURE_TEXT_BYTES bytes
// of text; an insertion that would not fit is cut at a whole character.
GtkEntryBuffer* NyGuiSecureEntryBufferNew();
constexpr gsize NY_GUI_SECURE_TEXT_BYTES = 1024;

// Logs once per process when memory for secrets could not be locked (the dialogs still work).
void NyGuiNoteSecureMemory(const void* pv);
