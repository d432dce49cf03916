// The client side of the UI server: find or start a server, open an interaction session over
// its main session, and exchange 4096-byte UI blocks with the session's service (waiting for
// a dialog, or starting it asynchronously and polling), optionally protected with a seed.
//
//   CNyUiClient client;
//   client.StartServer(NyUiServerPathBesideSelf().c_str(), NyUiFreshMainName().c_str());
//   client.OpenSession(u4InteractionId);
//   client.Exchange(&blkRequest, &blkAnswer);
//
// Every call returns 0 or a result code (runtime/NyResult.h, comm/NyCommResult.h, below).
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

#include "comm/NyCommunication.h"
#include "ipc/NyIpcResult.h"
#include "runtime/NyResult.h"
#include "session/NyMainSessionRecord.h"
#include "uiblock/NyUiParam.h"

// The server did not open its main session in time, or ended while starting.
constexpr uint32_t NY_ERR_CLIENT_SERVER_NOT_STARTED = NY_ERR_COMM_NOT_CONNECTED;
// The server refused to start an interaction session (status 1 or 0 in its answer).
constexpr uint32_t NY_ERR_CLIENT_SESSION_REFUSED = NY_ERR_NOT_FOUND;
// No session is open on this client.
constexpr uint32_t NY_ERR_CLIENT_NO_SESSION = NY_ERR_NOT_INITIALISED;
// An asynchronous dialog was still pending when the poll time-out ran out.
constexpr uint32_t NY_ERR_CLIENT_POLL_TIMEOUT = NY_ERR_TIMEOUT;

constexpr uint32_t NY_CLIENT_WAIT_FOREVER = 0xFFFFFFFF;

class CNyUiClient {
public:
    // Starts the common library for the life of the client.
    CNyUiClient();
    // Closes the session and the main session; a server this client started is stopped.
    ~CNyUiClient();
    CNyUiClient(const CNyUiClient&) = delete;
    CNyUiClient& operator=(const CNyUiClient&) = delete;

    // Starts szServerPath under szMainName and waits (at most u4TimeoutMs) until its main session
    // answers; then works as JoinServer.
    uint32_t StartServer(const char* szServerPath, const char* szMainName,
                         uint32_t u4TimeoutMs = 10000);
    // Connects to a running server's main session.
    uint32_t JoinServer(const char* szMainName, uint32_t u4TimeoutMs = 500);
    // Leaves a server started by this client running when the client goes.
    void KeepServer() { m_pidServer = -1; }

    // One raw main-session exchange (types 1 and 2, or any other value).
    uint32_t MainRequest(uint32_t u4ReqType, uint32_t u4InteractionId, uint32_t u4ClientPid,
                         BlkMainSessionResponseTag* pResp);
    // Asks for an interaction session (this process's pid is the client pid) and connects to it.
    uint32_t OpenSession(uint32_t u4InteractionId);
    // Says the interaction is done (type 2) and closes the session channel.
    uint32_t CloseSession();

    // One request and its answer over the session.
    uint32_t Exchange(const tagBlkUiParam* pReq, tagBlkUiParam* pResp);
    // The same with the request protected under the 16-byte seed; an answer that comes back
    // protected is decrypted.
    uint32_t ExchangeProtected(const tagBlkUiParam* pReq, const uint8_t* pu1Seed,
                               tagBlkUiParam* pResp);
    // Status polls every u4IntervalMs until the answer is no longer pending, at most
    // u4TimeoutMs (NY_CLIENT_WAIT_FOREVER: no limit). The last answer is left in *pResp.
    // With a seed the polls are protected (the final answer carries the dialog's output).
    uint32_t PollUntilDone(tagBlkUiParam* pResp, uint32_t u4IntervalMs, uint32_t u4TimeoutMs,
                           const uint8_t* pu1Seed = nullptr);
    // Sends a command-only block (update, terminate, status), protected when a seed is given.
    uint32_t SendCommand(uint32_t u4CmdType, tagBlkUiParam* pResp,
                         const uint8_t* pu1Seed = nullptr);

    const std::string& MainName() const { return m_strMainName; }
    const std::string& SessionName() const { return m_strSessionName; }
    // The started server's pid (-1 when joined or kept), and the pid the server reported.
    pid_t StartedServerPid() const { return m_pidServer; }
    uint32_t ServerPid() const { return m_u4ServerPid; }
    NY_COMM_HANDLE SessionHandle() const { return m_hSession; }

private:
    void CloseMain();

    std::string m_strMainName;
    std::string m_strSessionName;
    NY_COMM_HANDLE m_hMain = nullptr;
    NY_COMM_HANDLE m_hSession = nullptr;
    uint32_t m_u4InteractionId = 0;
    uint32_t m_u4ServerPid = 0;
    pid_t m_pidServer = -1;
};
