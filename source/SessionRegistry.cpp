#include "SessionRegistry.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "comm/NyCommunication.h"
#include "ipc/NyIpcName.h"
#include "runtime/NyResult.h"
#include "session/NySessionChannel.h"

namespace {

const char* const SZ_REGISTRY_DIR = "/dev/shm/";

// "ny.uisessions.<hash>." for this executable.
std::string RegistryPrefix() {
    char szExe[NY_IPC_PATH_SIZE] = {};
    ssize_t cch = readlink("/proc/self/exe", szExe, sizeof(szExe) - 1);
    szExe[cch > 0 ? cch : 0] = '\0';
    char szPrefix[48];
    snprintf(szPrefix, sizeof(szPrefix), "ny.uisessions.%08x.",
             UnixName2Key(NY_KEY_KIND_NONE, szExe));
    return szPrefix;
}

std::string RegistryPath(pid_t pid) {
    return SZ_REGISTRY_DIR + RegistryPrefix() + std::to_string(pid);
}

// A channel is only opened to be dropped: joining it takes over a region and event sets that
// no live process holds, and the last user's close removes them. A channel that a live process
// holds (a client that outlived its server) only loses our passing hold.
bool ClearChannel(const std::string& strName) {
    BlkCommInitParamTag blkInit;
    NY_COMM_HANDLE hProbe = nullptr;
    if (!NySessionFillInitParam(strName.c_str(), &blkInit)) {
        return false;
    }
    if (NyCommConnect(&blkInit, 0, &hProbe) != NY_ERR_OBJECT_ABSENT) {
        if (hProbe != nullptr) {
            NyCommDisconnect(hProbe);
        }
        return false;
    }
    if (NyCommConnectAsServer(&blkInit, &hProbe) != NY_OK) {
        return false;
    }
    NyCommDisconnect(hProbe);
    return true;
}

// This process's list, open for appending; dropped whenever the list is replaced (a rename
// leaves the descriptor on the old file) and in a forked child (another pid, another list).
struct BlkAppendTag {
    pid_t pid = 0;
    int iFd = -1;
};
BlkAppendTag g_blkAppend;

void DropAppend() {
    if (g_blkAppend.iFd >= 0 && g_blkAppend.pid == getpid()) {
        close(g_blkAppend.iFd);
    }
    g_blkAppend = BlkAppendTag();
}

bool IsDeadPid(const char* szPid) {
    char* pEnd = nullptr;
    long lPid = strtol(szPid, &pEnd, 10);
    return lPid > 0 && *pEnd == '\0' && lPid != getpid() && kill(lPid, 0) != 0 && errno == ESRCH;
}

}  // namespace

void SessionRegistryWrite(const std::vector<std::string>& vNames) {
    DropAppend();
    std::string strPath = RegistryPath(getpid());
    if (vNames.empty()) {
        unlink(strPath.c_str());
        return;
    }
    std::string strTemp = strPath + ".new";
    {
        std::ofstream out(strTemp, std::ios::trunc);
        for (const std::string& strName : vNames) {
            out << strName << '\n';
        }
    }
    rename(strTemp.c_str(), strPath.c_str());
}

void SessionRegistryAdd(const std::string& strName) {
    if (g_blkAppend.pid != getpid()) {
        g_blkAppend = BlkAppendTag();
        g_blkAppend.iFd =
            open(RegistryPath(getpid()).c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
        g_blkAppend.pid = getpid();
    }
    std::string strLine = strName + '\n';
    if (g_blkAppend.iFd < 0 || write(g_blkAppend.iFd, strLine.data(), strLine.size()) !=
                                   static_cast<ssize_t>(strLine.size())) {
        DropAppend();
    }
}

size_t SessionRegistryClearDead() {
    std::string strPrefix = RegistryPrefix();
    std::vector<std::string> vLists;
    if (DIR* pDir = opendir(SZ_REGISTRY_DIR)) {
        while (struct dirent* pEntry = readdir(pDir)) {
            if (strncmp(pEntry->d_name, strPrefix.c_str(), strPrefix.size()) == 0 &&
                IsDeadPid(pEntry->d_name + strPrefix.size())) {
                vLists.push_back(SZ_REGISTRY_DIR + std::string(pEntry->d_name));
            }
        }
        closedir(pDir);
    }
    size_t cRemoved = 0;
    for (const std::string& strList : vLists) {
        std::ifstream in(strList);
        std::string strName;
        while (std::getline(in, strName)) {
            cRemoved += ClearChannel(strName) ? 1 : 0;
        }
        unlink(strList.c_str());
    }
    return cRemoved;
}
