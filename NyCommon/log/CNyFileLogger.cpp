#include "log/CNyFileLogger.h"

bool CNyFileLogger::Init(const char* /*szPath*/, unsigned int /*u4MaxSize*/) {
    return false;
}

bool CNyFileLogger::Deinit() {
    return true;
}

bool CNyFileLogger::Push(const tagBlkLogItem& /*blkItem*/) {
    return false;
}
