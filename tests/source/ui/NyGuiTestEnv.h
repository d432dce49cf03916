// Shared set-up of the dialog tests: a private display with a window manager and the
// accessibility bus, GTK started in this process in the server's order, and a dialog run on a
// thread of its own as the service runs it.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <thread>

#include "NyGuiTestText.h"
#include "support/NyTestAccessible.h"
#include "ui/GUIBase.h"
#include "uiblock/NyUiParam.h"

// Time a window or a text gets to appear (generous: CI machines run many suites at once).
constexpr unsigned int NY_GUI_TEST_WAIT_MS = 60000;

// Runs a dialog's run() on a thread of its own.
class CGuiTestRun {
public:
    explicit CGuiTestRun(GUIBase* pDialog);
    ~CGuiTestRun();
    // Waits for run() to return; false after u4TimeoutMs.
    bool Wait(unsigned int u4TimeoutMs);
    unsigned int Result() const { return m_u4Result; }

private:
    GUIBase* m_pDialog;
    std::thread m_thread;
    volatile bool m_bDone = false;
    unsigned int m_u4Result = 0;
};

// The answer block of a dialog.
tagBlkUiParam NyGuiTestResponse(GUIBase* pDialog);

// This process's accessibility tree, and what it shows.
std::vector<BlkTestAccessibleTag> NyGuiTestTree();
// Waits for a showing object of that role and name in this process.
bool NyGuiTestWaitFor(const std::string& strRole, const std::string& strName,
                      BlkTestAccessibleTag* pFound = nullptr);
// Clicks the middle of an object.
void NyGuiTestClick(const BlkTestAccessibleTag& blk, unsigned int u4Button = 1);
