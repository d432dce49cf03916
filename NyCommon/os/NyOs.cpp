#include "os/NyOs.h"

#include <errno.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

// ms x 1000 microseconds, counted in 64 bits so that long sleeps do not wrap; a signal does
// not cut the sleep short.
uint32_t NyOsSleep(uint32_t u4Ms) {
    uint64_t u8Micro = static_cast<uint64_t>(u4Ms) * 1000;
    struct timespec tsLeft = {static_cast<time_t>(u8Micro / 1000000),
                              static_cast<long>(u8Micro % 1000000) * 1000};
    while (nanosleep(&tsLeft, &tsLeft) != 0 && errno == EINTR) {
    }
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
