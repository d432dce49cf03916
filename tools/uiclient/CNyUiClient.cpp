#include "CNyUiClient.h"

#include <cstring>

#include "NyUiServerProcess.h"
#include "os/NyCommonLib.h"
#include "os/NyOs.h"
#include "runtime/NySafe.h"
#include "session/NySessionChannel.h"

namespace {

constexpr uint32_t START_POLL_MS = 20;
constexpr uint32_t SESSION_CONNECT_MS = 2000;
constexpr uint32_t SERVER_STOP_MS = 5000;

uint32_t ConnectChannel(const char* szName, uint32_t u4TimeoutMs, NY_COMM_HANDLE* phChannel) {
    BlkCommInitParamTag blkInit;
    if (!NySessionFillInitParam(szName, &blkInit)) {
        return NY_ERR_BAD_ARGUMENT;
    }
    return NyCommConnect(&blkInit, u4TimeoutMs, phChannel);
}

bool HasTimeLeft(uint64_t u8End) {
    return NyOsGetTickCount64() < u8End;
}

}  // namespace

CNyUiClient::CNyUiClient() {
    NyCommonLibInit();
}

CNyUiClient::~CNyUiClient() {
    if (m_hSession != nullptr) {
        NyCommDisconnect(m_hSession);
    }
    CloseMain();
    if (m_pidServer > 0) {
        NyUiServerStop(m_pidServer, SERVER_STOP_MS);
    }
    NyCommonLibRelease();
}

void CNyUiClient::CloseMain() {
    if (m_hMain != nullptr) {
        NyCommDisconnect(m_hMain);
        m_hMain = nullptr;
    }
}

uint32_t CNyUiClient::StartServer(const char* szServerPath, const char* szMainName,
                                  uint32_t u4TimeoutMs) {
    if (szServerPath == nullptr || szServerPath[0] == '\0' || szMainName == nullptr ||
        szMainName[0] == '\0') {
        return NY_ERR_BAD_ARGUMENT;
    }
    uint32_t u4Result = NY_OK;
    pid_t pid = NyUiServerSpawn(szServerPath, szMainName, false, &u4Result);
    if (pid < 0) {
        return u4Result != NY_OK ? u4Result : NY_ERR_UNEXPECTED;
    }
    m_pidServer = pid;
    // The server writes no ready marker: it is ready once its main session answers.
    uint64_t u8End = NyOsGetTickCount64() + u4TimeoutMs;
    do {
        if (!NyUiServerChildRunning(pid)) {
            m_pidServer = -1;
            return NY_ERR_CLIENT_SERVER_NOT_STARTED;
        }
        if (JoinServer(szMainName, START_POLL_MS) == NY_OK) {
            return NY_OK;
        }
        NyOsSleep(START_POLL_MS);
    } while (HasTimeLeft(u8End));
    NyUiServerStop(pid, SERVER_STOP_MS);
    m_pidServer = -1;
    return NY_ERR_CLIENT_SERVER_NOT_STARTED;
}

uint32_t CNyUiClient::JoinServer(const char* szMainName, uint32_t u4TimeoutMs) {
    if (szMainName == nullptr || szMainName[0] == '\0') {
        return NY_ERR_BAD_ARGUMENT;
    }
    CloseMain();
    uint32_t u4Result = ConnectChannel(szMainName, u4TimeoutMs, &m_hMain);
    if (u4Result != NY_OK) {
        m_hMain = nullptr;
        return u4Result;
    }
    m_strMainName = szMainName;
    return NY_OK;
}

uint32_t CNyUiClient::MainRequest(uint32_t u4ReqType, uint32_t u4InteractionId,
                                  uint32_t u4ClientPid, BlkMainSessionResponseTag* pResp) {
    if (pResp == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (m_hMain == nullptr) {
        return NY_ERR_CLIENT_NO_SESSION;
    }
    BlkMainSessionRequestTag blkReq = {};
    blkReq.u4ReqType = u4ReqType;
    blkReq.uInteractionID = u4InteractionId;
    blkReq.uClientPid = u4ClientPid;
    memset(pResp, 0, sizeof(*pResp));
    uint32_t u4Result = NyCommCommit(m_hMain, &blkReq, sizeof(blkReq), pResp, sizeof(*pResp));
    if (u4Result == NY_OK) {
        m_u4ServerPid = pResp->uServerPid;
    }
    return u4Result;
}

uint32_t CNyUiClient::OpenSession(uint32_t u4InteractionId) {
    if (m_hSession != nullptr) {
        NyCommDisconnect(m_hSession);
        m_hSession = nullptr;
    }
    BlkMainSessionResponseTag blkResp;
    uint32_t u4Result =
        MainRequest(MAIN_REQ_START_SESSION, u4InteractionId, NyOsGetCurrentPid(), &blkResp);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    if (blkResp.u4Status != MAIN_STATUS_DONE) {
        return NY_ERR_CLIENT_SESSION_REFUSED;
    }
    blkResp.szSessionName[sizeof(blkResp.szSessionName) - 1] = '\0';
    u4Result = ConnectChannel(blkResp.szSessionName, SESSION_CONNECT_MS, &m_hSession);
    if (u4Result != NY_OK) {
        m_hSession = nullptr;
        return u4Result;
    }
    m_strSessionName = blkResp.szSessionName;
    m_u4InteractionId = u4InteractionId;
    return NY_OK;
}

uint32_t CNyUiClient::CloseSession() {
    if (m_hSession == nullptr) {
        return NY_ERR_CLIENT_NO_SESSION;
    }
    NyCommDisconnect(m_hSession);
    m_hSession = nullptr;
    m_strSessionName.clear();
    BlkMainSessionResponseTag blkResp;
    return MainRequest(MAIN_REQ_FINISH_SESSION, m_u4InteractionId, NyOsGetCurrentPid(), &blkResp);
}

uint32_t CNyUiClient::Exchange(const tagBlkUiParam* pReq, tagBlkUiParam* pResp) {
    if (pReq == nullptr || pResp == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (m_hSession == nullptr) {
        return NY_ERR_CLIENT_NO_SESSION;
    }
    // An answer the channel had to drop arrives empty: it then reads as all zeros.
    memset(pResp, 0, sizeof(*pResp));
    return NyCommCommit(m_hSession, pReq, sizeof(*pReq), pResp, sizeof(*pResp));
}

uint32_t CNyUiClient::ExchangeProtected(const tagBlkUiParam* pReq, const uint8_t* pu1Seed,
                                        tagBlkUiParam* pResp) {
    if (pReq == nullptr || pu1Seed == nullptr || pResp == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    tagBlkUiParam blkReq;
    memcpy(&blkReq, pReq, sizeof(blkReq));
    memcpy(blkReq.au1KeySeed, pu1Seed, sizeof(blkReq.au1KeySeed));
    blkReq.u4Protected = UI_PARAM_CLEAR;
    uint32_t u4Result = UiParamEnc(&blkReq);
    if (u4Result == NY_OK) {
        u4Result = Exchange(&blkReq, pResp);
    }
    if (u4Result == NY_OK && pResp->u4Protected == UI_PARAM_PROTECTED) {
        u4Result = UiParamDec(pResp);
    }
    NyMemSafeClear(&blkReq, sizeof(blkReq));
    return u4Result;
}

uint32_t CNyUiClient::SendCommand(uint32_t u4CmdType, tagBlkUiParam* pResp,
                                  const uint8_t* pu1Seed) {
    tagBlkUiParam blkReq = {};
    blkReq.enUiCmdType = u4CmdType;
    return pu1Seed != nullptr ? ExchangeProtected(&blkReq, pu1Seed, pResp)
                              : Exchange(&blkReq, pResp);
}

uint32_t CNyUiClient::PollUntilDone(tagBlkUiParam* pResp, uint32_t u4IntervalMs,
                                    uint32_t u4TimeoutMs, const uint8_t* pu1Seed) {
    uint64_t u8End = NyOsGetTickCount64() + u4TimeoutMs;
    for (;;) {
        uint32_t u4Result = SendCommand(UI_CMD_GET_STATUS, pResp, pu1Seed);
        if (u4Result != NY_OK || pResp->enRes != UI_RESULT_PENDING) {
            return u4Result;
        }
        if (u4TimeoutMs != NY_CLIENT_WAIT_FOREVER && !HasTimeLeft(u8End)) {
            return NY_ERR_CLIENT_POLL_TIMEOUT;
        }
        NyOsSleep(u4IntervalMs);
    }
}
