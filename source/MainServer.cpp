#include "MainServer.h"

#include <errno.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>

#include "SessionManager.h"
#include "log/NyLog.h"
#include "os/NyOs.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"
#include "session/NyMainSessionRecord.h"
#include "session/NySessionChannel.h"

std::atomic<NY_COMM_HANDLE> m_hServerSession{nullptr};
std::atomic<uint32_t> m_bStopServer{0};

namespace {

constexpr uint32_t MAIN_BUFFER_SIZE = 4096;
constexpr uint32_t LISTEN_RETRY_MS = 5;
// The main channel beats every 2 ms rather than every 10: every client's first step is to wait
// for a beat here, and in a storm of clients starting together that wait is everyone's.
constexpr uint32_t MAIN_BEAT_PERIOD_MS = 2;

// The request loop and the keep-alive thread both use the main channel; the keep-alive closes
// and re-opens it. The lock keeps a listen or notify from running on a channel being closed;
// the flag makes the loop step aside so that the keep-alive gets the lock promptly.
std::mutex m_mtxServerSession;
std::atomic<bool> m_bServerSessionWanted{false};

// Wakes the keep-alive thread at once when the request loop finds its channel failing. Made
// once and never destroyed: the keep-alive thread still waits on it while the process exits.
struct BlkKeepAliveWakeTag {
    std::mutex mtx;
    std::condition_variable cv;
    bool bWake = false;
};

BlkKeepAliveWakeTag& KeepAliveWake() {
    static BlkKeepAliveWakeTag* s_pWake = new BlkKeepAliveWakeTag;
    return *s_pWake;
}

void WakeKeepAlive() {
    BlkKeepAliveWakeTag& blkWake = KeepAliveWake();
    {
        std::lock_guard<std::mutex> lock(blkWake.mtx);
        blkWake.bWake = true;
    }
    blkWake.cv.notify_all();
}

void SleepUntilProbe() {
    BlkKeepAliveWakeTag& blkWake = KeepAliveWake();
    std::unique_lock<std::mutex> lock(blkWake.mtx);
    blkWake.cv.wait_for(lock, std::chrono::milliseconds(KEEP_ALIVE_PERIOD_MS),
                        [&blkWake] { return blkWake.bWake; });
    blkWake.bWake = false;
}

uint32_t ListenMain(uint8_t* pu1Req, uint32_t* pu4Size) {
    if (m_bServerSessionWanted.load()) {
        NyOsSleep(1);
    }
    std::lock_guard<std::mutex> lock(m_mtxServerSession);
    return NyCommListen(m_hServerSession.load(), pu1Req, pu4Size);
}

uint32_t NotifyMain(const uint8_t* pu1Resp, uint32_t u4Size) {
    BlkCommNotifyDataTag blkNotify = {COMM_SIGNAL_RESPONSE, pu1Resp, u4Size};
    std::lock_guard<std::mutex> lock(m_mtxServerSession);
    return NyCommNotify(m_hServerSession.load(), &blkNotify);
}

// Runs fn with the main channel lock held, ahead of the request loop.
template <typename Fn>
uint32_t WithMainChannel(Fn fn) {
    m_bServerSessionWanted.store(true);
    std::lock_guard<std::mutex> lock(m_mtxServerSession);
    uint32_t u4Result = fn();
    m_bServerSessionWanted.store(false);
    return u4Result;
}

uint32_t CreateMainSessionLocked(const char* szSessionName) {
    NY_LOG(LOG_TRACE, "server SessionName: %s", szSessionName != nullptr ? szSessionName : "");
    if (szSessionName == nullptr || szSessionName[0] == '\0') {
        return NY_ERR_BAD_ARGUMENT;
    }
    BlkCommInitParamTag blkInit;
    NySessionFillInitParam(szSessionName, &blkInit);
    NY_COMM_HANDLE hSession = nullptr;
    uint32_t u4Result = NyCommConnectAsServer(&blkInit, &hSession);
    if (u4Result == NY_OK) {
        NyCommSetBeatPeriod(hSession, MAIN_BEAT_PERIOD_MS);
        m_hServerSession.store(hSession);
    }
    return u4Result;
}

void CloseMainSessionLocked() {
    NY_COMM_HANDLE hSession = m_hServerSession.exchange(nullptr);
    if (hSession != nullptr) {
        NyCommDisconnect(hSession);
    }
}

// Connects to the main session as a client would (within this process that asks the channel's
// heartbeat, which fails once its event sets are gone), and looks at the channel's
// objects themselves: files that were removed, or replaced, leave a channel that no new client
// can reach although this process still serves its own copy.
bool ProbeMainSession(const BlkCommInitParamTag& blkInit) {
    return WithMainChannel([&blkInit]() -> uint32_t {
               NY_COMM_HANDLE hProbe = nullptr;
               uint32_t u4Result = NyCommConnect(&blkInit, KEEP_ALIVE_PROBE_MS, &hProbe);
               if (u4Result == NY_OK && hProbe != m_hServerSession.load()) {
                   NyCommDisconnect(hProbe);
               }
               EnBool enIntact = NY_FALSE;
               if (u4Result == NY_OK) {
                   u4Result = NyCommIsIntact(m_hServerSession.load(), &enIntact);
               }
               return u4Result == NY_OK && enIntact == NY_TRUE ? NY_OK : NY_ERR_COMM_NOT_CONNECTED;
           }) == NY_OK;
}

// Stops every session and opens the main channel anew. A server that is ending (the flag is
// set before its channel is closed, under the same lock) is left to end: re-creating then
// would leave a channel behind with nobody serving it.
void RecreateMainSession(const char* szSessionName) {
    StopAllSessions();
    uint32_t u4Result = WithMainChannel([szSessionName]() {
        if (m_bStopServer.load() != 0) {
            return NY_OK;
        }
        CloseMainSessionLocked();
        return CreateMainSessionLocked(szSessionName);
    });
    if (u4Result != NY_OK) {
        NY_LOG(LOG_INFO, "ThreadKeepAlive: create main session failed, Quit!");
        m_bStopServer.store(1);
    }
}

// Failures at level 3, successes at level 1.
LOG_TYPE LevelOf(uint32_t u4Result) {
    return u4Result != NY_OK ? LOG_ERROR : LOG_TRACE;
}

}  // namespace

void CopyMainSessionName(const char* szArg, char (&szName)[MAIN_SESSION_NAME_BUFFER]) {
    memset(szName, 0, sizeof(szName));
    if (szArg != nullptr) {
        strncpy(szName, szArg, sizeof(szName) - 1);
    }
}

// Connecting fails at once when no live process holds the region (a server killed with no
// client left); a region that only clients hold gets the probe's time to beat.
EnBool IsMainSessionServedElsewhere(const char* szSessionName) {
    BlkCommInitParamTag blkInit;
    if (szSessionName == nullptr || !NySessionFillInitParam(szSessionName, &blkInit)) {
        return NY_FALSE;
    }
    NY_COMM_HANDLE hProbe = nullptr;
    if (NyCommConnect(&blkInit, MAIN_SESSION_ALIVE_PROBE_MS, &hProbe) != NY_OK) {
        return NY_FALSE;
    }
    NyCommDisconnect(hProbe);
    return NY_TRUE;
}

uint32_t CreateMainSession(const char* szSessionName) {
    return WithMainChannel([szSessionName]() { return CreateMainSessionLocked(szSessionName); });
}

void CloseMainSession() {
    WithMainChannel([]() -> uint32_t {
        CloseMainSessionLocked();
        return NY_OK;
    });
}

uint32_t ProcessRequestSer(const uint8_t* pu1Req, uint32_t u4ReqSize, uint8_t* pu1Resp,
                           uint32_t* pu4RespSize) {
    if (pu1Req == nullptr || pu1Resp == nullptr || pu4RespSize == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (*pu4RespSize < MAIN_SESSION_RECORD_SIZE) {
        *pu4RespSize = MAIN_SESSION_RECORD_SIZE;
        return NY_ERR_BUFFER_TOO_SMALL;
    }
    BlkMainSessionRequestTag blkReq = {};
    memcpy(&blkReq, pu1Req, u4ReqSize < sizeof(blkReq) ? u4ReqSize : sizeof(blkReq));
    BlkMainSessionResponseTag blkResp;
    memcpy(&blkResp, pu1Resp, sizeof(blkResp));

    uint32_t u4Result = NY_OK;
    switch (blkReq.u4ReqType) {
        case MAIN_REQ_START_SESSION:
            NY_LOG(LOG_TRACE, "CUiServerExe: uClientPid = %d, uInteractionID = %08X",
                   static_cast<int>(blkReq.uClientPid), blkReq.uInteractionID);
            // No process has id 0: such a session could never see its client end. Refused.
            if (blkReq.uClientPid == 0) {
                u4Result = NY_ERR_BAD_ARGUMENT;
                blkResp.u4Status = MAIN_STATUS_START_FAILED;
                break;
            }
            u4Result = StartSession(blkReq.uInteractionID, blkReq.uClientPid, blkResp.szSessionName,
                                    sizeof(blkResp.szSessionName));
            blkResp.u4Status = u4Result == NY_OK ? MAIN_STATUS_DONE : MAIN_STATUS_START_FAILED;
            break;
        case MAIN_REQ_FINISH_SESSION:
            FinishSession(blkReq.uInteractionID);
            blkResp.u4Status = MAIN_STATUS_DONE;
            break;
        default:
            blkResp.u4Status = MAIN_STATUS_UNKNOWN_REQUEST;
            break;
    }
    blkResp.u4ReqType = blkReq.u4ReqType;
    blkResp.uInteractionID = blkReq.uInteractionID;
    blkResp.uServerPid = NyOsGetCurrentPid();
    memcpy(pu1Resp, &blkResp, sizeof(blkResp));
    NyMemSafeClear(&blkReq, sizeof(blkReq));
    *pu4RespSize = MAIN_SESSION_RECORD_SIZE;
    return u4Result;
}

uint32_t ServerThreadEntry() {
    uint8_t au1Req[MAIN_BUFFER_SIZE];
    uint8_t au1Resp[MAIN_BUFFER_SIZE];
    uint32_t u4Result = NY_OK;
    while (m_bStopServer.load() == 0) {
        // Fresh zeros for every request: a short request never reads an earlier one's bytes.
        NyMemSafeClear(au1Req, sizeof(au1Req));
        NyMemSafeClear(au1Resp, sizeof(au1Resp));
        uint32_t u4ReqSize = sizeof(au1Req);
        u4Result = ListenMain(au1Req, &u4ReqSize);
        if (u4Result != NY_OK) {
            // A plain time-out has already waited; any other failure (a channel being
            // re-created, or lost) wakes the keep-alive's repair and pauses a moment.
            if (u4Result != EAGAIN) {
                WakeKeepAlive();
                NyOsSleep(LISTEN_RETRY_MS);
            }
            continue;
        }
        NY_LOG(LOG_TRACE, "Receive request: u4ReqDataSize = %08x", u4ReqSize);
        NyLogByteArrayEx(LOG_TRACE, __FILE__, __LINE__, au1Req, u4ReqSize);

        uint32_t u4RespSize = sizeof(au1Resp);
        uint32_t u4Process = ProcessRequestSer(au1Req, u4ReqSize, au1Resp, &u4RespSize);
        NY_LOG(LevelOf(u4Process), "Process request : u4Result = %08x", u4Process);
        NyLogByteArrayEx(LOG_TRACE, __FILE__, __LINE__, au1Resp, u4RespSize);

        u4Result = NotifyMain(au1Resp, u4RespSize);
        NY_LOG(LevelOf(u4Result), "NyCommNotify : u4Result = %08x", u4Result);
        if (m_bStopServer.load() != 0) {
            break;
        }
    }
    NyMemSafeClear(au1Req, sizeof(au1Req));
    NyMemSafeClear(au1Resp, sizeof(au1Resp));
    return u4Result;
}

void* ThreadKeepAlive(void* pvSessionName) {
    char szName[MAIN_SESSION_NAME_BUFFER];
    CopyMainSessionName(static_cast<const char*>(pvSessionName), szName);
    NY_LOG(LOG_INFO, "ThreadKeepAlive enter, main session name :%s", szName);
    if (szName[0] == '\0') {
        return reinterpret_cast<void*>(static_cast<uintptr_t>(NY_ERR_BAD_ARGUMENT));
    }
    BlkCommInitParamTag blkInit;
    NySessionFillInitParam(szName, &blkInit);
    for (;;) {
        if (m_bStopServer.load() == 0 && !ProbeMainSession(blkInit)) {
            NY_LOG(LOG_INFO, "ThreadKeepAlive: connect session failed");
            RecreateMainSession(szName);
        }
        SleepUntilProbe();
    }
}
