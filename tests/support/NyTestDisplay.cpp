#include "support/NyTestDisplay.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"

namespace {

constexpr unsigned int NY_TEST_START_TIMEOUT_MS = 10000;

// Starts argv in a process group of its own (so that Stop() also reaches whatever it starts in
// turn, such as services activated by a bus daemon). Descriptors without close-on-exec stay
// open in the child. Output goes to /dev/null.
pid_t SpawnGroup(const std::vector<std::string>& vArgs) {
    std::vector<char*> vArgv;
    for (const std::string& str : vArgs) {
        vArgv.push_back(const_cast<char*>(str.c_str()));
    }
    vArgv.push_back(nullptr);
    pid_t pid = fork();
    if (pid == 0) {
        setpgid(0, 0);
        int fdNull = open("/dev/null", O_RDWR);
        dup2(fdNull, STDIN_FILENO);
        dup2(fdNull, STDOUT_FILENO);
        dup2(fdNull, STDERR_FILENO);
        execvp(vArgv[0], vArgv.data());
        _exit(127);
    }
    if (pid > 0) {
        setpgid(pid, pid);
    }
    return pid;
}

// Reads one line that the child writes into the pipe; "" on time-out or end of file.
std::string ReadLine(int fd, unsigned int u4TimeoutMs) {
    std::string strLine;
    struct pollfd pfd = {fd, POLLIN, 0};
    while (poll(&pfd, 1, static_cast<int>(u4TimeoutMs)) > 0) {
        char ch = 0;
        if (read(fd, &ch, 1) != 1 || ch == '\n') {
            break;
        }
        strLine += ch;
    }
    return strLine;
}

// Starts a program that announces itself on a descriptor (Xvfb -displayfd, dbus-daemon
// --print-address) and returns the announced line. "{fd}" in an argument becomes the
// descriptor's number.
std::string SpawnAndRead(std::vector<std::string> vArgs, pid_t* pPid) {
    int aiPipe[2];
    if (pipe(aiPipe) != 0) {
        return "";
    }
    for (std::string& str : vArgs) {
        size_t pos = str.find("{fd}");
        if (pos != std::string::npos) {
            str.replace(pos, 4, std::to_string(aiPipe[1]));
        }
    }
    fcntl(aiPipe[0], F_SETFD, FD_CLOEXEC);
    *pPid = SpawnGroup(vArgs);
    close(aiPipe[1]);
    std::string strLine = ReadLine(aiPipe[0], NY_TEST_START_TIMEOUT_MS);
    close(aiPipe[0]);
    return strLine;
}

// Ends a process group and reaps all of it: its members become our children when their
// parents go, as this process is a subreaper (see Start).
void EndGroup(pid_t* pPid) {
    if (*pPid <= 0) {
        return;
    }
    kill(-*pPid, SIGTERM);
    if (NyTestWaitChild(*pPid, 3000) < 0) {
        kill(-*pPid, SIGKILL);
        NyTestWaitChild(*pPid, 3000);
    }
    kill(-*pPid, SIGKILL);
    NyTestWaitUntil(
        [pgid = *pPid] {
            while (waitpid(-pgid, nullptr, WNOHANG) > 0) {
            }
            return kill(-pgid, 0) != 0;  // no member left, zombies included
        },
        3000);
    *pPid = -1;
}

}  // namespace

bool CNyTestDisplay::Start(bool bWindowManager, bool bAccessibility) {
    // Services that a bus daemon starts outlive their parent's end for a moment; as orphans
    // they come to us, so that Stop() can reap them.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    if (!StartXvfb()) {
        fprintf(stderr, "test display: Xvfb did not start\n");
        return false;
    }
    if (bAccessibility && !StartSessionBus()) {
        fprintf(stderr, "test display: dbus-daemon did not start\n");
        return false;
    }
    if (bWindowManager && !StartWindowManager()) {
        fprintf(stderr, "test display: openbox did not start\n");
        return false;
    }
    return true;
}

bool CNyTestDisplay::StartXvfb() {
    std::string strNumber = SpawnAndRead({"Xvfb", "-displayfd", "{fd}", "-screen", "0",
                                          "1024x768x24", "-nolisten", "tcp", "-noreset"},
                                         &m_pidXvfb);
    if (strNumber.empty()) {
        return false;
    }
    m_strName = ":" + strNumber;
    setenv("DISPLAY", m_strName.c_str(), 1);
    return true;
}

bool CNyTestDisplay::StartSessionBus() {
    std::string strAddress = SpawnAndRead(
        {"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address={fd}"}, &m_pidBus);
    if (strAddress.empty()) {
        return false;
    }
    setenv("DBUS_SESSION_BUS_ADDRESS", strAddress.c_str(), 1);
    // GTK+ 2 exports its widgets over AT-SPI only with these modules loaded.
    setenv("GTK_MODULES", "gail:atk-bridge", 1);
    unsetenv("NO_AT_BRIDGE");
    return true;
}

bool CNyTestDisplay::StartWindowManager() {
    m_pidWindowManager = SpawnGroup({"openbox", "--sm-disable"});
    // The manager announces itself with _NET_SUPPORTING_WM_CHECK on the root window.
    return m_pidWindowManager > 0 && NyTestWaitUntil(
                                         [] {
                                             return NyTestShell(
                                                        "xprop -root "
                                                        "_NET_SUPPORTING_WM_CHECK")
                                                        .find("window id") != std::string::npos;
                                         },
                                         NY_TEST_START_TIMEOUT_MS);
}

void CNyTestDisplay::Stop() {
    EndGroup(&m_pidWindowManager);
    EndGroup(&m_pidBus);
    EndGroup(&m_pidXvfb);
    if (!m_strName.empty()) {
        unsetenv("DISPLAY");
        m_strName.clear();
    }
}
