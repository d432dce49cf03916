// The shared-memory back end of the logger: the per-process attachment to the machine-wide
// log queue that a separate viewer reads.
#pragma once

#include "log/NyLogRecord.h"

class CNyShmLogger {
public:
    CNyShmLogger();
    virtual ~CNyShmLogger();
    CNyShmLogger(const CNyShmLogger&) = delete;
    CNyShmLogger& operator=(const CNyShmLogger&) = delete;

    // True when attached (as a producer, or as a listening consumer when bListen).
    bool Connect(bool bListen);
    // True when it was attached.
    bool Disconnect();
    bool IsConnect() const;
    // True when the record was queued.
    bool SetLogItem(const tagBlkLogItem& blkItem);
};
