// Acting on windows of the test display the way a person would, through the xdotool, xprop
// and ImageMagick programs (they reach the display through DISPLAY, see NyTestDisplay.h).
#pragma once

#include <string>
#include <vector>

// Runs a shell command and returns its standard output (trailing newline removed).
std::string NyTestShell(const std::string& strCommand, int* piExitCode = nullptr);

// Quotes a text for the shell.
std::string NyTestShellQuote(const std::string& str);

// Ids of the visible windows whose title matches the regular expression (xdotool syntax).
std::vector<std::string> NyTestFindWindows(const std::string& strTitleRegex);
// Waits until exactly one such window is visible and returns it; "" after u4TimeoutMs.
std::string NyTestWaitWindow(const std::string& strTitleRegex, unsigned int u4TimeoutMs);
// Waits until no such window is visible.
bool NyTestWaitNoWindow(const std::string& strTitleRegex, unsigned int u4TimeoutMs);

std::string NyTestWindowTitle(const std::string& strWindow);
// The value printed by xprop for one property of the window ("" when unset).
std::string NyTestWindowProperty(const std::string& strWindow, const std::string& strProperty);
// The window that has the input focus (xdotool getwindowfocus).
std::string NyTestFocusedWindow();
// Waits until that window has the input focus and is the window manager's active window (keys
// for the window manager, such as alt+F4, act on that one).
bool NyTestWaitFocused(const std::string& strWindow, unsigned int u4TimeoutMs);
// Closes the window titled that way with the window manager's close key (alt+F4) as a person
// does: pressed again every 2 s until the window is gone or u4TimeoutMs have passed.
bool NyTestCloseWindow(const std::string& strTitleRegex, unsigned int u4TimeoutMs);

// Keyboard: text typed through the XTEST extension into whatever has the focus, and key
// combinations in xdotool's names ("Return", "ctrl+v", "alt+F4"), several separated by spaces.
void NyTestType(const std::string& strText);
void NyTestKey(const std::string& strKeys);
// Mouse: moves to screen coordinates and clicks button u4Button (1 left, 3 right).
void NyTestClickAt(int iX, int iY, unsigned int u4Button = 1);
// Parks the pointer at screen coordinates.
void NyTestMovePointer(int iX, int iY);
// Presses button 1 at one point and releases it at another, moving in steps with pauses, as a
// person drags.
void NyTestDrag(int iFromX, int iFromY, int iToX, int iToY);
// Window geometry on the screen; false when unknown.
bool NyTestWindowGeometry(const std::string& strWindow, int* piX, int* piY, int* piWidth,
                          int* piHeight);

// Saves a picture of the window (or of the whole screen for "root") as PNG; false on failure.
bool NyTestScreenshot(const std::string& strWindow, const std::string& strPath);
