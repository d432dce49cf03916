#include "os/NyOs.h"

#include <errno.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

uint32_t NyOsSleep(uint32_t u4Ms) {
    usleep(static_cast<useconds_t>(u4Ms) * 1000);
    return 0;
}

uint64_t NyOsGetTickCount64() {
    struct timespec ts = {};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<uint64_t>(ts.tv_sec) * 1000 + static_cast<uint64_t>(ts.tv_nsec) / 1000000;
}

uint32_t NyOsGetTickCount() {
    return static_cast<uint32_t>(NyOsGetTickCount64());
}

uint32_t NyOsGetCurrentPid() {
    return static_cast<uint32_t>(getpid());
}

uint32_t NyOsGetCurrentTid() {
    return static_cast<uint32_t>(syscall(SYS_gettid));
}

uint32_t NyOsGetLastError() {
    return static_cast<uint32_t>(errno);
}
