#include "comm/CCommHeartBeat.h"

#include <pthread.h>

#include "ipc/NyEvent.h"
#include "os/NyOs.h"

namespace {

// How long Stop() waits for the thread to notice the request before NyThreadEnd takes over.
constexpr uint32_t HEARTBEAT_STOP_POLLS = 100;

}  // namespace

CCommHeartBeat::CCommHeartBeat(NY_EVENT_HANDLE hConnected)
    : m_hConnected(hConnected), m_hThread(nullptr), m_u4Stop(0), m_u4Left(0) {}

CCommHeartBeat::~CCommHeartBeat() {
    Stop();
}

uint32_t CCommHeartBeat::Start() {
    m_u4Stop = 0;
    m_u4Left = 0;
    return NyThreadBegin(&CCommHeartBeat::SessionHeartBeatThreadProc, this, &m_hThread);
}

void CCommHeartBeat::Stop() {
    if (m_hThread == nullptr) {
        return;
    }
    m_u4Stop = 1;
    for (uint32_t u4Poll = 0; u4Poll < HEARTBEAT_STOP_POLLS && m_u4Left == 0; ++u4Poll) {
        NyOsSleep(1);
    }
    // A moment for the thread to get from its last statement to its end, so that NyThreadEnd
    // finds it ended at its first look instead of after its 100 ms pause.
    NyOsSleep(1);
    NyThreadEnd(m_hThread);
    m_hThread = nullptr;
}

void* CCommHeartBeat::SessionHeartBeatThreadProc(void* pvArg) {
    CCommHeartBeat* pThis = static_cast<CCommHeartBeat*>(pvArg);
    uint32_t u4Result = 0;
    while (pThis->m_u4Stop == 0) {
        u4Result = NyEventSet(pThis->m_hConnected);
        if (u4Result != 0) {
            break;
        }
        pthread_testcancel();
        NyOsSleep(COMM_HEARTBEAT_PERIOD_MS);
    }
    pThis->m_u4Left = 1;
    return reinterpret_cast<void*>(static_cast<uintptr_t>(u4Result));
}
