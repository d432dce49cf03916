#include "ipc/NyUnixMutex.h"

#include <cstdlib>
#include <cstring>

#include "ipc/NyFileMutex.h"
#include "ipc/NyFileRef.h"
#include "ipc/NyIpcResult.h"
#include "ipc/NyRecMutex.h"
#include "log/NyLog.h"
#include "runtime/NyResult.h"

namespace {

constexpr uint32_t NY_MUTEX_FILE_LENGTH = 3;  // room for the three lock bytes

struct BlkMutexTag {
    uint32_t u4Tag;
    uint32_t u4Created;
    uint32_t u4Nameless;
    pthread_mutex_t* pMutex;  // nameless kind
    BlkFileRefTag* pRef;      // named kind
    BlkFileMutexOwnerTag stOwner;
};

bool IsNameless(const char* szName) {
    return szName == nullptr || szName[0] == '\0';
}

uint32_t CheckHandle(NY_MUTEX_HANDLE hMutex, BlkMutexTag** ppMutex) {
    *ppMutex = static_cast<BlkMutexTag*>(hMutex);
    return NyIpcCheckHandle(hMutex, NY_MUTEX_TAG);
}

BlkMutexTag* NewRecord() {
    BlkMutexTag* pMutex = static_cast<BlkMutexTag*>(calloc(1, sizeof(BlkMutexTag)));
    if (pMutex != nullptr) {
        pMutex->u4Tag = NY_MUTEX_TAG;
    }
    return pMutex;
}

void FreeRecord(BlkMutexTag* pMutex) {
    memset(pMutex, 0, sizeof(*pMutex));
    free(pMutex);
}

uint32_t CreateNameless(BlkMutexTag* pMutex) {
    pMutex->u4Nameless = 1;
    pMutex->u4Created = 1;
    pMutex->pMutex = NyRecMutexCreate();
    return pMutex->pMutex != nullptr ? NY_OK : NY_ERR_OUT_OF_MEMORY;
}

// u4Length 3 creates or joins, 0 opens a mutex that a live process holds.
uint32_t OpenNamed(BlkMutexTag* pMutex, const char* szName, uint32_t u4Length) {
    char szPath[NY_IPC_PATH_SIZE];
    if (!FileName2Path(szName, NY_FILE_KIND_MUTEX, szPath, sizeof(szPath))) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    pMutex->pRef = FileOpen(szPath, u4Length, false, &pMutex->u4Created);
    if (pMutex->pRef == nullptr) {
        return u4Length == 0 ? NY_ERR_OBJECT_ABSENT : NY_ERR_CREATE_FAILED;
    }
    return NY_OK;
}

uint32_t MakeMutex(const char* szName, uint32_t u4Length, EnBool* penCreated,
                   NY_MUTEX_HANDLE* phMutex) {
    if (phMutex == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    BlkMutexTag* pMutex = NewRecord();
    if (pMutex == nullptr) {
        return NY_ERR_OUT_OF_MEMORY;
    }
    uint32_t u4Result =
        IsNameless(szName) ? CreateNameless(pMutex) : OpenNamed(pMutex, szName, u4Length);
    if (u4Result != NY_OK) {
        FreeRecord(pMutex);
        return u4Result;
    }
    if (penCreated != nullptr) {
        *penCreated = pMutex->u4Created != 0 ? NY_TRUE : NY_FALSE;
    }
    *phMutex = pMutex;
    return NY_OK;
}

}  // namespace

uint32_t UnixMtxCreate(const char* szName, EnBool* penCreated, NY_MUTEX_HANDLE* phMutex) {
    return MakeMutex(szName, NY_MUTEX_FILE_LENGTH, penCreated, phMutex);
}

uint32_t UnixMtxOpen(const char* szName, NY_MUTEX_HANDLE* phMutex) {
    if (IsNameless(szName)) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    return MakeMutex(szName, 0, nullptr, phMutex);
}

uint32_t UnixMtxWait(NY_MUTEX_HANDLE hMutex, uint32_t u4TimeoutMs) {
    BlkMutexTag* pMutex = nullptr;
    uint32_t u4Result = CheckHandle(hMutex, &pMutex);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    if (pMutex->u4Nameless != 0) {
        return NyRecMutexLock(pMutex->pMutex, u4TimeoutMs);
    }
    return FileMutexWait(pMutex->pRef, &pMutex->stOwner, u4TimeoutMs);
}

uint32_t UnixMtxTryWait(NY_MUTEX_HANDLE hMutex) {
    BlkMutexTag* pMutex = nullptr;
    uint32_t u4Result = CheckHandle(hMutex, &pMutex);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    if (pMutex->u4Nameless != 0) {
        return NyRecMutexLock(pMutex->pMutex, 0);
    }
    return FileMutexTryWait(pMutex->pRef, &pMutex->stOwner);
}

uint32_t UnixMtxRelease(NY_MUTEX_HANDLE hMutex) {
    BlkMutexTag* pMutex = nullptr;
    uint32_t u4Result = CheckHandle(hMutex, &pMutex);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    if (pMutex->u4Nameless != 0) {
        return NyRecMutexUnlock(pMutex->pMutex);
    }
    return FileMutexRelease(pMutex->pRef, &pMutex->stOwner);
}

uint32_t UnixMtxDestroy(NY_MUTEX_HANDLE hMutex) {
    BlkMutexTag* pMutex = nullptr;
    uint32_t u4Result = CheckHandle(hMutex, &pMutex);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    if (pMutex->u4Nameless != 0) {
        NyRecMutexDestroy(pMutex->pMutex);
    } else {
        // Held by the caller still: let go first, so other handles of the file are not blocked.
        FileMutexReleaseAll(pMutex->pRef, &pMutex->stOwner);
        u4Result = FileClose(pMutex->pRef);
        if (u4Result != NY_OK) {
            NY_LOG_RESULT(u4Result);
            return u4Result;
        }
    }
    FreeRecord(pMutex);
    return NY_OK;
}
