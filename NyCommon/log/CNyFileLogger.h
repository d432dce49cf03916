// The file back end of the logger (mode 2). This program never selects it; it cannot start
// here, so choosing mode 2 fails and leaves the logger as it was.
#pragma once

#include "log/NyLogRecord.h"

class CNyFileLogger {
public:
    CNyFileLogger() = default;
    virtual ~CNyFileLogger() = default;
    CNyFileLogger(const CNyFileLogger&) = delete;
    CNyFileLogger& operator=(const CNyFileLogger&) = delete;

    bool Init(const char* szPath, unsigned int u4MaxSize);
    bool Deinit();
    bool Push(const tagBlkLogItem& blkItem);
};
