// The log front end: leveled records stamped with time, pid and tid, handed to the back end.
// Logging never reports failure to its callers; calls before NyLogInit are ignored.
#pragma once

#include <cstdint>

#include "log/NyLogRecord.h"

// The built-in logger configuration: mode 1 (the shared-memory queue), empty path.
extern const tagBlkLogParam cg_blkLogParam;

void NyLogInit();
void NyLogFinal();
uint32_t NyLogSetParam(const tagBlkLogParam* pParam);

void NyLogEx(LOG_TYPE enLevel, const char* szSource, unsigned int u4Line, const char* szFormat, ...)
    __attribute__((format(printf, 4, 5)));
void NyLogExW(LOG_TYPE enLevel, const char* szSource, unsigned int u4Line, const wchar_t* szFormat,
              ...);
// Hex dump in records of at most 2048 bytes each; length 0 still logs one empty record.
void NyLogByteArrayEx(LOG_TYPE enLevel, const char* szSource, unsigned int u4Line,
                      const void* pvData, unsigned int u4Length);

// Test seam: every record built by the front end is also handed to this sink (null removes
// it), whatever the mode. Lets tests see records without any machine-wide object.
typedef void (*PFN_NY_LOG_SINK)(const tagBlkLogItem* pItem, void* pvContext);
void NyLogSetSink(PFN_NY_LOG_SINK pfnSink, void* pvContext);

// Test seam: the parameter NyLogInit applies instead of the built-in one (null restores it),
// so that tests can start the library without attaching to the machine-wide log queue. The
// parameter must outlive the next NyLogInit.
void NyLogSetInitParam(const tagBlkLogParam* pParam);

// The source path passed is the file's path relative to the project root.
#define NY_LOG(level, ...) NyLogEx((level), __FILE__, __LINE__, __VA_ARGS__)
#define NY_LOG_RESULT(u4Result) NY_LOG(LOG_INFO, "u4Result = %08X", (unsigned)(u4Result))
