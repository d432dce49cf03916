// A record for the viewer's tests: pid 4321, thread 4322, line 77, logged at
// 2026-11-23 08:36:18.123456 UTC.
#pragma once

#include "log/NyLogRecord.h"
#include "log/NyLogTime.h"

constexpr uint64_t NY_LOG_VIEW_TEST_STAMP = NyLogTimeFromUnix(1795422978ULL, 123456ULL);

tagBlkLogItem NyLogViewTestItem(uint32_t u4Level, const char* szSource, const char* szMessage);
