#include "ipc/NyShareMem.h"

#include "ipc/NyUnixShm.h"
#include "runtime/NyResult.h"

uint32_t NyShareMemOpen(const char* szName, uint32_t u4Size, NY_SHM_HANDLE* phShm) {
    return UnixShmOpen(szName, u4Size, phShm, nullptr);
}

uint32_t NyShareMemCreate2(void* /*pvSecurity*/, uint32_t u4Global, const char* szName,
                           uint32_t u4Size, NY_SHM_HANDLE* phShm) {
    return u4Global != 0 ? NY_ERR_GLOBAL_REFUSED : NyShareMemOpen(szName, u4Size, phShm);
}

uint32_t NyShareMemOpen2(uint32_t u4Global, const char* szName, NY_SHM_HANDLE* phShm) {
    return NyShareMemCreate2(nullptr, u4Global, szName, 0, phShm);
}

uint32_t NyShareMemLock(NY_SHM_HANDLE hShm) {
    return UnixShmLock(hShm, NY_WAIT_INFINITE);
}

uint32_t NyShareMemLockTimeout(NY_SHM_HANDLE hShm, uint32_t u4TimeoutMs) {
    return UnixShmLock(hShm, u4TimeoutMs);
}

uint32_t NyShareMemUnlock(NY_SHM_HANDLE hShm) {
    return UnixShmUnlock(hShm);
}

uint32_t NyShareMemRead(NY_SHM_HANDLE hShm, uint32_t u4Offset, void* pvBuffer, uint32_t u4Length) {
    return UnixShmRead(hShm, u4Offset, pvBuffer, u4Length);
}

uint32_t NyShareMemWrite(NY_SHM_HANDLE hShm, uint32_t u4Offset, const void* pvBuffer,
                         uint32_t u4Length) {
    return UnixShmWrite(hShm, u4Offset, pvBuffer, u4Length);
}

uint32_t NyShareMemGetSize(NY_SHM_HANDLE hShm, uint32_t* pu4Size) {
    return UnixShmGetSize(hShm, pu4Size);
}

uint32_t NyShareMemGetData(NY_SHM_HANDLE hShm, void** ppvData) {
    return UnixShmGetData(hShm, ppvData);
}

uint32_t NyShareMemClose(NY_SHM_HANDLE hShm) {
    return UnixShmClose(hShm);
}
