// Shared set-up of the end-to-end dialog tests: one private display (window manager and
// accessibility bus) per test program, and per test a UI server started on it with a client
// that has an interaction session open.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "CNyUiClient.h"
#include "NyGuiTestText.h"

// Time a window or a text gets to appear (generous: CI machines run many suites at once).
constexpr unsigned int NY_E2E_WAIT_MS = 60000;
constexpr unsigned int NY_TXT_VERIFY_TITLE = 0x21007A;

// A verify request with the given lengths, in mode u4Mode; the PIN of an answer.
tagBlkUiParam NyE2eVerifyRequest(uint32_t u4Min, uint32_t u4Max, uint32_t u4Mode = 0);
std::string NyE2ePin(const tagBlkUiParam& blk);

// The verify dialog's window once shown ("" after the wait), its going, and how many there are.
std::string NyE2eWaitVerifyWindow();
bool NyE2eWaitNoVerifyWindow(unsigned int u4TimeoutMs = NY_E2E_WAIT_MS);
size_t NyE2eVerifyWindows();

// Clicks the PIN entry of pidServer's verify dialog (found by its accessible name) and types
// strPin and Enter.
void NyE2eEnterPin(pid_t pidServer, const std::string& strPin);

class E2eTest : public testing::Test {
protected:
    void SetUp() override;
    pid_t ServerPid() const { return m_owner.StartedServerPid(); }
    // Another client of the server with an interaction session open; null on failure.
    std::unique_ptr<CNyUiClient> Connect(uint32_t u4InteractionId) const;
    // ukey-uictl run against the server (vArgs after the program name), output into strOutput
    // ("" for none). Its process id is one that no other live process id contains: the server
    // counts a client alive while some live id contains its id, so a client killed by a test
    // must not share its digits with a process that outlives it.
    pid_t SpawnUictl(std::vector<std::string> vArgs, const std::string& strOutput = "") const;
    // Starts an asynchronous verify dialog through pClient, types strPin into it and returns
    // what the final poll carried ("" with a failure when it did not come).
    std::string AnswerVerify(CNyUiClient* pClient, const std::string& strPin) const;
    // Entries of /proc/<server>/<szDir> ("fd", "task"), to see that nothing accumulates.
    int ServerEntries(const char* szDir) const;

    CNyUiClient m_owner;  // started the server; stops it when the test ends
    std::unique_ptr<CNyUiClient> m_pClient;
    tagBlkUiParam m_req = NyE2eVerifyRequest(4, 16, UI_MODE_ASYNC);
    tagBlkUiParam m_resp;
};
