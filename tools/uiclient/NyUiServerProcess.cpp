#include "NyUiServerProcess.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "os/NyOs.h"
#include "os/NyUuid.h"

namespace {

constexpr uint32_t STOP_POLL_MS = 5;
#define SERVER_NAME "ukey-uiserver"
#define SERVER_IN_LIBEXEC "/ukey-uiserver/" SERVER_NAME

std::string ReadLink(const char* szLink) {
    char szPath[4096];
    ssize_t nLen = readlink(szLink, szPath, sizeof(szPath) - 1);
    return nLen > 0 ? std::string(szPath, static_cast<size_t>(nLen)) : std::string();
}

// The directory part of an absolute path, with its trailing '/'; empty for anything else.
std::string DirectoryOf(const std::string& strPath) {
    size_t nSlash = strPath.rfind('/');
    return strPath.empty() || strPath[0] != '/' || nSlash == std::string::npos
               ? std::string()
               : strPath.substr(0, nSlash + 1);
}

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
    std::string strExeDir = DirectoryOf(ReadLink("/proc/self/exe"));
    if (strExeDir.empty()) {
        return std::string();
    }
    Dl_info blkInfo = {};
    std::string strLibDir;
    if (dladdr(reinterpret_cast<void*>(&NyUiServerPathBesideSelf), &blkInfo) != 0 &&
        blkInfo.dli_fname != nullptr) {
        strLibDir = DirectoryOf(blkInfo.dli_fname);
    }
    const std::string astrCandidates[] = {
        strExeDir + SERVER_NAME,
        strExeDir + NY_UI_BIN_TO_LIBEXEC SERVER_IN_LIBEXEC,
        strLibDir.empty() ? std::string() : strLibDir + NY_UI_LIB_TO_LIBEXEC SERVER_IN_LIBEXEC,
        NY_UI_INSTALLED_LIBEXEC SERVER_IN_LIBEXEC,
    };
    for (const std::string& strPath : astrCandidates) {
        if (!strPath.empty() && access(strPath.c_str(), X_OK) == 0) {
            return strPath;
        }
    }
    return astrCandidates[0];
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
