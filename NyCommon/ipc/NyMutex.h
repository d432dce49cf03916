// Mutexes: named ones are file-backed and exclusive across processes (the kernel frees the lock
// of a process that dies); nameless ones (null or empty name) are in-process only. Both are
// recursive per thread.
#pragma once

#include <cstdint>

#include "ipc/NyIpcHandle.h"
#include "runtime/NyTypes.h"

uint32_t NyMutexCreate(const char* szName, NY_MUTEX_HANDLE* phMutex);
// penCreated (may be null): NY_TRUE when this call created the named mutex.
uint32_t NyMutexCreateEx(const char* szName, EnBool* penCreated, NY_MUTEX_HANDLE* phMutex);
// A non-zero u4Global asks for a machine-global object: NY_ERR_GLOBAL_REFUSED.
uint32_t NyMutexCreate2(uint32_t u4Global, const char* szName, EnBool* penCreated,
                        NY_MUTEX_HANDLE* phMutex);
// Open an existing named mutex that a live process holds open; absent: NY_ERR_OBJECT_ABSENT.
uint32_t NyMutexOpen(const char* szName, NY_MUTEX_HANDLE* phMutex);
uint32_t NyMutexOpen2(uint32_t u4Global, const char* szName, NY_MUTEX_HANDLE* phMutex);

// Lock with a time-out in ms (NY_WAIT_INFINITE forever, 0 tries once); NY_ERR_TIMEOUT when the
// lock could not be had in time.
uint32_t NyMutexWait(NY_MUTEX_HANDLE hMutex, uint32_t u4TimeoutMs);
// One quiet attempt at the lock (no log line for a lock that is taken): NY_ERR_TIMEOUT then.
uint32_t NyMutexTryWait(NY_MUTEX_HANDLE hMutex);
// Unlock one level; a thread that does not own the lock gets NY_ERR_NOT_OWNER.
uint32_t NyMutexRelease(NY_MUTEX_HANDLE hMutex);
// Close the mutex and free the handle; the last user's close removes a named mutex's file.
uint32_t NyMutexDestroy(NY_MUTEX_HANDLE hMutex);
