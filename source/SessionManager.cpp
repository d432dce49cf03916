#include "SessionManager.h"

#include <pthread.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "GUIService.h"
#include "SessionRegistry.h"
#include "comm/NyCommunication.h"
#include "log/NyLog.h"
#include "os/NyOs.h"
#include "os/NyUuid.h"
#include "runtime/NyResult.h"
#include "session/NySessionChannel.h"

namespace {

// The table is used by the main thread (starts), the keep-alive thread (tear-down) and every
// session thread (its own end), so every access holds this lock.
std::mutex m_mtxSessionManager;
std::map<uint32_t, BlkSessionInfoTag> m_mapSessionManager;
// Every session whose thread still runs, in the table or replaced there by a newer session for
// the same id, with its channel name; guarded by the same lock.
std::map<std::shared_ptr<GUIService>, std::string> m_mapLiveServices;

// Called with the lock held when a session ends (a start only appends its name).
void PublishLiveSessions() {
    std::vector<std::string> vNames;
    for (const auto& entry : m_mapLiveServices) {
        vNames.push_back(entry.second);
    }
    SessionRegistryWrite(vNames);
}

// What a session thread is started with: its table key and its share of the service.
struct BlkSessionThreadArgTag {
    uint32_t u4InteractionId;
    std::shared_ptr<GUIService> pService;
};

// Bounded copy that always terminates; the destination is left empty when it has no room.
void CopyName(char* szDest, size_t cchDest, const char* szSrc) {
    if (szDest == nullptr || cchDest == 0) {
        return;
    }
    size_t cchCopy = strnlen(szSrc, cchDest - 1);
    memcpy(szDest, szSrc, cchCopy);
    szDest[cchCopy] = '\0';
}

uint32_t OpenSessionChannel(const char* szGuid, NY_COMM_HANDLE* phSession) {
    BlkCommInitParamTag blkInit;
    if (!NySessionFillInitParam(szGuid, &blkInit)) {
        NY_LOG(LOG_ERROR,
               "CUiServerExe::StartNewSession()-> szGuid != m_szSessionName!!!, Guid=[%s], "
               "m_szSessionName=[%s]",
               szGuid, blkInit.blkShm.szName);
        return NY_ERR_BAD_ARGUMENT;
    }
    uint32_t u4Result = NyCommConnectAsServer(&blkInit, phSession);
    if (u4Result != NY_OK) {
        NY_LOG_RESULT(u4Result);
    }
    return u4Result;
}

// Starts the session thread and records the session; the table lock is held across both so
// that a thread that ends at once still finds its own entry to remove.
uint32_t StartServiceThread(uint32_t u4InteractionId, const char* szGuid,
                            const std::shared_ptr<GUIService>& pService) {
    BlkSessionInfoTag blkInfo = {};
    CopyName(blkInfo.szGuid, sizeof(blkInfo.szGuid), szGuid);
    blkInfo.pService = pService;
    auto* pArg = new BlkSessionThreadArgTag{u4InteractionId, pService};

    std::lock_guard<std::mutex> lock(m_mtxSessionManager);
    uint32_t u4Result = NyThreadBegin(SessionThreadEntry, pArg, &blkInfo.hThread);
    if (u4Result != NY_OK) {
        NY_LOG(LOG_ERROR, "Failed to create service thread. last error = %08x", u4Result);
        delete pArg;
        return NY_ERR_INVALID_ARGUMENT;
    }
    m_mapLiveServices.emplace(pService, szGuid);
    SessionRegistryAdd(szGuid);
    auto it = m_mapSessionManager.find(u4InteractionId);
    if (it != m_mapSessionManager.end()) {
        // The older session runs on until its client ends; only its table entry goes.
        NyThreadCloseHandle(it->second.hThread);
        it->second = blkInfo;
    } else {
        m_mapSessionManager.emplace(u4InteractionId, blkInfo);
    }
    return NY_OK;
}

uint32_t StartSessionInner(uint32_t u4InteractionId, uint32_t u4ClientPid, char* szName,
                           uint32_t u4NameSize) {
    char szGuid[256] = {};
    uint32_t u4Result = NyGenUuid(szGuid, sizeof(szGuid));
    if (u4Result != NY_OK) {
        NY_LOG_RESULT(u4Result);
        return u4Result;
    }
    NY_COMM_HANDLE hSession = nullptr;
    u4Result = OpenSessionChannel(szGuid, &hSession);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    NY_LOG(LOG_TRACE,
           "CUiServerExe::StartNewSession()->Session New!!! u4SessionId = %08x, Handle = %08x, "
           "szGuid = %s",
           u4InteractionId, static_cast<unsigned>(reinterpret_cast<uintptr_t>(hSession)), szGuid);

    BlkUiServiceParamTag blkParam = {};
    blkParam.u4SessionId = u4InteractionId;
    CopyName(blkParam.szSessionName, sizeof(blkParam.szSessionName), szGuid);
    blkParam.hSession = hSession;
    blkParam.u4InteractionId = u4InteractionId;
    blkParam.uClientPid = u4ClientPid;
    auto pService = std::make_shared<GUIService>(blkParam);

    u4Result = StartServiceThread(u4InteractionId, szGuid, pService);
    if (u4Result != NY_OK) {
        NyCommDisconnect(hSession);
        return u4Result;
    }
    CopyName(szName, u4NameSize, szGuid);
    return NY_OK;
}

}  // namespace

uint32_t StartSession(uint32_t u4InteractionId, uint32_t u4ClientPid, char* szName,
                      uint32_t u4NameSize) {
    NY_LOG(LOG_TRACE, "CUiServerExe::StartSession() enter u4SessionId = %08x", u4InteractionId);
    uint32_t u4Result = StartSessionInner(u4InteractionId, u4ClientPid, szName, u4NameSize);
    NY_LOG(LOG_TRACE, "CUiServerExe::StartNewSession() leave u4Result = %08x", u4Result);
    return u4Result;
}

void FinishSession(uint32_t /*u4InteractionId*/) {}

void* SessionThreadEntry(void* pvSession) {
    std::unique_ptr<BlkSessionThreadArgTag> pArg(static_cast<BlkSessionThreadArgTag*>(pvSession));
    // Nobody joins a session thread: it cleans up after itself.
    pthread_detach(pthread_self());
    uint32_t u4Result = pArg->pService->run();
    {
        std::lock_guard<std::mutex> lock(m_mtxSessionManager);
        auto it = m_mapSessionManager.find(pArg->u4InteractionId);
        if (it != m_mapSessionManager.end() && it->second.pService == pArg->pService) {
            NyThreadCloseHandle(it->second.hThread);
            m_mapSessionManager.erase(it);
        }
        m_mapLiveServices.erase(pArg->pService);
        PublishLiveSessions();
    }
    pArg.reset();
    return reinterpret_cast<void*>(static_cast<uintptr_t>(u4Result));
}

void StopAllSessions() {
    // The table's sessions in ascending id order, then those a newer session replaced there.
    std::vector<std::shared_ptr<GUIService>> vStop;
    {
        std::lock_guard<std::mutex> lock(m_mtxSessionManager);
        for (auto& entry : m_mapSessionManager) {
            vStop.push_back(entry.second.pService);
            NyThreadCloseHandle(entry.second.hThread);
        }
        m_mapSessionManager.clear();
        for (const auto& entry : m_mapLiveServices) {
            if (std::find(vStop.begin(), vStop.end(), entry.first) == vStop.end()) {
                vStop.push_back(entry.first);
            }
        }
    }
    for (const auto& pService : vStop) {
        pService->stop();
    }
}

bool WaitForSessionsToEnd(uint32_t u4TimeoutMs) {
    uint64_t u8End = NyOsGetTickCount64() + u4TimeoutMs;
    for (;;) {
        {
            std::lock_guard<std::mutex> lock(m_mtxSessionManager);
            if (m_mapLiveServices.empty()) {
                return true;
            }
        }
        if (NyOsGetTickCount64() >= u8End) {
            return false;
        }
        NyOsSleep(5);
    }
}

size_t GetSessionCount() {
    std::lock_guard<std::mutex> lock(m_mtxSessionManager);
    return m_mapSessionManager.size();
}
