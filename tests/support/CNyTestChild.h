// A child process owned by a test: killed (kill -9) and reaped when the object goes unless it
// has ended, so a test that stops early at a failed assertion leaves no process behind.
#pragma once

#include <sys/types.h>

class CNyTestChild {
public:
    explicit CNyTestChild(pid_t pid) : m_pid(pid) {}
    ~CNyTestChild();
    CNyTestChild(const CNyTestChild&) = delete;
    CNyTestChild& operator=(const CNyTestChild&) = delete;

    pid_t Pid() const { return m_pid; }
    bool Started() const { return m_pid > 0; }
    // The child's exit code as NyTestWaitChild gives it; on a time-out the child is killed and
    // -1 returned.
    int Wait(unsigned int u4TimeoutMs);
    void Kill();

private:
    pid_t m_pid;
};
