#include "comm/CNyShmCommunication.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <new>

#include <sys/stat.h>

#include "comm/CCommAnswerGuard.h"
#include "comm/CCommHeartBeat.h"
#include "ipc/NyEvent.h"
#include "ipc/NyIpcName.h"
#include "ipc/NyMutex.h"
#include "ipc/NyShareMem.h"
#include "log/NyLog.h"
#include "os/NyOs.h"
#include "runtime/NySafe.h"

namespace {

// Suffixes of the channel's named objects, appended to the channel name as they are.
const char* const SZ_SUFFIX_MUTEX = "_Mutex_Communication";
const char* const SZ_SUFFIX_REQUEST = "_Event_Request";
const char* const SZ_SUFFIX_RESPONSE = "_Event_Response";
const char* const SZ_SUFFIX_CONNECTED = "_Event_Connected";
constexpr size_t OBJECT_NAME_SIZE = COMM_NAME_SIZE + 32;

// How often a waiting request looks at the heartbeat while its answer has not come.
constexpr uint32_t ANSWER_POLL_MS = 20;

uint32_t OpenEvent(uint32_t u4Global, const char* szName, const char* szSuffix,
                   NY_EVENT_HANDLE* phEvent) {
    char szObject[OBJECT_NAME_SIZE] = {};
    if (!NyStrPrintf(szObject, sizeof(szObject), "%s%s", szName, szSuffix)) {
        return NY_ERR_BAD_ARGUMENT;
    }
    return NyEventCreate2(u4Global, szObject, nullptr, phEvent);
}

uint32_t ReadHeader(NY_SHM_HANDLE hShm, BlkShmCommHeaderTag* pHeader) {
    uint32_t u4Result = NyShareMemRead(hShm, 0, pHeader, sizeof(*pHeader));
    if (u4Result != 0) {
        *pHeader = BlkShmCommHeaderTag{};
    }
    return u4Result;
}

// Guards a region lock taken by the constructor.
class CRegionLock {
public:
    explicit CRegionLock(NY_SHM_HANDLE hShm) : m_hShm(hShm), m_u4Result(NyShareMemLock(hShm)) {}
    ~CRegionLock() {
        if (m_u4Result == 0) {
            NyShareMemUnlock(m_hShm);
        }
    }
    CRegionLock(const CRegionLock&) = delete;
    CRegionLock& operator=(const CRegionLock&) = delete;
    uint32_t Result() const { return m_u4Result; }

private:
    NY_SHM_HANDLE m_hShm;
    uint32_t m_u4Result;
};

}  // namespace

// One operation's use of a channel: a copy of its record, and a count in the table that keeps
// a concurrently closed channel alive until the operation is done.
class CNyShmCommunication::CChannelUse {
public:
    CChannelUse(CCommShmSessionRecord& table, NY_COMM_HANDLE hSession)
        : m_table(table), m_hSession(hSession), m_blkInfo() {
        m_bValid = m_table.Acquire(hSession, &m_blkInfo);
    }
    CChannelUse(CCommShmSessionRecord& table, const char* szName)
        : m_table(table), m_hSession(nullptr), m_blkInfo() {
        m_bValid = m_table.Acquire(szName, &m_hSession, &m_blkInfo);
    }
    ~CChannelUse() {
        BlkCommShmInfoTag blkDead = {};
        if (m_bValid && m_table.Release(m_hSession, &blkDead)) {
            DestroyRecord(&blkDead);
        }
    }
    CChannelUse(const CChannelUse&) = delete;
    CChannelUse& operator=(const CChannelUse&) = delete;

    bool IsValid() const { return m_bValid; }
    NY_COMM_HANDLE Handle() const { return m_hSession; }
    const BlkCommShmInfoTag& Info() const { return m_blkInfo; }

private:
    CCommShmSessionRecord& m_table;
    NY_COMM_HANDLE m_hSession;
    BlkCommShmInfoTag m_blkInfo;
    bool m_bValid;
};

uint32_t CNyShmCommunication::CheckInitParam(const BlkCommInitParamTag* pParam,
                                             NY_COMM_HANDLE* phSession) {
    if (pParam == nullptr || phSession == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (pParam->u4Type != COMM_INIT_TYPE_PLAIN && pParam->u4Type != COMM_INIT_TYPE_EX) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    return 0;
}

uint32_t CNyShmCommunication::GenerateRecord(const BlkCommShmInitParamTag* pShmParam,
                                             uint32_t u4Global, void* pSecurity, bool bCreate,
                                             BlkCommShmInfoTag* pInfo) {
    if (pShmParam == nullptr || pInfo == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    size_t cchName = strnlen(pShmParam->szName, COMM_NAME_SIZE);
    if (cchName == 0 || cchName == COMM_NAME_SIZE) {
        return NY_ERR_BAD_ARGUMENT;
    }
    if (bCreate && pShmParam->u4DataSize > UINT32_MAX - COMM_HEADER_SIZE) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    *pInfo = BlkCommShmInfoTag{};
    std::memcpy(pInfo->szName, pShmParam->szName, cchName);
    uint32_t u4Result =
        bCreate ? NyShareMemCreate2(pSecurity, u4Global, pInfo->szName,
                                    pShmParam->u4DataSize + COMM_HEADER_SIZE, &pInfo->hShareMem)
                : NyShareMemOpen2(u4Global, pInfo->szName, &pInfo->hShareMem);
    if (u4Result == 0) {
        u4Result = OpenObjects(u4Global, pInfo);
    }
    if (u4Result != 0) {
        DestroyRecord(pInfo);
        return u4Result;
    }
    pInfo->bIsServer = bCreate ? NY_TRUE : NY_FALSE;
    return 0;
}

// The extended fields count only in an extended parameter block.
uint32_t CNyShmCommunication::GenerateRecordFor(const BlkCommInitParamTag& blkParam, bool bCreate,
                                                BlkCommShmInfoTag* pInfo) {
    bool bEx = blkParam.u4Type == COMM_INIT_TYPE_EX;
    return GenerateRecord(&blkParam.blkShm, bEx ? blkParam.u4Global : 0,
                          bEx ? blkParam.pSecurityAttributes : nullptr, bCreate, pInfo);
}

uint32_t CNyShmCommunication::OpenObjects(uint32_t u4Global, BlkCommShmInfoTag* pInfo) {
    char szMutex[OBJECT_NAME_SIZE] = {};
    if (!NyStrPrintf(szMutex, sizeof(szMutex), "%s%s", pInfo->szName, SZ_SUFFIX_MUTEX)) {
        return NY_ERR_BAD_ARGUMENT;
    }
    uint32_t u4Result = NyMutexCreate2(u4Global, szMutex, nullptr, &pInfo->hMutex);
    if (u4Result == 0) {
        u4Result = OpenEvent(u4Global, pInfo->szName, SZ_SUFFIX_REQUEST, &pInfo->hEventRequest);
    }
    if (u4Result == 0) {
        u4Result = OpenEvent(u4Global, pInfo->szName, SZ_SUFFIX_RESPONSE, &pInfo->hEventResponse);
    }
    if (u4Result == 0) {
        u4Result = OpenEvent(u4Global, pInfo->szName, SZ_SUFFIX_CONNECTED, &pInfo->hEventConnected);
    }
    return u4Result;
}

void CNyShmCommunication::DestroyRecord(BlkCommShmInfoTag* pInfo) {
    // A client still reading the last answer gets it (beats go on meanwhile, for a client that
    // waits for one before it reads).
    if (pInfo->pAnswerGuard != nullptr) {
        pInfo->pAnswerGuard->WaitUntilTaken(COMM_LIVENESS_MS);
    }
    delete pInfo->pHeartBeat;  // no longer beaten before the event it sets is closed
    if (pInfo->pAnswerGuard != nullptr) {
        // The last answer (it may hold PINs) does not outlive the server's use of the region.
        pInfo->pAnswerGuard->WipeRegion();
        delete pInfo->pAnswerGuard;
    }
    NY_EVENT_HANDLE* aphEvents[] = {&pInfo->hEventRequest, &pInfo->hEventResponse,
                                    &pInfo->hEventConnected};
    for (NY_EVENT_HANDLE* phEvent : aphEvents) {
        if (*phEvent != nullptr) {
            NyEventClose(*phEvent);
        }
    }
    if (pInfo->hMutex != nullptr) {
        NyMutexDestroy(pInfo->hMutex);
    }
    if (pInfo->hShareMem != nullptr) {
        NyShareMemClose(pInfo->hShareMem);
    }
    *pInfo = BlkCommShmInfoTag{};
}

uint32_t CNyShmCommunication::StartAsServer(const BlkCommInitParamTag* pParam,
                                            NY_COMM_HANDLE* phSession) {
    uint32_t u4Result = CheckInitParam(pParam, phSession);
    if (u4Result != 0) {
        return u4Result;
    }
    if (!m_lockStart.Lock()) {
        return NY_ERR_LOCK_FAILED;
    }
    u4Result = StartLocked(*pParam, phSession);
    m_lockStart.Unlock();
    return u4Result;
}

uint32_t CNyShmCommunication::StartLocked(const BlkCommInitParamTag& blkParam,
                                          NY_COMM_HANDLE* phSession) {
    if (m_sessionRecord.Find(blkParam.blkShm.szName, phSession, nullptr)) {
        return 0;
    }
    BlkCommShmInfoTag blkInfo = {};
    uint32_t u4Result = GenerateRecordFor(blkParam, true, &blkInfo);
    if (u4Result != 0) {
        return u4Result;
    }
    ReadFileIds(blkInfo.szName, blkInfo.au8FileIds);
    char szMutex[OBJECT_NAME_SIZE] = {};
    char szMutexPath[NY_IPC_PATH_SIZE] = {};
    NyStrPrintf(szMutex, sizeof(szMutex), "%s%s", blkInfo.szName, SZ_SUFFIX_MUTEX);
    FileName2Path(szMutex, NY_FILE_KIND_MUTEX, szMutexPath, sizeof(szMutexPath));
    blkInfo.pAnswerGuard =
        new (std::nothrow) CCommAnswerGuard(blkInfo.hShareMem, blkInfo.hMutex, szMutexPath);
    if (blkInfo.pAnswerGuard != nullptr) {
        blkInfo.pHeartBeat =
            new (std::nothrow) CCommHeartBeat(blkInfo.hEventConnected, blkInfo.pAnswerGuard);
    }
    if (blkInfo.pHeartBeat == nullptr) {
        DestroyRecord(&blkInfo);
        return NY_ERR_OUT_OF_MEMORY;
    }
    NY_COMM_HANDLE hSession = blkInfo.hShareMem;
    if (!m_sessionRecord.Insert(hSession, blkInfo)) {
        DestroyRecord(&blkInfo);
        return NY_ERR_COMM_NOT_CONNECTED;
    }
    u4Result = blkInfo.pHeartBeat->Start();
    if (u4Result != 0) {
        m_sessionRecord.Delete(hSession);
        DestroyRecord(&blkInfo);
        return u4Result;
    }
    *phSession = hSession;
    return 0;
}

uint32_t CNyShmCommunication::Connect(const BlkCommInitParamTag* pParam, uint32_t u4TimeoutMs,
                                      NY_COMM_HANDLE* phSession) {
    uint32_t u4Result = CheckInitParam(pParam, phSession);
    if (u4Result != 0) {
        return u4Result;
    }
    // A channel still being started by another thread becomes visible once it beats.
    if (!m_lockStart.Lock()) {
        return NY_ERR_LOCK_FAILED;
    }
    CChannelUse use(m_sessionRecord, pParam->blkShm.szName);
    m_lockStart.Unlock();
    if (!use.IsValid()) {
        return ConnectNew(*pParam, u4TimeoutMs, phSession);
    }
    u4Result = WaitForHeartBeat(use.Info(), u4TimeoutMs);
    if (u4Result == 0) {
        *phSession = use.Handle();
    }
    return u4Result;
}

bool CNyShmCommunication::ReadFileIds(const char* szName, uint64_t (&au8Ids)[4]) {
    char szMutex[OBJECT_NAME_SIZE] = {};
    char szPath[NY_IPC_PATH_SIZE];
    struct stat stFile = {};
    const char* aszNames[2] = {szName, szMutex};
    const uint32_t au4Kinds[2] = {NY_FILE_KIND_SHM, NY_FILE_KIND_MUTEX};
    if (!NyStrPrintf(szMutex, sizeof(szMutex), "%s%s", szName, SZ_SUFFIX_MUTEX)) {
        return false;
    }
    for (int i = 0; i < 2; ++i) {
        if (!FileName2Path(aszNames[i], au4Kinds[i], szPath, sizeof(szPath)) ||
            stat(szPath, &stFile) != 0) {
            return false;
        }
        au8Ids[2 * i] = stFile.st_dev;
        au8Ids[2 * i + 1] = stFile.st_ino;
    }
    return true;
}

uint32_t CNyShmCommunication::SetBeatPeriod(NY_COMM_HANDLE hSession, uint32_t u4PeriodMs) {
    CChannelUse use(m_sessionRecord, hSession);
    if (!use.IsValid() || use.Info().pHeartBeat == nullptr) {
        return NY_ERR_COMM_NOT_CONNECTED;
    }
    return use.Info().pHeartBeat->SetPeriod(u4PeriodMs) ? 0 : NY_ERR_INVALID_ARGUMENT;
}

uint32_t CNyShmCommunication::IsIntact(NY_COMM_HANDLE hSession, EnBool* pbIntact) {
    if (pbIntact == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    *pbIntact = NY_FALSE;
    CChannelUse use(m_sessionRecord, hSession);
    if (!use.IsValid()) {
        return NY_ERR_COMM_NOT_CONNECTED;
    }
    const BlkCommShmInfoTag& blkInfo = use.Info();
    uint64_t au8Now[4] = {};
    bool bIntact = blkInfo.bIsServer == NY_TRUE && ReadFileIds(blkInfo.szName, au8Now) &&
                   memcmp(au8Now, blkInfo.au8FileIds, sizeof(au8Now)) == 0;
    for (NY_EVENT_HANDLE hEvent :
         {blkInfo.hEventRequest, blkInfo.hEventResponse, blkInfo.hEventConnected}) {
        bIntact = bIntact && NyEventIsPresent(hEvent) == NY_TRUE;
    }
    *pbIntact = bIntact ? NY_TRUE : NY_FALSE;
    return 0;
}

uint32_t CNyShmCommunication::ConnectNew(const BlkCommInitParamTag& blkParam, uint32_t u4TimeoutMs,
                                         NY_COMM_HANDLE* phSession) {
    BlkCommShmInfoTag blkInfo = {};
    uint32_t u4Result = GenerateRecordFor(blkParam, false, &blkInfo);
    if (u4Result != 0) {
        return u4Result;
    }
    u4Result = WaitForHeartBeat(blkInfo, u4TimeoutMs);
    if (u4Result == 0 && !m_sessionRecord.Insert(blkInfo.hShareMem, blkInfo)) {
        u4Result = NY_ERR_COMM_NOT_CONNECTED;
    }
    if (u4Result != 0) {
        DestroyRecord(&blkInfo);
        return u4Result;
    }
    *phSession = blkInfo.hShareMem;
    return 0;
}

// The server's own channel is asked through its heartbeat: waiting on the event here
// would take a beat that a client is waiting for.
uint32_t CNyShmCommunication::WaitForHeartBeat(const BlkCommShmInfoTag& blkInfo,
                                               uint32_t u4TimeoutMs) {
    if (blkInfo.pHeartBeat != nullptr) {
        return blkInfo.pHeartBeat->IsBeating(u4TimeoutMs) ? 0 : NY_ERR_COMM_NOT_CONNECTED;
    }
    NyEventReset(blkInfo.hEventConnected);
    return NyEventWait(blkInfo.hEventConnected, u4TimeoutMs);
}

uint32_t CNyShmCommunication::WriteMessage(const BlkCommShmInfoTag& blkInfo,
                                           const BlkShmCommHeaderTag& blkHeader,
                                           const void* pData) {
    CRegionLock lock(blkInfo.hShareMem);
    uint32_t u4Result = lock.Result();
    if (u4Result == 0) {
        u4Result = NyShareMemWrite(blkInfo.hShareMem, 0, &blkHeader, sizeof(blkHeader));
    }
    if (u4Result == 0 && blkHeader.u4DataLen != 0) {
        u4Result = NyShareMemWrite(blkInfo.hShareMem, COMM_DATA_OFFSET, pData, blkHeader.u4DataLen);
    }
    return u4Result;
}

uint32_t CNyShmCommunication::CopyData(const BlkCommShmInfoTag& blkInfo,
                                       const BlkShmCommHeaderTag& blkHeader, void* pBuffer,
                                       uint32_t u4Capacity) {
    if (blkHeader.u4DataLen > u4Capacity) {
        return NY_ERR_BUFFER_TOO_SMALL;
    }
    if (blkHeader.u4DataLen == 0) {
        return 0;
    }
    return NyShareMemRead(blkInfo.hShareMem, blkHeader.u4DataOffset, pBuffer, blkHeader.u4DataLen);
}

uint32_t CNyShmCommunication::GetResponse(const BlkCommShmInfoTag& blkInfo, void* pBuffer,
                                          uint32_t u4Capacity) {
    CRegionLock lock(blkInfo.hShareMem);
    BlkShmCommHeaderTag blkHeader = {};
    uint32_t u4Result = lock.Result();
    if (u4Result == 0) {
        u4Result = ReadHeader(blkInfo.hShareMem, &blkHeader);
    }
    if (u4Result == 0) {
        u4Result = CopyData(blkInfo, blkHeader, pBuffer, u4Capacity);
    }
    return u4Result;
}

// Waits for the answer as long as the server beats: a server that has not set the connected
// event for COMM_LIVENESS_MS is taken for gone.
uint32_t CNyShmCommunication::WaitForAnswer(const BlkCommShmInfoTag& blkInfo) {
    uint64_t u8LastBeat = NyOsGetTickCount64();
    for (;;) {
        if (NyEventWait(blkInfo.hEventResponse, ANSWER_POLL_MS) == 0) {
            return 0;
        }
        uint64_t u8Now = NyOsGetTickCount64();
        if (NyEventWait(blkInfo.hEventConnected, 0) == 0) {
            u8LastBeat = u8Now;
        } else if (u8Now - u8LastBeat >= COMM_LIVENESS_MS) {
            return NY_ERR_COMM_NOT_CONNECTED;
        }
    }
}

uint32_t CNyShmCommunication::Request(NY_COMM_HANDLE hSession, const void* pRequest,
                                      uint32_t u4RequestLen, void* pAnswer,
                                      uint32_t u4AnswerCapacity) {
    if (u4RequestLen == 0 && pRequest == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    CChannelUse use(m_sessionRecord, hSession);
    if (!use.IsValid()) {
        return NY_ERR_COMM_NOT_CONNECTED;
    }
    const BlkCommShmInfoTag& blkInfo = use.Info();
    uint32_t u4Size = 0;
    uint32_t u4Result = NyShareMemGetSize(blkInfo.hShareMem, &u4Size);
    if (u4Result != 0) {
        return u4Result;
    }
    if (static_cast<uint64_t>(u4RequestLen) + COMM_HEADER_SIZE > u4Size) {
        return NY_ERR_COMM_REQUEST_TOO_LARGE;
    }
    u4Result = NyMutexWait(blkInfo.hMutex, NY_WAIT_INFINITE);
    if (u4Result != 0) {
        return u4Result;
    }
    BlkShmCommHeaderTag blkHeader = {};
    blkHeader.u4Direction = COMM_DIRECTION_REQUEST;
    blkHeader.u4Command = COMM_COMMAND_REQUEST;
    blkHeader.u4DataLen = u4RequestLen;
    blkHeader.u4DataOffset = COMM_DATA_OFFSET;
    u4Result = WriteMessage(blkInfo, blkHeader, pRequest);
    if (u4Result == 0) {
        NyEventReset(blkInfo.hEventResponse);
        u4Result = NyEventSet(blkInfo.hEventRequest);
    }
    if (u4Result == 0) {
        u4Result = WaitForAnswer(blkInfo);
    }
    if (u4Result == 0 && pAnswer != nullptr) {
        u4Result = GetResponse(blkInfo, pAnswer, u4AnswerCapacity);
    }
    NyMutexRelease(blkInfo.hMutex);
    return u4Result;
}

uint32_t CNyShmCommunication::Listen(NY_COMM_HANDLE hSession, void* pBuffer, uint32_t* pu4Length) {
    CChannelUse use(m_sessionRecord, hSession);
    if (!use.IsValid()) {
        return NY_ERR_COMM_NOT_CONNECTED;
    }
    if (pu4Length == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    const BlkCommShmInfoTag& blkInfo = use.Info();
    uint32_t u4Result = NyEventWait(blkInfo.hEventRequest, COMM_LISTEN_WAIT_MS);
    if (u4Result != 0) {
        return u4Result;
    }
    NyEventReset(blkInfo.hEventRequest);
    bool bSignalAgain = false;
    u4Result = TakeRequest(blkInfo, pBuffer, pu4Length, &bSignalAgain);
    if (bSignalAgain) {
        NyEventSet(blkInfo.hEventResponse);
        NyEventSet(blkInfo.hEventConnected);
    }
    return u4Result;
}

// Only what a client wrote is served: a region that holds anything else (our own answer read
// back, a request cut short, a stray set of the event) is dropped with one log line and never
// answered; the caller sees it as a listen that found nothing.
uint32_t CNyShmCommunication::TakeRequest(const BlkCommShmInfoTag& blkInfo, void* pBuffer,
                                          uint32_t* pu4Length, bool* pbSignalAgain) {
    CRegionLock lock(blkInfo.hShareMem);
    BlkShmCommHeaderTag blkHeader = {};
    uint32_t u4Size = 0;
    uint32_t u4Result = lock.Result();
    if (u4Result == 0) {
        u4Result = ReadHeader(blkInfo.hShareMem, &blkHeader);
    }
    if (u4Result == 0) {
        u4Result = NyShareMemGetSize(blkInfo.hShareMem, &u4Size);
    }
    if (u4Result != 0) {
        return u4Result;
    }
    if (blkHeader.u4Direction != COMM_DIRECTION_REQUEST ||
        blkHeader.u4Command != COMM_COMMAND_REQUEST ||
        static_cast<uint64_t>(blkHeader.u4DataLen) + COMM_HEADER_SIZE > u4Size) {
        // Our answer, untaken, and a set of the event after it: a set that a killed client left
        // woke us before the next client's own set, so we read and answered its request before
        // that client reset the response event. That reset cleared the answer's signal; without
        // a second one the client would wait for it as long as we beat.
        if (blkInfo.pAnswerGuard != nullptr &&
            blkInfo.pAnswerGuard->HoldsUntakenAnswer(blkHeader)) {
            NY_LOG(LOG_INFO, "CNyShmCommunication::Listen()->answer not taken, signalled again");
            *pbSignalAgain = true;
            return static_cast<uint32_t>(EAGAIN);
        }
        NY_LOG(LOG_INFO,
               "CNyShmCommunication::Listen()->not a request, dropped: direction %u, command %u, "
               "length %u",
               blkHeader.u4Direction, blkHeader.u4Command, blkHeader.u4DataLen);
        return static_cast<uint32_t>(EAGAIN);
    }
    // Requests are read from the fixed data offset, whatever the header says.
    blkHeader.u4DataOffset = COMM_DATA_OFFSET;
    u4Result = CopyData(blkInfo, blkHeader, pBuffer, *pu4Length);
    if (u4Result == 0 || u4Result == NY_ERR_BUFFER_TOO_SMALL) {
        *pu4Length = blkHeader.u4DataLen;
    }
    if (u4Result == 0 && blkInfo.pAnswerGuard != nullptr) {
        blkInfo.pAnswerGuard->RequestTaken(blkHeader, pBuffer);
    }
    return u4Result;
}

uint32_t CNyShmCommunication::Notify(NY_COMM_HANDLE hSession, const BlkCommNotifyDataTag* pNotify) {
    CChannelUse use(m_sessionRecord, hSession);
    if (!use.IsValid()) {
        return NY_ERR_COMM_NOT_CONNECTED;
    }
    if (pNotify == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    return InnerNotify(use.Info(), *pNotify);
}

uint32_t CNyShmCommunication::InnerNotify(const BlkCommShmInfoTag& blkInfo,
                                          const BlkCommNotifyDataTag& blkNotify) {
    BlkShmCommHeaderTag blkHeader = {};
    blkHeader.u4Direction = COMM_DIRECTION_ANSWER;
    blkHeader.u4Signal = blkNotify.enSignal;
    uint32_t u4Size = 0;
    uint32_t u4Result = NyShareMemGetSize(blkInfo.hShareMem, &u4Size);
    if (u4Result != 0) {
        return u4Result;
    }
    if (blkNotify.pData != nullptr && blkNotify.u4DataLen != 0) {
        if (static_cast<uint64_t>(blkNotify.u4DataLen) + COMM_HEADER_SIZE > u4Size) {
            // Sent without data: the client sees an answer of length 0.
            NY_LOG(LOG_ERROR, "CNyShmCommunication::InnerNotify()->data size too big!");
        } else {
            blkHeader.u4DataLen = blkNotify.u4DataLen;
            blkHeader.u4DataOffset = COMM_DATA_OFFSET;
        }
    }
    {
        CRegionLock lock(blkInfo.hShareMem);
        u4Result = lock.Result();
        if (u4Result != 0) {
            return u4Result;
        }
        // The request's client died and another one's request replaced it: that client must
        // not get this answer, nor lose its request; the answer is dropped.
        if (blkInfo.pAnswerGuard != nullptr && !blkInfo.pAnswerGuard->StillHoldsRequest()) {
            NY_LOG(LOG_INFO, "CNyShmCommunication::InnerNotify()->request replaced, not answered");
            return 0;
        }
        u4Result = WriteMessage(blkInfo, blkHeader, blkNotify.pData);
        if (u4Result != 0) {
            return u4Result;
        }
        if (blkInfo.pAnswerGuard != nullptr) {
            blkInfo.pAnswerGuard->Answered(blkHeader);
        }
    }
    u4Result = NyEventSet(blkInfo.hEventResponse);
    if (u4Result == 0 && blkInfo.pHeartBeat != nullptr) {
        // The server shows it is alive the moment it answers (a client waits for a beat after
        // every request), and beats fast for a few milliseconds after.
        NyEventSet(blkInfo.hEventConnected);
        blkInfo.pHeartBeat->BeatFast(COMM_HEARTBEAT_ANSWER_FAST_MS);
    }
    return u4Result;
}

uint32_t CNyShmCommunication::WaitForSingleSignal(NY_COMM_HANDLE hSession,
                                                  EN_COMMUNICATION_SIGNAL enSignal,
                                                  uint32_t u4TimeoutMs, void* pBuffer,
                                                  uint32_t u4Capacity) {
    CChannelUse use(m_sessionRecord, hSession);
    if (!use.IsValid()) {
        return NY_ERR_COMM_NOT_CONNECTED;
    }
    return InnerWait(use.Info(), enSignal, u4TimeoutMs, pBuffer, u4Capacity);
}

uint32_t CNyShmCommunication::WaitForMultiSignal(NY_COMM_HANDLE hSession,
                                                 EN_COMMUNICATION_SIGNAL enSignal,
                                                 uint32_t u4TimeoutMs, void* pBuffer,
                                                 uint32_t u4Capacity) {
    return WaitForSingleSignal(hSession, enSignal, u4TimeoutMs, pBuffer, u4Capacity);
}

// The time-out is compared with clock() ticks (process time), and the header that decides the
// copy is the one read in the round before the event came; both are part of the channel's
// established behaviour.
uint32_t CNyShmCommunication::InnerWait(const BlkCommShmInfoTag& blkInfo,
                                        EN_COMMUNICATION_SIGNAL enSignal, uint32_t u4TimeoutMs,
                                        void* pBuffer, uint32_t u4Capacity) {
    clock_t tStart = clock();
    BlkShmCommHeaderTag blkHeader = {};
    for (;;) {
        if (static_cast<int64_t>(clock() - tStart) > static_cast<int64_t>(u4TimeoutMs)) {
            return NY_ERR_TIMEOUT;
        }
        ReadHeader(blkInfo.hShareMem, &blkHeader);
        if (NyEventWait(blkInfo.hEventResponse, COMM_NOTIFY_POLL_MS) == 0) {
            break;
        }
    }
    // The signal lands in the by-value argument only; callers never see it.
    enSignal = static_cast<EN_COMMUNICATION_SIGNAL>(blkHeader.u4Signal);
    (void)enSignal;
    NyEventReset(blkInfo.hEventResponse);
    if (pBuffer == nullptr) {
        return 0;
    }
    return CopyData(blkInfo, blkHeader, pBuffer, u4Capacity);
}

uint32_t CNyShmCommunication::IsConnected(NY_COMM_HANDLE hSession, EnBool* pbConnected) {
    if (pbConnected == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    *pbConnected = NY_FALSE;
    CChannelUse use(m_sessionRecord, hSession);
    if (!use.IsValid()) {
        return NY_ERR_COMM_NOT_CONNECTED;
    }
    uint32_t u4Result = WaitForHeartBeat(use.Info(), COMM_LIVENESS_MS);
    if (u4Result == 0) {
        *pbConnected = NY_TRUE;
    }
    return u4Result;
}

uint32_t CNyShmCommunication::Disconnect(NY_COMM_HANDLE hSession) {
    CChannelUse use(m_sessionRecord, hSession);
    if (!use.IsValid() || !m_sessionRecord.Detach(hSession)) {
        return NY_ERR_COMM_NOT_CONNECTED;
    }
    if (use.Info().pHeartBeat != nullptr) {
        use.Info().pHeartBeat->Stop();
    }
    return 0;  // the objects close when the last user of the channel leaves
}

uint32_t CNyShmCommunication::InnerCommit(NY_COMM_HANDLE hSession,
                                          const BlkShmCommHeaderTag& blkHeader, const void* pData,
                                          uint32_t u4TimeoutMs) {
    CChannelUse use(m_sessionRecord, hSession);
    if (!use.IsValid()) {
        return NY_ERR_COMM_NOT_CONNECTED;
    }
    const BlkCommShmInfoTag& blkInfo = use.Info();
    uint32_t u4Result = WriteMessage(blkInfo, blkHeader, pData);
    if (u4Result != 0) {
        return u4Result;
    }
    NyEventSet(blkInfo.hEventRequest);
    NyEventReset(blkInfo.hEventResponse);
    return NyEventWait(blkInfo.hEventResponse, u4TimeoutMs);
}

uint32_t CNyShmCommunication::DefaultResponse(NY_COMM_HANDLE hSession) {
    CChannelUse use(m_sessionRecord, hSession);
    if (!use.IsValid()) {
        return NY_ERR_COMM_NOT_CONNECTED;
    }
    BlkShmCommHeaderTag blkHeader = {};
    uint32_t u4Result = ReadHeader(use.Info().hShareMem, &blkHeader);
    if (u4Result != 0) {
        return u4Result;
    }
    if (blkHeader.u4Command == COMM_COMMAND_ACK) {
        NyEventSet(use.Info().hEventResponse);
        return 0;
    }
    if (blkHeader.u4Command == COMM_COMMAND_REQUEST) {
        BlkCommNotifyDataTag blkNotify = {COMM_SIGNAL_DEFAULT, nullptr, 0};
        InnerNotify(use.Info(), blkNotify);
        return 1;
    }
    return 0;
}

void CNyShmCommunication::ForkPrepare() {
    m_lockStart.Lock();
    m_sessionRecord.ForkPrepare();
}

void CNyShmCommunication::ForkParent() {
    m_sessionRecord.ForkParent();
    m_lockStart.Unlock();
}

void CNyShmCommunication::ForkChild() {
    m_sessionRecord.ForkChild();
    m_lockStart.ResetAfterFork();
}
