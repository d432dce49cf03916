#include "CNyStrictClient.h"

#include "comm/BlkShmCommHeader.h"
#include "comm/NyCommResult.h"
#include "ipc/NyEvent.h"
#include "ipc/NyMutex.h"
#include "ipc/NyShareMem.h"
#include "runtime/NyResult.h"

namespace {

constexpr uint32_t LIVENESS_MS = 500;

}  // namespace

CNyStrictClient::~CNyStrictClient() {
    Close();
}

uint32_t CNyStrictClient::Open(const std::string& strName) {
    Close();
    uint32_t u4Result = NyShareMemOpen2(0, strName.c_str(), &m_hShm);
    if (u4Result == NY_OK) {
        u4Result =
            NyMutexCreate2(0, (strName + "_Mutex_Communication").c_str(), nullptr, &m_hMutex);
    }
    const char* aszSuffix[3] = {"_Event_Request", "_Event_Response", "_Event_Connected"};
    NY_EVENT_HANDLE* aphEvent[3] = {&m_hRequest, &m_hResponse, &m_hConnected};
    for (int i = 0; i < 3 && u4Result == NY_OK; ++i) {
        u4Result = NyEventCreate2(0, (strName + aszSuffix[i]).c_str(), nullptr, aphEvent[i]);
    }
    if (u4Result != NY_OK) {
        Close();
    }
    return u4Result;
}

uint32_t CNyStrictClient::Connect(uint32_t u4TimeoutMs) {
    NyEventReset(m_hConnected);
    return NyEventWait(m_hConnected, u4TimeoutMs);
}

uint32_t CNyStrictClient::WriteRequest(const void* pRequest, uint32_t u4RequestLen) {
    BlkShmCommHeaderTag blkHeader = {};
    blkHeader.u4Direction = COMM_DIRECTION_REQUEST;
    blkHeader.u4Command = COMM_COMMAND_REQUEST;
    blkHeader.u4DataLen = u4RequestLen;
    blkHeader.u4DataOffset = COMM_DATA_OFFSET;
    uint32_t u4Result = NyShareMemLock(m_hShm);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    u4Result = NyShareMemWrite(m_hShm, 0, &blkHeader, sizeof(blkHeader));
    if (u4Result == NY_OK) {
        u4Result = NyShareMemWrite(m_hShm, COMM_DATA_OFFSET, pRequest, u4RequestLen);
    }
    NyShareMemUnlock(m_hShm);
    return u4Result;
}

// IsConnected, then the answer, round after round while the server beats.
uint32_t CNyStrictClient::WaitForAnswer() {
    for (;;) {
        NyEventReset(m_hConnected);
        if (NyEventWait(m_hConnected, LIVENESS_MS) != NY_OK) {
            return NY_ERR_COMM_NOT_CONNECTED;
        }
        if (NyEventWait(m_hResponse, LIVENESS_MS) == NY_OK) {
            return NY_OK;
        }
    }
}

uint32_t CNyStrictClient::ReadAnswer(void* pAnswer, uint32_t u4Capacity, uint32_t* pu4Len) {
    BlkShmCommHeaderTag blkHeader = {};
    uint32_t u4Result = NyShareMemLock(m_hShm);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    u4Result = NyShareMemRead(m_hShm, 0, &blkHeader, sizeof(blkHeader));
    if (u4Result == NY_OK && blkHeader.u4DataLen > u4Capacity) {
        u4Result = NY_ERR_BUFFER_TOO_SMALL;
    } else if (u4Result == NY_OK && blkHeader.u4DataLen != 0) {
        u4Result = NyShareMemRead(m_hShm, blkHeader.u4DataOffset, pAnswer, blkHeader.u4DataLen);
    }
    NyShareMemUnlock(m_hShm);
    if (pu4Len != nullptr) {
        *pu4Len = blkHeader.u4DataLen;
    }
    return u4Result;
}

uint32_t CNyStrictClient::Request(const void* pRequest, uint32_t u4RequestLen, void* pAnswer,
                                  uint32_t u4AnswerCapacity, uint32_t* pu4AnswerLen) {
    uint32_t u4Result = NyMutexWait(m_hMutex, NY_WAIT_INFINITE);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    u4Result = WriteRequest(pRequest, u4RequestLen);
    if (u4Result == NY_OK) {
        NyEventReset(m_hResponse);
        u4Result = NyEventSet(m_hRequest);
    }
    if (u4Result == NY_OK) {
        u4Result = WaitForAnswer();
    }
    if (u4Result == NY_OK) {
        u4Result = ReadAnswer(pAnswer, u4AnswerCapacity, pu4AnswerLen);
    }
    NyMutexRelease(m_hMutex);
    return u4Result;
}

void CNyStrictClient::Close() {
    for (NY_EVENT_HANDLE* phEvent : {&m_hRequest, &m_hResponse, &m_hConnected}) {
        if (*phEvent != nullptr) {
            NyEventClose(*phEvent);
            *phEvent = nullptr;
        }
    }
    if (m_hMutex != nullptr) {
        NyMutexDestroy(m_hMutex);
        m_hMutex = nullptr;
    }
    if (m_hShm != nullptr) {
        NyShareMemClose(m_hShm);
        m_hShm = nullptr;
    }
}
