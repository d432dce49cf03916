// The widgets of this process's dialogs, found by their GtkBuilder ids and read in-process, for
// what a screen reader does not tell: the exact markup, and values that change faster than the
// accessibility tree can be polled. Every call takes the GDK lock and looks the widget up afresh,
// so a window that has gone meanwhile reads as absent instead of crashing.
#pragma once

#include <gtk/gtk.h>

#include <string>
#include <vector>

// A label's text without markup, and its text with markup; "" when there is no such label.
std::string NyGuiTestLabelText(const char* szId);
std::string NyGuiTestLabelMarkup(const char* szId);
// Stock id of the icon an entry shows at its end ("" for none).
std::string NyGuiTestEntryEndIcon(const char* szId);

// Screen coordinates of a widget's centre; false when it is not on screen.
bool NyGuiTestWidgetCentre(const char* szId, int* piX, int* piY);

// Calls pfnHandler each time the label's text is set, until the label goes.
gulong NyGuiTestOnLabelSet(const char* szId, GCallback pfnHandler, gpointer pvData);
