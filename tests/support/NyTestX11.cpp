#include "support/NyTestX11.h"

#include <sys/wait.h>

#include <cstdio>
#include <sstream>

#include "support/NyTestProcess.h"

std::string NyTestShell(const std::string& strCommand, int* piExitCode) {
    std::string strOut;
    FILE* pPipe = popen((strCommand + " 2>/dev/null").c_str(), "r");
    if (pPipe == nullptr) {
        if (piExitCode != nullptr) {
            *piExitCode = -1;
        }
        return strOut;
    }
    char acBuf[4096];
    size_t cb = 0;
    while ((cb = fread(acBuf, 1, sizeof(acBuf), pPipe)) > 0) {
        strOut.append(acBuf, cb);
    }
    int iStatus = pclose(pPipe);
    if (piExitCode != nullptr) {
        *piExitCode = WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
    }
    while (!strOut.empty() && strOut.back() == '\n') {
        strOut.pop_back();
    }
    return strOut;
}

std::string NyTestShellQuote(const std::string& str) {
    std::string strQuoted = "'";
    for (char ch : str) {
        strQuoted += (ch == '\'') ? std::string("'\\''") : std::string(1, ch);
    }
    return strQuoted + "'";
}

std::vector<std::string> NyTestFindWindows(const std::string& strTitleRegex) {
    std::istringstream lines(
        NyTestShell("xdotool search --onlyvisible --name " + NyTestShellQuote(strTitleRegex)));
    std::vector<std::string> vWindows;
    std::string strLine;
    while (std::getline(lines, strLine)) {
        if (!strLine.empty()) {
            vWindows.push_back(strLine);
        }
    }
    return vWindows;
}

std::string NyTestWaitWindow(const std::string& strTitleRegex, unsigned int u4TimeoutMs) {
    std::string strWindow;
    NyTestWaitUntil(
        [&] {
            std::vector<std::string> v = NyTestFindWindows(strTitleRegex);
            strWindow = v.size() == 1 ? v[0] : "";
            return !strWindow.empty();
        },
        u4TimeoutMs);
    return strWindow;
}

bool NyTestWaitNoWindow(const std::string& strTitleRegex, unsigned int u4TimeoutMs) {
    return NyTestWaitUntil([&] { return NyTestFindWindows(strTitleRegex).empty(); }, u4TimeoutMs);
}

std::string NyTestWindowTitle(const std::string& strWindow) {
    return NyTestShell("xdotool getwindowname " + strWindow);
}

std::string NyTestWindowProperty(const std::string& strWindow, const std::string& strProperty) {
    std::string strOut = NyTestShell("xprop -id " + strWindow + " " + strProperty);
    size_t pos = strOut.find(" = ");
    if (pos == std::string::npos) {
        pos = strOut.find(": ");  // window-id properties print "... # id"
        if (pos == std::string::npos) {
            return "";
        }
    }
    return strOut.substr(pos + 3);
}

std::string NyTestFocusedWindow() {
    return NyTestShell("xdotool getwindowfocus");
}

bool NyTestWaitFocused(const std::string& strWindow, unsigned int u4TimeoutMs) {
    return NyTestWaitUntil([&] { return NyTestFocusedWindow() == strWindow; }, u4TimeoutMs);
}

void NyTestType(const std::string& strText) {
    NyTestShell("xdotool type --delay 25 -- " + NyTestShellQuote(strText));
}

void NyTestKey(const std::string& strKeys) {
    std::istringstream keys(strKeys);
    std::string strCommand = "xdotool key --delay 25 --";
    std::string strKey;
    while (keys >> strKey) {
        strCommand += " " + NyTestShellQuote(strKey);
    }
    NyTestShell(strCommand);
}

// No --sync: it waits for the pointer to move, forever when it is already there. The server
// handles the motion before the click in any case, as both come through one connection.
void NyTestMovePointer(int iX, int iY) {
    NyTestShell("xdotool mousemove " + std::to_string(iX) + " " + std::to_string(iY));
}

void NyTestClickAt(int iX, int iY, unsigned int u4Button) {
    NyTestShell("xdotool mousemove " + std::to_string(iX) + " " + std::to_string(iY) + " click " +
                std::to_string(u4Button));
}

bool NyTestWindowGeometry(const std::string& strWindow, int* piX, int* piY, int* piWidth,
                          int* piHeight) {
    std::istringstream lines(NyTestShell("xdotool getwindowgeometry --shell " + strWindow));
    std::string strLine;
    int nFound = 0;
    while (std::getline(lines, strLine)) {
        size_t pos = strLine.find('=');
        if (pos == std::string::npos) {
            continue;
        }
        std::string strKey = strLine.substr(0, pos);
        int iValue = atoi(strLine.c_str() + pos + 1);
        int* pTarget = strKey == "X"        ? piX
                       : strKey == "Y"      ? piY
                       : strKey == "WIDTH"  ? piWidth
                       : strKey == "HEIGHT" ? piHeight
                                            : nullptr;
        if (pTarget != nullptr) {
            *pTarget = iValue;
            ++nFound;
        }
    }
    return nFound == 4;
}

bool NyTestScreenshot(const std::string& strWindow, const std::string& strPath) {
    int iExit = -1;
    NyTestShell("import -window " + strWindow + " " + NyTestShellQuote(strPath), &iExit);
    return iExit == 0;
}
