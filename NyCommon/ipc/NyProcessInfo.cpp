#include "ipc/NyProcessInfo.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ipc/NyIpcName.h"
#include "runtime/NyResult.h"

namespace {

constexpr const char* NY_START_TIME_COMMAND =
    "ps -p %d -o lstart|grep -v STARTED|sed 's/://g'|sed 's/[ ][ ]*/#/g'";

void CopyCut(char* szDest, size_t cchMax, const char* szSrc) {
    size_t cch = strnlen(szSrc, cchMax);
    memcpy(szDest, szSrc, cch);
    szDest[cch] = '\0';
}

void ExeName(char* szOut) {
    char szExe[NY_IPC_PATH_SIZE] = {};
    ssize_t cch = readlink("/proc/self/exe", szExe, sizeof(szExe) - 1);
    szOut[0] = '\0';
    if (cch > 0) {
        const char* szSlash = strrchr(szExe, '/');
        CopyCut(szOut, NY_PROCESS_EXE_MAX, szSlash != nullptr ? szSlash + 1 : szExe);
    }
}

// The login name of the session, or of the effective user when there is no login session.
void UserName(char* szOut) {
    char szLogin[256] = {};
    szOut[0] = '\0';
    if (getlogin_r(szLogin, sizeof(szLogin)) == 0 && szLogin[0] != '\0') {
        CopyCut(szOut, NY_PROCESS_USER_MAX, szLogin);
        return;
    }
    struct passwd stPwd = {};
    struct passwd* pPwd = nullptr;
    char szBuf[1024];
    if (getpwuid_r(geteuid(), &stPwd, szBuf, sizeof(szBuf), &pPwd) == 0 && pPwd != nullptr) {
        CopyCut(szOut, NY_PROCESS_USER_MAX, pPwd->pw_name);
    }
}

int MonthNumber(const char* szMonth) {
    static const char* const s_aszMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (int i = 0; i < 12; ++i) {
        if (strcmp(szMonth, s_aszMonths[i]) == 0) {
            return i + 1;
        }
    }
    return 0;
}

bool ReadCommandLine(const char* szCommand, char* szLine, size_t cchLine) {
    FILE* pPipe = popen(szCommand, "r");
    if (pPipe == nullptr) {
        return false;
    }
    bool bRead = fgets(szLine, static_cast<int>(cchLine), pPipe) != nullptr;
    pclose(pPipe);
    return bRead;
}

}  // namespace

uint32_t GetProcessInfo(BlkProcessInfoTag* pInfo) {
    if (pInfo == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    memset(pInfo, 0, sizeof(*pInfo));
    pInfo->u4Pid = static_cast<uint32_t>(getpid());
    ExeName(pInfo->szExeName);
    UserName(pInfo->szUserName);
    strcpy(pInfo->szAddress, "0.0.0.0");
    return NY_OK;
}

uint32_t ParseProcessStartTime(const char* szLine, char* szTime, uint32_t cchTime) {
    if (szLine == nullptr || szTime == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (cchTime < NY_PROCESS_START_TIME_SIZE) {
        return NY_ERR_BUFFER_TOO_SMALL;
    }
    // "Mon#Jan#15#103045#2024": week day, month, day, time of day, year.
    char szWeekDay[8] = {};
    char szMonth[8] = {};
    unsigned uDay = 0;
    unsigned uClock = 0;
    unsigned uYear = 0;
    if (sscanf(szLine, "%7[^#]#%7[^#]#%u#%u#%u", szWeekDay, szMonth, &uDay, &uClock, &uYear) != 5 ||
        MonthNumber(szMonth) == 0 || uDay < 1 || uDay > 31 || uClock > 235959 || uYear > 9999) {
        return NY_ERR_NOT_FOUND;
    }
    snprintf(szTime, cchTime, "%04u%02d%02u%06u", uYear, MonthNumber(szMonth), uDay, uClock);
    return NY_OK;
}

uint32_t GetProcessStartTime(uint32_t u4Pid, char* szTime, uint32_t cchTime) {
    if (szTime == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (cchTime < NY_PROCESS_START_TIME_SIZE) {
        return NY_ERR_BUFFER_TOO_SMALL;
    }
    szTime[0] = '\0';
    char szCommand[128];
    snprintf(szCommand, sizeof(szCommand), NY_START_TIME_COMMAND, static_cast<int>(u4Pid));
    char szLine[128] = {};
    if (!ReadCommandLine(szCommand, szLine, sizeof(szLine))) {
        return NY_ERR_NOT_FOUND;
    }
    return ParseProcessStartTime(szLine, szTime, cchTime);
}
