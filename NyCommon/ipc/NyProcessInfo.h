// Facts about the current process and the start time of any process.
#pragma once

#include <cstdint>

constexpr uint32_t NY_PROCESS_EXE_MAX = 32;          // characters of the executable's file name
constexpr uint32_t NY_PROCESS_USER_MAX = 20;         // characters of the login name
constexpr uint32_t NY_PROCESS_START_TIME_SIZE = 15;  // "yyyymmddhhmmss" and a NUL

struct BlkProcessInfoTag {
    uint32_t u4Pid;
    char szExeName[NY_PROCESS_EXE_MAX + 1];
    char szUserName[NY_PROCESS_USER_MAX + 1];
    char szAddress[16];  // always "0.0.0.0"
};

uint32_t GetProcessInfo(BlkProcessInfoTag* pInfo);
// Start time of process u4Pid as "%04d%02d%02d%06d" (year, month, day, hhmmss), taken from ps.
// NY_ERR_BUFFER_TOO_SMALL below 15 bytes; NY_ERR_NOT_FOUND when ps knows no such process.
uint32_t GetProcessStartTime(uint32_t u4Pid, char* szTime, uint32_t cchTime);
// The conversion of one line of that ps pipeline ("Mon#Jan#15#103045#2024") into the text.
uint32_t ParseProcessStartTime(const char* szLine, char* szTime, uint32_t cchTime);
