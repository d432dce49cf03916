// Shared set-up of the end-to-end dialog tests: one private display (window manager and
// accessibility bus) per test program, a UI server started on it, clients that join it.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "CNyUiClient.h"
#include "NyGuiTestText.h"
#include "support/NyTestAccessible.h"

// Time a window or a text gets to appear (generous: CI machines run many suites at once).
constexpr unsigned int NY_E2E_WAIT_MS = 30000;

// A UI server on the test display, started by its own client and stopped with it.
class CE2eServer {
public:
    CE2eServer();
    bool Started() const { return m_bStarted; }
    const std::string& MainName() const { return m_owner.MainName(); }
    pid_t Pid() const { return m_owner.StartedServerPid(); }
    // A client of this server with an interaction session open; null on failure.
    std::unique_ptr<CNyUiClient> Connect(uint32_t u4InteractionId = 1) const;
    // ukey-uictl run against this server (vArgs after the program name), output into
    // strOutput ("" for none). Its process id is one that no other live process id contains:
    // the server counts a client alive while some live id contains its id, so a client killed
    // by a test must not share its digits with a process that outlives it.
    pid_t SpawnUictl(std::vector<std::string> vArgs, const std::string& strOutput = "") const;
    // Starts an asynchronous verify dialog through pClient, types strPin into it and returns
    // what the final poll carried ("" with a failure when it did not come).
    std::string AnswerVerify(CNyUiClient* pClient, const std::string& strPin) const;
    // Open descriptors and threads of the server process, to see that nothing accumulates.
    int OpenFds() const;
    int Threads() const;

private:
    CNyUiClient m_owner;
    bool m_bStarted = false;
};

// A verify request with the given lengths, in mode u4Mode.
tagBlkUiParam NyE2eVerifyRequest(uint32_t u4Min, uint32_t u4Max, uint32_t u4Mode = 0);
std::string NyE2ePin(const tagBlkUiParam& blk);

// The verify dialog's window once shown ("" after the wait), its going, and how many there are.
std::string NyE2eWaitVerifyWindow();
bool NyE2eWaitNoVerifyWindow(unsigned int u4TimeoutMs = NY_E2E_WAIT_MS);
size_t NyE2eVerifyWindows();

// Clicks the server's PIN entry (found by its accessible name) and types strPin and Enter.
void NyE2eEnterPin(pid_t pidServer, const std::string& strPin);
