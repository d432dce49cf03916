// A UI server process for tests: started under a unique main session name without a display
// (so no dialog can ever appear), ended with SIGTERM so that it removes its channels.
#pragma once

#include <sys/types.h>

#include <string>

class CNyTestServer {
public:
    // Starts build/bin/ukey-uiserver under strMainName (a unique one by default) and waits until
    // its main session answers. Check Started() before use.
    explicit CNyTestServer(const std::string& strMainName);
    CNyTestServer();
    ~CNyTestServer() { Stop(); }
    CNyTestServer(const CNyTestServer&) = delete;
    CNyTestServer& operator=(const CNyTestServer&) = delete;

    bool Started() const { return m_pid > 0; }
    pid_t Pid() const { return m_pid; }
    const std::string& MainName() const { return m_strMainName; }

    // SIGTERM, then reap; true when it ended by itself within the time-out with exit code 0
    // (a sanitizer report at exit makes it non-zero).
    bool Stop(unsigned int u4TimeoutMs = 5000);
    // kill -9 and reap; its channels are left behind.
    void Kill();

private:
    std::string m_strMainName;
    pid_t m_pid = -1;
};
