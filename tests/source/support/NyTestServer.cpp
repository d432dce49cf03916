#include "NyTestServer.h"

#include <stdlib.h>

#include "CNyUiClient.h"
#include "NyUiServerProcess.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"

CNyTestServer::CNyTestServer(const std::string& strMainName) : m_strMainName(strMainName) {
    // Without a display the server serves sessions but never shows a dialog.
    unsetenv("DISPLAY");
    m_pid = NyUiServerSpawn(NyTestBinPath("ukey-uiserver").c_str(), m_strMainName.c_str(), true,
                            nullptr);
    // Serving once the main session answers a connect; a server that ended first never is.
    bool bServing = false;
    auto ServingOrEnded = [this, &bServing] {
        CNyUiClient client;
        bServing = client.JoinServer(m_strMainName.c_str(), 50) == NY_OK;
        return bServing || !NyUiServerChildRunning(m_pid);
    };
    if (m_pid <= 0 || !NyTestWaitUntil(ServingOrEnded, 10000) || !bServing) {
        Kill();
    }
}

CNyTestServer::CNyTestServer() : CNyTestServer(NyTestUniqueName("uisrv")) {}

bool CNyTestServer::Stop(unsigned int u4TimeoutMs) {
    int iExitCode = -1;
    bool bEnded = m_pid > 0 && NyUiServerStop(m_pid, u4TimeoutMs, &iExitCode);
    m_pid = -1;
    return bEnded && iExitCode == 0;
}

void CNyTestServer::Kill() {
    NyTestKillChild(m_pid);
    m_pid = -1;
}
