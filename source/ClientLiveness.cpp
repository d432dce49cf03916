#include "ClientLiveness.h"

#include <dirent.h>
#include <errno.h>
#include <signal.h>

#include <cstdio>
#include <cstring>

namespace {

bool IsAllDigits(const char* sz) {
    if (*sz == '\0') {
        return false;
    }
    for (; *sz != '\0'; ++sz) {
        if (*sz < '0' || *sz > '9') {
            return false;
        }
    }
    return true;
}

// Scans the process directory for a process whose id contains szPid. An unreadable directory
// counts as a match: we never end a session because we could not look.
bool AnyProcessIdContains(const char* szProcDir, const char* szPid) {
    DIR* pDir = opendir(szProcDir);
    if (pDir == nullptr) {
        return true;
    }
    bool bFound = false;
    while (!bFound) {
        errno = 0;
        struct dirent* pEntry = readdir(pDir);
        if (pEntry == nullptr) {
            bFound = (errno != 0);
            break;
        }
        bFound = IsAllDigits(pEntry->d_name) && strstr(pEntry->d_name, szPid) != nullptr;
    }
    closedir(pDir);
    return bFound;
}

}  // namespace

// This check runs before every listen of every session (every few tens of milliseconds). A
// shell pipeline over ps would cost tens of milliseconds of CPU per run and keep a core busy
// with a handful of idle sessions, so the client's own id is probed with kill(pid, 0) first
// and the process directory is scanned only once that process is gone.
bool IsClientProcessAliveIn(const char* szProcDir, uint32_t u4Pid) {
    if (u4Pid != 0 && u4Pid <= static_cast<uint32_t>(INT32_MAX)) {
        if (kill(static_cast<pid_t>(u4Pid), 0) == 0 || errno == EPERM) {
            return true;
        }
    }
    char szPid[16];
    snprintf(szPid, sizeof(szPid), "%u", u4Pid);
    return AnyProcessIdContains(szProcDir, szPid);
}

bool IsClientProcessAlive(uint32_t u4Pid) {
    return IsClientProcessAliveIn("/proc", u4Pid);
}
