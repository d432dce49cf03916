#include "ipc/NyRecMutex.h"

#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>

#include "ipc/NyIpcHandle.h"
#include "ipc/NyIpcResult.h"
#include "runtime/NyResult.h"

namespace {

bool InitRecursive(pthread_mutex_t* pMutex) {
    pthread_mutexattr_t stAttr;
    if (pthread_mutexattr_init(&stAttr) != 0) {
        return false;
    }
    bool bOk = pthread_mutexattr_settype(&stAttr, PTHREAD_MUTEX_RECURSIVE) == 0 &&
               pthread_mutex_init(pMutex, &stAttr) == 0;
    pthread_mutexattr_destroy(&stAttr);
    return bOk;
}

struct timespec DeadlineAfter(uint32_t u4TimeoutMs) {
    struct timeval stNow = {};
    gettimeofday(&stNow, nullptr);
    struct timespec stDeadline = {};
    stDeadline.tv_sec = stNow.tv_sec + u4TimeoutMs / 1000;
    long lNsec = stNow.tv_usec * 1000L + static_cast<long>(u4TimeoutMs % 1000) * 1000000L;
    stDeadline.tv_sec += lNsec / 1000000000L;
    stDeadline.tv_nsec = lNsec % 1000000000L;
    return stDeadline;
}

uint32_t ResultOf(int iError) {
    if (iError == 0) {
        return NY_OK;
    }
    return (iError == ETIMEDOUT || iError == EBUSY) ? NY_ERR_TIMEOUT : NY_ERR_LOCK_FAILED;
}

}  // namespace

pthread_mutex_t* NyRecMutexCreate() {
    pthread_mutex_t* pMutex = static_cast<pthread_mutex_t*>(malloc(sizeof(pthread_mutex_t)));
    if (pMutex != nullptr && !InitRecursive(pMutex)) {
        free(pMutex);
        pMutex = nullptr;
    }
    return pMutex;
}

void NyRecMutexDestroy(pthread_mutex_t* pMutex) {
    if (pMutex != nullptr) {
        pthread_mutex_destroy(pMutex);
        free(pMutex);
    }
}

uint32_t NyRecMutexLock(pthread_mutex_t* pMutex, uint32_t u4TimeoutMs) {
    if (u4TimeoutMs == NY_WAIT_INFINITE) {
        return ResultOf(pthread_mutex_lock(pMutex));
    }
    if (u4TimeoutMs > 0) {
        struct timespec stDeadline = DeadlineAfter(u4TimeoutMs);
        return ResultOf(pthread_mutex_timedlock(pMutex, &stDeadline));
    }
    int iError = pthread_mutex_trylock(pMutex);
    if (iError == EBUSY) {
        usleep(1000);
    }
    return ResultOf(iError);
}

uint32_t NyRecMutexUnlock(pthread_mutex_t* pMutex) {
    return pthread_mutex_unlock(pMutex) == 0 ? NY_OK : NY_ERR_INVALID_ARGUMENT;
}

void NyRecMutexReinit(pthread_mutex_t* pMutex) {
    InitRecursive(pMutex);
}
