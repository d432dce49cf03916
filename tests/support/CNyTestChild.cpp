#include "support/CNyTestChild.h"

#include "support/NyTestProcess.h"

CNyTestChild::~CNyTestChild() {
    Kill();
}

int CNyTestChild::Wait(unsigned int u4TimeoutMs) {
    if (m_pid <= 0) {
        return -1;
    }
    int iExit = NyTestWaitChild(m_pid, u4TimeoutMs);
    if (iExit == -1) {
        NyTestKillChild(m_pid);
    }
    m_pid = -1;
    return iExit;
}

void CNyTestChild::Kill() {
    if (m_pid > 0) {
        NyTestKillChild(m_pid);
        m_pid = -1;
    }
}
