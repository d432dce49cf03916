// The widgets of this process's dialogs, found by their GtkBuilder ids and read in-process, for
// what a screen reader does not tell: which picture an image shows, whether a label wraps, the
// exact markup, and values that change faster than the accessibility tree can be polled. Every
// call takes the GDK lock and looks the widget up afresh, so a window that has gone meanwhile
// reads as absent instead of crashing.
#pragma once

#include <gtk/gtk.h>

#include <string>
#include <vector>

// Path of a file in the resource folder the dialogs load from (build/bin/res).
std::string NyGuiTestResPath(const std::string& strName);

// A label's text without markup, and its text with markup; "" when there is no such label.
std::string NyGuiTestLabelText(const char* szId);
std::string NyGuiTestLabelMarkup(const char* szId);
// Whether a label wraps its lines.
bool NyGuiTestLabelWraps(const char* szId);

// The picture shown by an image (bChild: by the single child of the widget with that id),
// as a new reference; null when there is none.
GdkPixbuf* NyGuiTestImagePixbuf(const char* szId, bool bChild = false);
// Whether two pictures are the same size and have the same pixels.
bool NyGuiTestSamePixels(GdkPixbuf* pA, GdkPixbuf* pB);
// Whether an image shows the resource file as it is.
bool NyGuiTestImageShowsFile(const char* szId, const std::string& strFile, bool bChild = false);

// Texts of every entry on screen that hides what is typed (the PIN entries), in tree order.
std::vector<std::string> NyGuiTestPinTexts();

// Screen coordinates of a widget's centre; false when it is not on screen.
bool NyGuiTestWidgetCentre(const char* szId, int* piX, int* piY);

// Calls pfnHandler each time the label's text is set, until the label goes.
gulong NyGuiTestOnLabelSet(const char* szId, GCallback pfnHandler, gpointer pvData);
