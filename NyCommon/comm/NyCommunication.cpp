// The flat channel interface: every function forwards to the process's one channel object and
// logs a failure's code ("u4Result = %08X", level 2) before returning it.
#include "comm/NyCommunication.h"

#include <pthread.h>

#include <cerrno>

#include "comm/CNyShmCommunication.h"
#include "log/NyLog.h"

namespace {

// The process's one channel object. Made on first use and deliberately never destroyed, so
// that threads still serving or waiting while the process exits never touch a destroyed table.
CNyShmCommunication* m_pShmCommunication = nullptr;

CNyShmCommunication* MakeShmCommunication() {
    m_pShmCommunication = new CNyShmCommunication;
    pthread_atfork([] { m_pShmCommunication->ForkPrepare(); },
                   [] { m_pShmCommunication->ForkParent(); },
                   [] { m_pShmCommunication->ForkChild(); });
    return m_pShmCommunication;
}

CNyShmCommunication& ShmCommunication() {
    static CNyShmCommunication* s_pShmCommunication = MakeShmCommunication();
    return *s_pShmCommunication;
}

uint32_t Logged(uint32_t u4Result) {
    if (u4Result != 0) {
        NY_LOG_RESULT(u4Result);
    }
    return u4Result;
}

}  // namespace

uint32_t NyCommConnectAsServer(const BlkCommInitParamTag* pParam, NY_COMM_HANDLE* phSession) {
    return Logged(ShmCommunication().StartAsServer(pParam, phSession));
}

// A listen that keeps failing the same way (its channel pulled away) is retried many times a
// second: its code is logged once, and once more with the count when the failure changes.
uint32_t NyCommListen(NY_COMM_HANDLE hSession, void* pBuffer, uint32_t* pu4Length) {
    thread_local uint32_t tu4LastFailure = 0;
    thread_local uint32_t tu4Repeats = 0;
    uint32_t u4Result = ShmCommunication().Listen(hSession, pBuffer, pu4Length);
    // An idle server listens 50 times a second; its plain time-outs are not worth a record.
    if (u4Result == static_cast<uint32_t>(EAGAIN)) {
        return u4Result;
    }
    if (u4Result != 0 && u4Result == tu4LastFailure) {
        ++tu4Repeats;
        return u4Result;
    }
    if (tu4Repeats != 0) {
        NY_LOG(LOG_INFO, "NyCommListen: u4Result = %08X repeated %u times", tu4LastFailure,
               tu4Repeats);
    }
    tu4LastFailure = u4Result;
    tu4Repeats = 0;
    return Logged(u4Result);
}

uint32_t NyCommNotify(NY_COMM_HANDLE hSession, const BlkCommNotifyDataTag* pNotify) {
    return Logged(ShmCommunication().Notify(hSession, pNotify));
}

uint32_t NyCommConnect(const BlkCommInitParamTag* pParam, uint32_t u4TimeoutMs,
                       NY_COMM_HANDLE* phSession) {
    return Logged(ShmCommunication().Connect(pParam, u4TimeoutMs, phSession));
}

uint32_t NyCommCommit(NY_COMM_HANDLE hSession, const void* pRequest, uint32_t u4RequestLen,
                      void* pAnswer, uint32_t u4AnswerCapacity) {
    return Logged(
        ShmCommunication().Request(hSession, pRequest, u4RequestLen, pAnswer, u4AnswerCapacity));
}

uint32_t NyCommWaitForSignal(NY_COMM_HANDLE hSession, EN_COMMUNICATION_SIGNAL enSignal,
                             uint32_t u4TimeoutMs, void* pBuffer, uint32_t u4Capacity) {
    return Logged(ShmCommunication().WaitForSingleSignal(hSession, enSignal, u4TimeoutMs, pBuffer,
                                                         u4Capacity));
}

uint32_t NyCommIsConnected(NY_COMM_HANDLE hSession, EnBool* pbConnected) {
    return Logged(ShmCommunication().IsConnected(hSession, pbConnected));
}

uint32_t NyCommIsIntact(NY_COMM_HANDLE hSession, EnBool* pbIntact) {
    return Logged(ShmCommunication().IsIntact(hSession, pbIntact));
}

uint32_t NyCommSetBeatPeriod(NY_COMM_HANDLE hSession, uint32_t u4PeriodMs) {
    return Logged(ShmCommunication().SetBeatPeriod(hSession, u4PeriodMs));
}

uint32_t NyCommDisconnect(NY_COMM_HANDLE hSession) {
    return Logged(ShmCommunication().Disconnect(hSession));
}
