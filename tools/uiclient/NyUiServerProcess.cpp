#include "NyUiServerProcess.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "os/NyOs.h"
#include "os/NyUuid.h"

namespace {

constexpr uint32_t STOP_POLL_MS = 5;

void SendOutputToNull() {
    int fd = open("/dev/null", O_WRONLY);
    if (fd >= 0) {
        dup2(fd, STDOUT_FILENO);
        dup2(fd, STDERR_FILENO);
        close(fd);
    }
}

int DecodeExit(int iStatus) {
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : 128 + WTERMSIG(iStatus);
}

}  // namespace

std::string NyUiServerPathBesideSelf() {
    char szPath[4096];
    ssize_t nLen = readlink("/proc/self/exe", szPath, sizeof(szPath) - 1);
    if (nLen <= 0) {
        return std::string();
    }
    std::string strPath(szPath, static_cast<size_t>(nLen));
    size_t nSlash = strPath.rfind('/');
    if (nSlash == std::string::npos) {
        return std::string();
    }
    return strPath.substr(0, nSlash + 1) + "ukey-uiserver";
}

std::string NyUiFreshMainName() {
    char szGuid[NY_UUID_TEXT_SIZE];
    if (NyGenUuid(szGuid, sizeof(szGuid)) != 0) {
        return "UKeyUiMain-" + std::to_string(getpid()) + "-" +
               std::to_string(NyOsGetTickCount64());
    }
    return std::string("UKeyUiMain-") + szGuid;
}

pid_t NyUiServerSpawn(const char* szServerPath, const char* szMainName, bool bInheritOutput,
                      uint32_t* pu4Error) {
    pid_t pid = fork();
    if (pid == 0) {
        if (!bInheritOutput) {
            SendOutputToNull();
        }
        execl(szServerPath, szServerPath, szMainName, static_cast<char*>(nullptr));
        _exit(127);
    }
    if (pid < 0 && pu4Error != nullptr) {
        *pu4Error = static_cast<uint32_t>(errno);
    }
    return pid;
}

bool NyUiServerChildRunning(pid_t pid) {
    int iStatus = 0;
    return pid > 0 && waitpid(pid, &iStatus, WNOHANG) == 0;
}

bool NyUiServerStop(pid_t pid, uint32_t u4TimeoutMs, int* piExitCode) {
    int iExitCode = -1;
    bool bEnded = false;
    if (pid > 0) {
        kill(pid, SIGTERM);
        uint64_t u8End = NyOsGetTickCount64() + u4TimeoutMs;
        while (!bEnded && NyOsGetTickCount64() < u8End) {
            int iStatus = 0;
            pid_t r = waitpid(pid, &iStatus, WNOHANG);
            if (r == pid) {
                iExitCode = DecodeExit(iStatus);
            }
            bEnded = r == pid || (r < 0 && errno == ECHILD && kill(pid, 0) != 0);
            if (!bEnded) {
                NyOsSleep(STOP_POLL_MS);
            }
        }
        if (!bEnded) {
            kill(pid, SIGKILL);
            int iStatus = 0;
            iExitCode = waitpid(pid, &iStatus, 0) == pid ? DecodeExit(iStatus) : -1;
        }
    }
    if (piExitCode != nullptr) {
        *piExitCode = iExitCode;
    }
    return bEnded;
}
