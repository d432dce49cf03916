#include "support/NyTestProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace {

unsigned long long MonotonicMs() {
    struct timespec ts = {};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<unsigned long long>(ts.tv_sec) * 1000ull + ts.tv_nsec / 1000000;
}

}  // namespace

pid_t NyTestForkChild(const std::function<int()>& pfn) {
    pid_t pid = fork();
    if (pid == 0) {
        _exit(pfn());
    }
    return pid;
}

pid_t NyTestSpawn(const std::vector<std::string>& vArgs, const std::string& strOutputFile,
                  const std::function<bool(pid_t)>& pfnAcceptId) {
    if (vArgs.empty()) {
        return -1;
    }
    std::vector<char*> vArgv;
    for (const std::string& str : vArgs) {
        vArgv.push_back(const_cast<char*>(str.c_str()));
    }
    vArgv.push_back(nullptr);
    for (;;) {
        int aiGo[2];  // the child waits for the verdict on its id before it runs the program
        if (pipe(aiGo) != 0) {
            return -1;
        }
        pid_t pid = fork();
        if (pid == 0) {
            char chGo = 0;
            close(aiGo[1]);
            if (read(aiGo[0], &chGo, 1) != 1 || chGo != 'y') {
                _exit(127);
            }
            if (!strOutputFile.empty()) {
                int fd = open(strOutputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
                dup2(fd, STDOUT_FILENO);
                dup2(fd, STDERR_FILENO);
            }
            execv(vArgv[0], vArgv.data());
            _exit(127);
        }
        close(aiGo[0]);
        bool bAccept = pid < 0 || !pfnAcceptId || pfnAcceptId(pid);
        ssize_t cb = write(aiGo[1], bAccept ? "y" : "n", 1);
        close(aiGo[1]);
        if (bAccept || cb != 1) {
            return pid;
        }
        waitpid(pid, nullptr, 0);
    }
}

int NyTestWaitChild(pid_t pid, unsigned int u4TimeoutMs) {
    int iStatus = 0;
    pid_t r = 0;
    NyTestWaitUntil([&] { return (r = waitpid(pid, &iStatus, WNOHANG)) != 0; }, u4TimeoutMs);
    if (r != pid) {
        return -1;
    }
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : 128 + WTERMSIG(iStatus);
}

void NyTestKillChild(pid_t pid) {
    if (pid <= 0) {
        return;
    }
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
}

std::string NyTestBinPath(const std::string& strName) {
    return std::string(NY_TEST_BIN_DIR) + "/" + strName;
}

bool NyTestWaitUntil(const std::function<bool()>& pfnCondition, unsigned int u4TimeoutMs) {
    for (unsigned long long u8End = MonotonicMs() + u4TimeoutMs; MonotonicMs() < u8End;) {
        if (pfnCondition()) {
            return true;
        }
        usleep(5000);
    }
    return pfnCondition();
}
