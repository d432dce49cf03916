#include "log/NyLogTime.h"

#include <sys/time.h>

uint64_t NyLogTimeNow() {
    struct timeval tv = {};
    gettimeofday(&tv, nullptr);
    return NyLogTimeFromUnix(static_cast<uint64_t>(tv.tv_sec), static_cast<uint64_t>(tv.tv_usec));
}
