// Delivery to the test sink registered with NyLogSetSink (see NyLog.h).
#pragma once

#include "log/NyLogRecord.h"

void NyLogSinkDeliver(const tagBlkLogItem& blkItem);
