#include "log/CNyShmLogger.h"

// Placeholder until the queue exists: the back end cannot start, so the logger stays off.
CNyShmLogger::CNyShmLogger() = default;
CNyShmLogger::~CNyShmLogger() = default;

bool CNyShmLogger::Connect(bool /*bListen*/) {
    return false;
}

bool CNyShmLogger::Disconnect() {
    return false;
}

bool CNyShmLogger::IsConnect() const {
    return false;
}

bool CNyShmLogger::SetLogItem(const tagBlkLogItem& /*blkItem*/) {
    return false;
}
