#include "NyTestServer.h"

#include <stdlib.h>

#include "CNyUiClient.h"
#include "NyUiServerProcess.h"
#include "os/NyOs.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"

namespace {

constexpr unsigned int START_TIMEOUT_MS = 10000;

// Waits until the main session answers a connect; false when the server ended first.
bool WaitUntilServing(pid_t pid, const std::string& strMainName) {
    uint64_t u8End = NyOsGetTickCount64() + START_TIMEOUT_MS;
    while (NyOsGetTickCount64() < u8End) {
        if (!NyUiServerChildRunning(pid)) {
            return false;
        }
        CNyUiClient client;
        if (client.JoinServer(strMainName.c_str(), 50) == NY_OK) {
            return true;
        }
        NyOsSleep(10);
    }
    return false;
}

}  // namespace

CNyTestServer::CNyTestServer() : m_strMainName(NyTestUniqueName("uisrv")) {
    Start(m_strMainName);
}

CNyTestServer::CNyTestServer(const std::string& strArgument, const std::string& strServedName)
    : m_strMainName(strServedName) {
    Start(strArgument);
}

CNyTestServer::~CNyTestServer() {
    Stop();
}

void CNyTestServer::Start(const std::string& strArgument) {
    // Without a display the server serves sessions but never shows a dialog.
    unsetenv("DISPLAY");
    m_pid =
        NyUiServerSpawn(NyTestBinPath("ukey-uiserver").c_str(), strArgument.c_str(), true, nullptr);
    if (m_pid > 0 && !WaitUntilServing(m_pid, m_strMainName)) {
        NyTestKillChild(m_pid);
        m_pid = -1;
    }
}

bool CNyTestServer::Stop(unsigned int u4TimeoutMs) {
    if (m_pid <= 0) {
        return false;
    }
    int iExitCode = -1;
    bool bEnded = NyUiServerStop(m_pid, u4TimeoutMs, &iExitCode);
    m_pid = -1;
    return bEnded && iExitCode == 0;
}

void CNyTestServer::Kill() {
    NyTestKillChild(m_pid);
    m_pid = -1;
}
