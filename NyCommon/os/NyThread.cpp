#include "os/NyThread.h"

#include <errno.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <new>

#include "log/NyLog.h"
#include "os/NyOs.h"
#include "runtime/NyResult.h"

// The handle record: owned by the caller from NyThreadBegin until NyThreadEnd.
struct BlkNyThreadTag {
    pthread_t hThread;
    uint32_t u4Reserved;
    std::atomic<int32_t> i4State;
};

namespace {

// The scheduling attributes record of sched_setattr (no C library wrapper everywhere); for the
// normal policy, sched_runtime is the thread's time slice in nanoseconds.
struct BlkSchedAttrTag {
    uint32_t u4Size;
    uint32_t u4Policy;
    uint64_t u8Flags;
    int32_t i4Nice;
    uint32_t u4Priority;
    uint64_t u8Runtime;
    uint64_t u8Deadline;
    uint64_t u8Period;
};

constexpr uint32_t NY_THREAD_END_CHECKS = 30;
constexpr uint32_t NY_THREAD_END_POLL_MS = 100;

bool NyThreadIsEmpty(NY_THREAD_HANDLE hThread) {
    return hThread == nullptr || hThread->hThread == 0;
}

// True when the thread has ended; it is then already joined.
bool NyThreadReapIfEnded(NY_THREAD_HANDLE hThread) {
    return pthread_tryjoin_np(hThread->hThread, nullptr) == 0;
}

void NyThreadFinish(NY_THREAD_HANDLE hThread) {
    hThread->i4State = NY_THREAD_ENDED;
    NyThreadCloseHandle(hThread);
}

}  // namespace

uint32_t NyThreadBegin(PFN_NY_THREAD_ENTRY pfnEntry, void* pvArg, NY_THREAD_HANDLE* phThread) {
    if (pfnEntry == nullptr || phThread == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    NY_THREAD_HANDLE hThread = new (std::nothrow) BlkNyThreadTag();
    if (hThread == nullptr) {
        return NY_ERR_OUT_OF_MEMORY;
    }
    hThread->i4State = NY_THREAD_STARTED;
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setscope(&attr, PTHREAD_SCOPE_SYSTEM);
    pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_JOINABLE);
    // Deliberate: the caller itself becomes asynchronously cancellable.
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr);
    pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
    *phThread = hThread;
    int iError = pthread_create(&hThread->hThread, &attr, pfnEntry, pvArg);
    pthread_attr_destroy(&attr);
    if (iError != 0) {
        NY_LOG(LOG_ERROR, "NyThreadBegin call CreateThread error(0x%08x)",
               static_cast<unsigned>(iError));
        delete hThread;
        *phThread = nullptr;
        return NY_ERR_UNEXPECTED;
    }
    return NY_OK;
}

uint32_t NyThreadEnd(NY_THREAD_HANDLE hThread) {
    if (NyThreadIsEmpty(hThread)) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    hThread->i4State = NY_THREAD_EXIT_ASKED;
    for (uint32_t u4Check = 0; u4Check < NY_THREAD_END_CHECKS; ++u4Check) {
        if (NyThreadReapIfEnded(hThread)) {
            NyThreadFinish(hThread);
            return NY_OK;
        }
        NyOsSleep(NY_THREAD_END_POLL_MS);
    }
    pthread_cancel(hThread->hThread);
    pthread_join(hThread->hThread, nullptr);
    NyThreadFinish(hThread);
    return NY_OK;
}

bool NyThreadShouldExit(NY_THREAD_HANDLE hThread) {
    pthread_testcancel();
    return hThread != nullptr && hThread->i4State == NY_THREAD_EXIT_ASKED;
}

int32_t NyThreadGetState(NY_THREAD_HANDLE hThread) {
    return NyThreadIsEmpty(hThread) ? NY_THREAD_STARTED : hThread->i4State.load();
}

uint32_t NyThreadSetState(NY_THREAD_HANDLE hThread, int32_t i4State) {
    if (hThread == nullptr || i4State < NY_THREAD_RUNNING || i4State > NY_THREAD_ENDED) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    hThread->i4State = i4State;
    return NY_OK;
}

void NyThreadCloseHandle(NY_THREAD_HANDLE hThread) {
    if (hThread == nullptr) {
        return;
    }
    hThread->hThread = 0;
    hThread->u4Reserved = 0;
    hThread->i4State = NY_THREAD_STARTED;
    delete hThread;
}

bool NyThreadPreferShortSlice(uint32_t u4SliceUs) {
#ifdef SYS_sched_setattr
    BlkSchedAttrTag blkAttr = {};
    blkAttr.u4Size = sizeof(blkAttr);
    blkAttr.u4Policy = SCHED_OTHER;
    blkAttr.i4Nice = getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
    blkAttr.u8Runtime = static_cast<uint64_t>(u4SliceUs) * 1000;
    return syscall(SYS_sched_setattr, 0, &blkAttr, 0) == 0;
#else
    (void)u4SliceUs;
    return false;
#endif
}
