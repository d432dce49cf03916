#include "ipc/NyUnixShm.h"

#include <sys/mman.h>

#include <cstdlib>
#include <cstring>

#include "ipc/NyFileMutex.h"
#include "ipc/NyFileRef.h"
#include "ipc/NyIpcResult.h"
#include "log/NyLog.h"
#include "runtime/NyResult.h"

namespace {

struct BlkShmTag {
    uint32_t u4Tag;
    void* pvData;
    BlkFileRefTag* pRef;
    BlkFileMutexOwnerTag stOwner;
    uint32_t u4Size;  // bytes mapped by this handle
};

uint32_t CheckHandle(NY_SHM_HANDLE hShm, BlkShmTag** ppShm) {
    *ppShm = static_cast<BlkShmTag*>(hShm);
    return NyIpcCheckHandle(hShm, NY_SHM_TAG);
}

uint32_t CheckAccess(NY_SHM_HANDLE hShm, uint32_t u4Offset, const void* pvBuffer, uint32_t u4Length,
                     BlkShmTag** ppShm) {
    uint32_t u4Result = CheckHandle(hShm, ppShm);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    if (pvBuffer == nullptr || (*ppShm)->pvData == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (static_cast<uint64_t>(u4Offset) + u4Length > (*ppShm)->u4Size) {
        return NY_ERR_OUT_OF_MEMORY;
    }
    return NY_OK;
}

uint32_t MapRegion(BlkShmTag* pShm) {
    pShm->u4Size = pShm->pRef->u4Length;
    void* pv = mmap(nullptr, pShm->u4Size, PROT_READ | PROT_WRITE, MAP_SHARED, pShm->pRef->iFd, 0);
    if (pv == MAP_FAILED) {
        return NY_ERR_CREATE_FAILED;
    }
    pShm->pvData = pv;
    return NY_OK;
}

uint32_t LockRegion(BlkShmTag* pShm, uint32_t u4TimeoutMs) {
    return FileMutexWait(pShm->pRef, &pShm->stOwner, u4TimeoutMs);
}

uint32_t UnlockRegion(BlkShmTag* pShm) {
    return FileMutexRelease(pShm->pRef, &pShm->stOwner);
}

}  // namespace

uint32_t UnixShmOpen(const char* szName, uint32_t u4Size, NY_SHM_HANDLE* phShm,
                     uint32_t* pu4Created) {
    char szPath[NY_IPC_PATH_SIZE];
    if (phShm == nullptr || !FileName2Path(szName, NY_FILE_KIND_SHM, szPath, sizeof(szPath))) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    BlkShmTag* pShm = static_cast<BlkShmTag*>(calloc(1, sizeof(BlkShmTag)));
    if (pShm == nullptr) {
        return NY_ERR_OUT_OF_MEMORY;
    }
    uint32_t u4Created = 0;
    pShm->pRef = FileOpen(szPath, u4Size, true, &u4Created);
    uint32_t u4Result = NY_OK;
    if (pShm->pRef == nullptr) {
        u4Result = u4Size == 0 ? NY_ERR_OBJECT_ABSENT : NY_ERR_CREATE_FAILED;
    } else if ((u4Result = MapRegion(pShm)) != NY_OK) {
        FileClose(pShm->pRef);
    }
    if (u4Result != NY_OK) {
        free(pShm);
        return u4Result;
    }
    pShm->u4Tag = NY_SHM_TAG;
    *phShm = pShm;
    if (pu4Created != nullptr) {
        *pu4Created = u4Created;
    }
    return NY_OK;
}

uint32_t UnixShmLock(NY_SHM_HANDLE hShm, uint32_t u4TimeoutMs) {
    BlkShmTag* pShm = nullptr;
    uint32_t u4Result = CheckHandle(hShm, &pShm);
    return u4Result != NY_OK ? u4Result : LockRegion(pShm, u4TimeoutMs);
}

uint32_t UnixShmUnlock(NY_SHM_HANDLE hShm) {
    BlkShmTag* pShm = nullptr;
    uint32_t u4Result = CheckHandle(hShm, &pShm);
    return u4Result != NY_OK ? u4Result : UnlockRegion(pShm);
}

uint32_t UnixShmRead(NY_SHM_HANDLE hShm, uint32_t u4Offset, void* pvBuffer, uint32_t u4Length) {
    BlkShmTag* pShm = nullptr;
    uint32_t u4Result = CheckAccess(hShm, u4Offset, pvBuffer, u4Length, &pShm);
    if (u4Result == NY_OK && (u4Result = LockRegion(pShm, NY_WAIT_INFINITE)) == NY_OK) {
        memcpy(pvBuffer, static_cast<const uint8_t*>(pShm->pvData) + u4Offset, u4Length);
        u4Result = UnlockRegion(pShm);
    }
    return u4Result;
}

uint32_t UnixShmWrite(NY_SHM_HANDLE hShm, uint32_t u4Offset, const void* pvBuffer,
                      uint32_t u4Length) {
    BlkShmTag* pShm = nullptr;
    uint32_t u4Result = CheckAccess(hShm, u4Offset, pvBuffer, u4Length, &pShm);
    if (u4Result == NY_OK && (u4Result = LockRegion(pShm, NY_WAIT_INFINITE)) == NY_OK) {
        memcpy(static_cast<uint8_t*>(pShm->pvData) + u4Offset, pvBuffer, u4Length);
        u4Result = UnlockRegion(pShm);
    }
    return u4Result;
}

uint32_t UnixShmGetSize(NY_SHM_HANDLE hShm, uint32_t* pu4Size) {
    BlkShmTag* pShm = nullptr;
    uint32_t u4Result = CheckHandle(hShm, &pShm);
    if (u4Result == NY_OK && pu4Size == nullptr) {
        u4Result = NY_ERR_INVALID_ARGUMENT;
    }
    if (u4Result == NY_OK) {
        *pu4Size = pShm->u4Size;
    }
    return u4Result;
}

uint32_t UnixShmGetData(NY_SHM_HANDLE hShm, void** ppvData) {
    BlkShmTag* pShm = nullptr;
    uint32_t u4Result = CheckHandle(hShm, &pShm);
    if (u4Result == NY_OK && ppvData == nullptr) {
        u4Result = NY_ERR_INVALID_ARGUMENT;
    }
    if (u4Result == NY_OK) {
        *ppvData = pShm->pvData;
    }
    return u4Result;
}

uint32_t UnixShmClose(NY_SHM_HANDLE hShm) {
    BlkShmTag* pShm = nullptr;
    uint32_t u4Result = CheckHandle(hShm, &pShm);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    // A close while the calling thread still holds the region's lock lets it go first.
    FileMutexReleaseAll(pShm->pRef, &pShm->stOwner);
    u4Result = FileClose(pShm->pRef);
    if (u4Result != NY_OK) {
        NY_LOG_RESULT(u4Result);
        return u4Result;
    }
    munmap(pShm->pvData, pShm->u4Size);
    memset(pShm, 0, sizeof(*pShm));
    free(pShm);
    return NY_OK;
}
