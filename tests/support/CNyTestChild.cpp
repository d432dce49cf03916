#include "support/CNyTestChild.h"

#include "support/NyTestProcess.h"

CNyTestChild::~CNyTestChild() {
    Kill();
}

int CNyTestChild::Wait(unsigned int u4TimeoutMs) {
    int iExit = m_pid > 0 ? NyTestWaitChild(m_pid, u4TimeoutMs) : -1;
    if (iExit != -1) {
        m_pid = -1;
    }
    Kill();  // still running after the time-out
    return iExit;
}

void CNyTestChild::Kill() {
    if (m_pid > 0) {
        NyTestKillChild(m_pid);
        m_pid = -1;
    }
}
