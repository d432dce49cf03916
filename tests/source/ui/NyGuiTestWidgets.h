// The widgets of this process's dialogs, found by their GtkBuilder ids and read in-process, for
// what a screen reader does not tell: which picture an image shows, whether a label wraps, the
// exact markup, and values that change faster than the accessibility tree can be polled. Every
// call takes the GDK lock and looks the widget up afresh, so a window that has gone meanwhile
// reads as absent instead of crashing.
#pragma once

#include <gtk/gtk.h>

#include <string>
#include <vector>

// A label's text without markup, and its text with markup; "" when there is no such label.
std::string NyGuiTestLabelText(const char* szId);
std::string NyGuiTestLabelMarkup(const char* szId);
// Whether a label wraps its lines.
bool NyGuiTestLabelWraps(const char* szId);

// Whether an image (bChild: the single child of the widget with that id) shows the file of the
// resource folder pixel for pixel, scaled to iWidth x iHeight when those are given.
bool NyGuiTestImageShowsFile(const char* szId, const std::string& strFile, bool bChild = false,
                             int iWidth = 0, int iHeight = 0);

// Stock id of the icon an entry shows at its end ("" for none).
std::string NyGuiTestEntryEndIcon(const char* szId);

// Screen coordinates of a widget's centre; false when it is not on screen.
bool NyGuiTestWidgetCentre(const char* szId, int* piX, int* piY);

// Calls pfnHandler each time the label's text is set, until the label goes.
gulong NyGuiTestOnLabelSet(const char* szId, GCallback pfnHandler, gpointer pvData);
