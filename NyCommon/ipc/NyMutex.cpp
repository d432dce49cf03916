#include "ipc/NyMutex.h"

#include "ipc/NyUnixMutex.h"
#include "runtime/NyResult.h"

uint32_t NyMutexCreate(const char* szName, NY_MUTEX_HANDLE* phMutex) {
    return NyMutexCreateEx(szName, nullptr, phMutex);
}

uint32_t NyMutexCreateEx(const char* szName, EnBool* penCreated, NY_MUTEX_HANDLE* phMutex) {
    return UnixMtxCreate(szName, penCreated, phMutex);
}

uint32_t NyMutexCreate2(uint32_t u4Global, const char* szName, EnBool* penCreated,
                        NY_MUTEX_HANDLE* phMutex) {
    return u4Global != 0 ? NY_ERR_GLOBAL_REFUSED : NyMutexCreateEx(szName, penCreated, phMutex);
}

uint32_t NyMutexOpen(const char* szName, NY_MUTEX_HANDLE* phMutex) {
    return UnixMtxOpen(szName, phMutex);
}

uint32_t NyMutexOpen2(uint32_t u4Global, const char* szName, NY_MUTEX_HANDLE* phMutex) {
    return u4Global != 0 ? NY_ERR_GLOBAL_REFUSED : NyMutexOpen(szName, phMutex);
}

uint32_t NyMutexTryWait(NY_MUTEX_HANDLE hMutex) {
    return UnixMtxTryWait(hMutex);
}

uint32_t NyMutexWait(NY_MUTEX_HANDLE hMutex, uint32_t u4TimeoutMs) {
    return UnixMtxWait(hMutex, u4TimeoutMs);
}

uint32_t NyMutexRelease(NY_MUTEX_HANDLE hMutex) {
    return UnixMtxRelease(hMutex);
}

uint32_t NyMutexDestroy(NY_MUTEX_HANDLE hMutex) {
    return UnixMtxDestroy(hMutex);
}
