#include "support/NyTestDisplay.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <vector>

#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"

namespace {

constexpr unsigned int NY_TEST_START_TIMEOUT_MS = 10000;

// Starts argv in a process group of its own (so that Stop() also reaches whatever it starts in
// turn, such as services activated by a bus daemon), output to /dev/null. Descriptors without
// close-on-exec stay open in the child.
pid_t SpawnGroup(std::vector<std::string> vArgs, int fdKeep = -1) {
    std::vector<char*> vArgv;
    for (std::string& str : vArgs) {
        size_t pos = str.find("{fd}");  // becomes the number of fdKeep
        if (pos != std::string::npos) {
            str.replace(pos, 4, std::to_string(fdKeep));
        }
        vArgv.push_back(&str[0]);
    }
    vArgv.push_back(nullptr);
    pid_t pid = fork();
    if (pid == 0) {
        setpgid(0, 0);
        prctl(PR_SET_PDEATHSIG, SIGTERM);  // should the test be killed, its display goes too
        int fdNull = open("/dev/null", O_RDWR);
        dup2(fdNull, STDIN_FILENO), dup2(fdNull, STDOUT_FILENO), dup2(fdNull, STDERR_FILENO);
        execvp(vArgv[0], vArgv.data());
        _exit(127);
    }
    if (pid > 0) {
        setpgid(pid, pid);
    }
    return pid;
}

// Starts a program that announces itself on a descriptor (Xvfb -displayfd, dbus-daemon
// --print-address) and returns the announced line; "" on time-out or when it ended.
std::string SpawnAndRead(const std::vector<std::string>& vArgs, pid_t* pPid) {
    int aiPipe[2];
    if (pipe(aiPipe) != 0) {
        return "";
    }
    fcntl(aiPipe[0], F_SETFD, FD_CLOEXEC);
    *pPid = SpawnGroup(vArgs, aiPipe[1]);
    close(aiPipe[1]);
    std::string strLine;
    struct pollfd pfd = {aiPipe[0], POLLIN, 0};
    char ch = 0;
    while (poll(&pfd, 1, NY_TEST_START_TIMEOUT_MS) > 0 && read(aiPipe[0], &ch, 1) == 1 &&
           ch != '\n') {
        strLine += ch;
    }
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
    NyTestWaitChild(*pPid, 3000);
    kill(-*pPid, SIGKILL);
    NyTestWaitChild(*pPid, 3000);
    NyTestWaitUntil(
        [pgid = *pPid] {
            while (waitpid(-pgid, nullptr, WNOHANG) > 0) {
            }
            return kill(-pgid, 0) != 0;  // no member left, zombies included
        },
        3000);
    *pPid = -1;
}

bool Succeeds(const std::string& strCommand) {
    int iExit = -1;
    return NyTestShell(strCommand, &iExit), iExit == 0;
}

}  // namespace

void CNyTestDisplay::Start(bool bWindowManager, bool bAccessibility) {
    // Helpers read and match the dialogs' (non-ASCII) titles whatever the caller's locale.
    setenv("LC_ALL", "C.UTF-8", 1);
    // Services that a bus daemon starts outlive their parent's end for a moment; as orphans
    // they come to us, so that Stop() can reap them.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    std::string strNumber = SpawnAndRead({"Xvfb", "-displayfd", "{fd}", "-screen", "0",
                                          "1024x768x24", "-nolisten", "tcp", "-noreset"},
                                         &m_pidXvfb);
    Require(!strNumber.empty(), "Xvfb did not start (package xvfb)");
    m_strName = ":" + strNumber;
    setenv("DISPLAY", m_strName.c_str(), 1);
    if (bAccessibility) {
        StartSessionBus();
    }
    if (bWindowManager) {
        m_pidWindowManager = SpawnGroup({"openbox", "--sm-disable"});
        // Openbox announces itself (_NET_SUPPORTING_WM_CHECK) before its start is done, and a
        // window mapped in between was never managed: it stayed unmapped (2 of 60 starts). Its
        // theme property on the root window comes last (0 of 100).
        auto announced = [] { return Succeeds("xprop -root _OB_THEME | grep -q ="); };
        Require(NyTestWaitUntil(announced, NY_TEST_START_TIMEOUT_MS),
                "the window manager did not start (packages openbox, x11-utils)");
    }
}

void CNyTestDisplay::StartSessionBus() {
    std::string strAddress = SpawnAndRead(
        {"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address={fd}"}, &m_pidBus);
    Require(!strAddress.empty(), "the D-Bus session did not start (package dbus-x11)");
    setenv("DBUS_SESSION_BUS_ADDRESS", strAddress.c_str(), 1);
    // GTK+ 2 exports its widgets over AT-SPI only with these modules loaded.
    setenv("GTK_MODULES", "gail:atk-bridge", 1);
    unsetenv("NO_AT_BRIDGE");
    Require(Succeeds("ls /usr/lib/*/gtk-2.0/modules/libgail.so "
                     "/usr/lib/*/gtk-2.0/modules/libatk-bridge.so"),
            "GTK's accessibility modules are missing (packages libgail-common, libatk-adaptor)");
}

void CNyTestDisplay::Require(bool bStarted, const char* szReason) {
    if (bStarted) {
        return;
    }
    fprintf(stderr, "test display: %s; the GUI tests of this program cannot run\n", szReason);
    fflush(stderr);
    Stop();
    _exit(1);
}

void CNyTestDisplay::Stop() {
    EndGroup(&m_pidWindowManager);
    EndGroup(&m_pidBus);
    EndGroup(&m_pidXvfb);
    if (!m_strName.empty()) {
        unsetenv("DISPLAY");
    }
    m_strName.clear();
}
