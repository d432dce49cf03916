// The process-wide logger: builds records and hands them to the back end chosen by its
// parameter (shared-memory queue, file, or off).
#pragma once

#include <cstdint>

#include "ipc/NyIpcHandle.h"
#include "log/CNyFileLogger.h"
#include "log/CNyShmLogger.h"
#include "log/NyLogRecord.h"

class CNyLogger {
public:
    CNyLogger();
    virtual ~CNyLogger();
    CNyLogger(const CNyLogger&) = delete;
    CNyLogger& operator=(const CNyLogger&) = delete;

    // 0; NY_ERR_INVALID_ARGUMENT when the chosen back end cannot start (the previous parameter
    // stays); the lock's failure code. The current parameter again is a no-op.
    virtual uint32_t SetParam(const tagBlkLogParam& blkParam);
    // Builds the record and dispatches it without taking the lock. 0 when handed on or
    // logging is off, NY_ERR_UNEXPECTED when the back end refused the record.
    virtual uint32_t Log(LOG_TYPE enLevel, const char* szSource, unsigned int u4Line,
                         const char* szMessage);

    uint32_t Lock(bool& bLocked);
    void Unlock(bool& bLocked);

private:
    uint32_t ApplyParam(const tagBlkLogParam& blkParam);

    CNyShmLogger m_shmLogger;
    CNyFileLogger m_fileLogger;
    tagBlkLogParam m_blkParam;
    NY_MUTEX_HANDLE m_hMutex;  // unnamed: serialises SetParam within this process
};
