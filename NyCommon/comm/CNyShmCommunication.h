// The request/response channel behind the flat NyComm* functions (one instance per process).
// It builds channels from their named objects, keeps them in the process's channel table, and
// runs the request, listen, notify and wait sequences on the channel's region and events.
#pragma once

#include <cstdint>

#include "comm/BlkCommShmInfo.h"
#include "comm/BlkShmCommHeader.h"
#include "comm/CCommShmSessionRecord.h"
#include "comm/CLock.h"
#include "comm/NyCommunication.h"

// Time limits of the channel's waits.
constexpr uint32_t COMM_LISTEN_WAIT_MS = 20;
constexpr uint32_t COMM_LIVENESS_MS = 500;  // no heartbeat for this long: the server is gone
constexpr uint32_t COMM_NOTIFY_POLL_MS = 10;

class CNyShmCommunication {
public:
    CNyShmCommunication() = default;
    CNyShmCommunication(const CNyShmCommunication&) = delete;
    CNyShmCommunication& operator=(const CNyShmCommunication&) = delete;

    uint32_t StartAsServer(const BlkCommInitParamTag* pParam, NY_COMM_HANDLE* phSession);
    uint32_t Listen(NY_COMM_HANDLE hSession, void* pBuffer, uint32_t* pu4Length);
    uint32_t Notify(NY_COMM_HANDLE hSession, const BlkCommNotifyDataTag* pNotify);
    uint32_t Connect(const BlkCommInitParamTag* pParam, uint32_t u4TimeoutMs,
                     NY_COMM_HANDLE* phSession);
    uint32_t Request(NY_COMM_HANDLE hSession, const void* pRequest, uint32_t u4RequestLen,
                     void* pAnswer, uint32_t u4AnswerCapacity);
    uint32_t WaitForSingleSignal(NY_COMM_HANDLE hSession, EN_COMMUNICATION_SIGNAL enSignal,
                                 uint32_t u4TimeoutMs, void* pBuffer, uint32_t u4Capacity);
    uint32_t WaitForMultiSignal(NY_COMM_HANDLE hSession, EN_COMMUNICATION_SIGNAL enSignal,
                                uint32_t u4TimeoutMs, void* pBuffer, uint32_t u4Capacity);
    uint32_t IsConnected(NY_COMM_HANDLE hSession, EnBool* pbConnected);
    uint32_t Disconnect(NY_COMM_HANDLE hSession);
    // Server side: whether the channel's files are still the ones this process created and its
    // event sets still exist (someone may remove them from outside).
    uint32_t IsIntact(NY_COMM_HANDLE hSession, EnBool* pbIntact);
    uint32_t SetBeatPeriod(NY_COMM_HANDLE hSession, uint32_t u4PeriodMs);

    // Low-level request: writes blkHeader and its u4DataLen bytes of pData, sets the request
    // event, resets the response event and returns the result of waiting u4TimeoutMs for it.
    uint32_t InnerCommit(NY_COMM_HANDLE hSession, const BlkShmCommHeaderTag& blkHeader,
                         const void* pData, uint32_t u4TimeoutMs);
    // Canned answer to the message in the region: command 1 sets the response event (0);
    // command 2 is answered with signal 2 and no data (1); anything else is left alone (0).
    uint32_t DefaultResponse(NY_COMM_HANDLE hSession);

    // fork() handlers: a child starts with no channels open (see CCommShmSessionRecord).
    void ForkPrepare();
    void ForkParent();
    void ForkChild();

private:
    class CChannelUse;

    uint32_t StartLocked(const BlkCommInitParamTag& blkParam, NY_COMM_HANDLE* phSession);
    uint32_t ConnectNew(const BlkCommInitParamTag& blkParam, uint32_t u4TimeoutMs,
                        NY_COMM_HANDLE* phSession);
    static uint32_t CheckInitParam(const BlkCommInitParamTag* pParam, NY_COMM_HANDLE* phSession);
    static uint32_t GenerateRecord(const BlkCommShmInitParamTag* pShmParam, uint32_t u4Global,
                                   void* pSecurity, bool bCreate, BlkCommShmInfoTag* pInfo);
    static uint32_t GenerateRecordFor(const BlkCommInitParamTag& blkParam, bool bCreate,
                                      BlkCommShmInfoTag* pInfo);
    static uint32_t OpenObjects(uint32_t u4Global, BlkCommShmInfoTag* pInfo);
    static void DestroyRecord(BlkCommShmInfoTag* pInfo);
    static uint32_t WriteMessage(const BlkCommShmInfoTag& blkInfo,
                                 const BlkShmCommHeaderTag& blkHeader, const void* pData);
    static uint32_t CopyData(const BlkCommShmInfoTag& blkInfo, const BlkShmCommHeaderTag& blkHeader,
                             void* pBuffer, uint32_t u4Capacity);
    static uint32_t GetResponse(const BlkCommShmInfoTag& blkInfo, void* pBuffer,
                                uint32_t u4Capacity);
    static uint32_t WaitForAnswer(const BlkCommShmInfoTag& blkInfo);
    static bool ReadFileIds(const char* szName, uint64_t (&au8Ids)[4]);
    static uint32_t TakeRequest(const BlkCommShmInfoTag& blkInfo, void* pBuffer,
                                uint32_t* pu4Length, bool* pbSignalAgain);
    static uint32_t WaitForHeartBeat(const BlkCommShmInfoTag& blkInfo, uint32_t u4TimeoutMs);
    static uint32_t InnerNotify(const BlkCommShmInfoTag& blkInfo,
                                const BlkCommNotifyDataTag& blkNotify);
    static uint32_t InnerWait(const BlkCommShmInfoTag& blkInfo, EN_COMMUNICATION_SIGNAL enSignal,
                              uint32_t u4TimeoutMs, void* pBuffer, uint32_t u4Capacity);

    CCommShmSessionRecord m_sessionRecord;
    // Serialises server starts, so one name started from two threads yields one channel.
    CLock m_lockStart;
};
