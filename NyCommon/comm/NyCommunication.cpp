// The flat channel interface: every function forwards to the process's one channel object and
// logs a failure's code ("u4Result = %08X", level 2) before returning it.
#include "comm/NyCommunication.h"

#include <cerrno>

#include "comm/CNyShmCommunication.h"
#include "log/NyLog.h"

namespace {

CNyShmCommunication m_shmCommunication;

uint32_t Logged(uint32_t u4Result) {
    if (u4Result != 0) {
        NY_LOG_RESULT(u4Result);
    }
    return u4Result;
}

}  // namespace

uint32_t NyCommConnectAsServer(const BlkCommInitParamTag* pParam, NY_COMM_HANDLE* phSession) {
    return Logged(m_shmCommunication.StartAsServer(pParam, phSession));
}

uint32_t NyCommListen(NY_COMM_HANDLE hSession, void* pBuffer, uint32_t* pu4Length) {
    uint32_t u4Result = m_shmCommunication.Listen(hSession, pBuffer, pu4Length);
    // An idle server listens 50 times a second; its plain time-outs are not worth a record.
    return u4Result == static_cast<uint32_t>(EAGAIN) ? u4Result : Logged(u4Result);
}

uint32_t NyCommNotify(NY_COMM_HANDLE hSession, const BlkCommNotifyDataTag* pNotify) {
    return Logged(m_shmCommunication.Notify(hSession, pNotify));
}

uint32_t NyCommConnect(const BlkCommInitParamTag* pParam, uint32_t u4TimeoutMs,
                       NY_COMM_HANDLE* phSession) {
    return Logged(m_shmCommunication.Connect(pParam, u4TimeoutMs, phSession));
}

uint32_t NyCommCommit(NY_COMM_HANDLE hSession, const void* pRequest, uint32_t u4RequestLen,
                      void* pAnswer, uint32_t u4AnswerCapacity) {
    return Logged(
        m_shmCommunication.Request(hSession, pRequest, u4RequestLen, pAnswer, u4AnswerCapacity));
}

uint32_t NyCommWaitForSignal(NY_COMM_HANDLE hSession, EN_COMMUNICATION_SIGNAL enSignal,
                             uint32_t u4TimeoutMs, void* pBuffer, uint32_t u4Capacity) {
    return Logged(m_shmCommunication.WaitForSingleSignal(hSession, enSignal, u4TimeoutMs, pBuffer,
                                                         u4Capacity));
}

uint32_t NyCommIsConnected(NY_COMM_HANDLE hSession, EnBool* pbConnected) {
    return Logged(m_shmCommunication.IsConnected(hSession, pbConnected));
}

uint32_t NyCommDisconnect(NY_COMM_HANDLE hSession) {
    return Logged(m_shmCommunication.Disconnect(hSession));
}
