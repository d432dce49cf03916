// Recursive pthread mutexes on the heap with the library's time-out rules: NY_WAIT_INFINITE
// blocks, t > 0 waits until a wall-clock deadline t ms ahead, 0 tries once (busy: 1 ms pause).
#pragma once

#include <pthread.h>

#include <cstdint>

// Null when out of memory or the mutex cannot be initialised.
pthread_mutex_t* NyRecMutexCreate();
void NyRecMutexDestroy(pthread_mutex_t* pMutex);
// NY_ERR_TIMEOUT when not had in time; any other failure NY_ERR_LOCK_FAILED.
uint32_t NyRecMutexLock(pthread_mutex_t* pMutex, uint32_t u4TimeoutMs);
// NY_ERR_INVALID_ARGUMENT when the unlock fails (for example, the caller does not hold it).
uint32_t NyRecMutexUnlock(pthread_mutex_t* pMutex);
// Makes a fresh, unlocked mutex in place (a child after fork: no thread holds it any more).
void NyRecMutexReinit(pthread_mutex_t* pMutex);
