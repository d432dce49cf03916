#include "ipc/NyFileRef.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "ipc/NyFileLock.h"
#include "ipc/NyFileTable.h"
#include "ipc/NyIpcAnchor.h"
#include "ipc/NyRecMutex.h"
#include "runtime/NyResult.h"

namespace {

constexpr uint32_t NY_FILE_ATTEMPTS = 10;
constexpr useconds_t NY_FILE_RETRY_US = 10000;

// What a successful create or join hands back.
struct BlkFileOpenedTag {
    int iFd;
    uint32_t u4Length;
    uint32_t u4Created;
};

enum EnJoinResult { JOIN_OK, JOIN_ABSENT, JOIN_UNUSED, JOIN_RETRY, JOIN_FAILED };

bool SameFile(const char* szPath, int iFd) {
    struct stat stPath = {};
    struct stat stFd = {};
    return stat(szPath, &stPath) == 0 && fstat(iFd, &stFd) == 0 && stPath.st_dev == stFd.st_dev &&
           stPath.st_ino == stFd.st_ino;
}

bool FileLength(int iFd, uint32_t* pu4Length) {
    struct stat st = {};
    if (fstat(iFd, &st) != 0 || st.st_size < 0 || st.st_size > 0xFFFFFFFFll) {
        return false;
    }
    *pu4Length = static_cast<uint32_t>(st.st_size);
    return true;
}

bool ZeroFill(int iFd, uint32_t u4Length) {
    return ftruncate(iFd, 0) == 0 && ftruncate(iFd, u4Length) == 0;
}

// One attempt to join an existing file; on JOIN_OK the caller owns the descriptor, which holds
// the sync lock (byte 0) still.
EnJoinResult JoinOnce(const char* szPath, bool bInUseRequired, bool bZeroFill,
                      BlkFileOpenedTag* pOut) {
    int iFd = open(szPath, O_RDWR | O_CLOEXEC);
    if (iFd < 0) {
        return errno == ENOENT ? JOIN_ABSENT : JOIN_FAILED;
    }
    fchmod(iFd, 0666);
    EnJoinResult enResult = JOIN_OK;
    pOut->u4Created = 0;
    if (FileByteLock(iFd, NY_FILE_SYNC_BYTE, F_WRLCK) != NY_OK) {
        enResult = JOIN_FAILED;
    } else if (!SameFile(szPath, iFd)) {
        enResult = JOIN_RETRY;  // removed (and perhaps made again) while we opened it
    } else if (!FileLength(iFd, &pOut->u4Length)) {
        enResult = JOIN_FAILED;
    } else if (!FileByteUsedByOthers(iFd, NY_FILE_SHARE_BYTE)) {
        // Left behind by dead users (or by a creator that died before sizing it).
        if (bInUseRequired) {
            enResult = JOIN_UNUSED;
        } else {
            pOut->u4Created = 1;
            if (bZeroFill && !ZeroFill(iFd, pOut->u4Length)) {
                enResult = JOIN_FAILED;
            }
        }
    } else if (pOut->u4Length == 0) {
        enResult = JOIN_RETRY;  // its creator is still setting it up
    }
    if (enResult != JOIN_OK) {
        close(iFd);
        return enResult;
    }
    pOut->iFd = iFd;
    return JOIN_OK;
}

bool JoinFile(const char* szPath, bool bInUseRequired, bool bZeroFill, BlkFileOpenedTag* pOut) {
    for (uint32_t i = 0; i < NY_FILE_ATTEMPTS; ++i) {
        EnJoinResult enResult = JoinOnce(szPath, bInUseRequired, bZeroFill, pOut);
        if (enResult == JOIN_OK) {
            if (FileByteLock(pOut->iFd, NY_FILE_SHARE_BYTE, F_RDLCK) == NY_OK &&
                FileByteUnlock(pOut->iFd, NY_FILE_SYNC_BYTE) == NY_OK) {
                return true;
            }
            close(pOut->iFd);
            return false;
        }
        if (enResult != JOIN_RETRY) {
            return false;
        }
        usleep(NY_FILE_RETRY_US);
    }
    return false;
}

enum EnCreateResult { CREATE_OK, CREATE_EXISTS, CREATE_FAILED };

EnCreateResult CreateFile(const char* szPath, uint32_t u4Length, BlkFileOpenedTag* pOut) {
    int iFd = open(szPath, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (iFd < 0) {
        return errno == EEXIST ? CREATE_EXISTS : CREATE_FAILED;
    }
    fchmod(iFd, 0666);
    if (FileByteLock(iFd, NY_FILE_SYNC_BYTE, F_WRLCK) != NY_OK ||
        FileByteLock(iFd, NY_FILE_SHARE_BYTE, F_RDLCK) != NY_OK || ftruncate(iFd, u4Length) != 0 ||
        FileByteUnlock(iFd, NY_FILE_SYNC_BYTE) != NY_OK) {
        unlink(szPath);
        close(iFd);
        return CREATE_FAILED;
    }
    pOut->iFd = iFd;
    pOut->u4Length = u4Length;
    pOut->u4Created = 1;
    return CREATE_OK;
}

bool Extend(int iFd, uint32_t* pu4Length, uint32_t u4Wanted) {
    if (*pu4Length >= u4Wanted) {
        return true;
    }
    if (ftruncate(iFd, u4Wanted) != 0) {
        return false;
    }
    *pu4Length = u4Wanted;
    return true;
}

bool CreateOrJoin(const char* szPath, uint32_t u4Length, bool bZeroFill, BlkFileOpenedTag* pOut) {
    for (uint32_t i = 0; i < NY_FILE_ATTEMPTS; ++i) {
        EnCreateResult enResult = CreateFile(szPath, u4Length, pOut);
        if (enResult != CREATE_EXISTS) {
            return enResult == CREATE_OK;
        }
        if (JoinFile(szPath, false, bZeroFill, pOut)) {
            if (Extend(pOut->iFd, &pOut->u4Length, u4Length)) {
                return true;
            }
            close(pOut->iFd);
            return false;
        }
        usleep(NY_FILE_RETRY_US);
    }
    return false;
}

BlkFileRefTag* NewRef(const char* szPath, const BlkFileOpenedTag& stOpened) {
    BlkFileRefTag* pRef = static_cast<BlkFileRefTag*>(calloc(1, sizeof(BlkFileRefTag)));
    if (pRef == nullptr) {
        return nullptr;
    }
    pRef->pMutex = NyRecMutexCreate();
    if (pRef->pMutex == nullptr) {
        free(pRef);
        return nullptr;
    }
    strncpy(pRef->szPath, szPath, sizeof(pRef->szPath) - 1);
    pRef->iFd = stOpened.iFd;
    pRef->u4Length = stOpened.u4Length;
    pRef->u4RefCount = 1;
    return pRef;
}

void FreeRef(BlkFileRefTag* pRef) {
    NyRecMutexDestroy(pRef->pMutex);
    memset(pRef, 0, sizeof(*pRef));
    free(pRef);
}

// Leaves the file as if this process had never opened it.
void Abandon(const char* szPath, const BlkFileOpenedTag& stOpened) {
    FileByteLock(stOpened.iFd, NY_FILE_SYNC_BYTE, F_WRLCK);
    if (!FileByteUsedByOthers(stOpened.iFd, NY_FILE_SHARE_BYTE)) {
        unlink(szPath);
    }
    close(stOpened.iFd);
}

BlkFileRefTag* OpenNew(BlkFileTableTag* pTable, const char* szPath, uint32_t u4Length,
                       bool bZeroFill, uint32_t* pu4Created) {
    BlkFileOpenedTag stOpened = {-1, 0, 0};
    bool bOpened = u4Length > 0 ? CreateOrJoin(szPath, u4Length, bZeroFill, &stOpened)
                                : JoinFile(szPath, true, bZeroFill, &stOpened);
    if (!bOpened) {
        return nullptr;
    }
    BlkFileRefTag* pRef = NewRef(szPath, stOpened);
    if (pRef == nullptr) {
        Abandon(szPath, stOpened);
        return nullptr;
    }
    FileTableAdd(pTable, pRef);
    *pu4Created = stOpened.u4Created;
    return pRef;
}

BlkFileRefTag* OpenExisting(BlkFileRefTag* pRef, uint32_t u4Length) {
    if (!Extend(pRef->iFd, &pRef->u4Length, u4Length)) {
        return nullptr;
    }
    ++pRef->u4RefCount;
    return pRef;
}

uint32_t CloseLast(BlkFileTableTag* pTable, BlkFileRefTag* pRef) {
    uint32_t u4Result = FileByteLock(pRef->iFd, NY_FILE_SYNC_BYTE, F_WRLCK);
    if (u4Result == NY_OK && !FileByteUsedByOthers(pRef->iFd, NY_FILE_SHARE_BYTE)) {
        unlink(pRef->szPath);
    }
    close(pRef->iFd);  // drops every lock this process holds on the file
    FileTableRemove(pTable, pRef);
    FreeRef(pRef);
    return u4Result;
}

}  // namespace

BlkFileRefTag* FileOpen(const char* szPath, uint32_t u4Length, bool bZeroFill,
                        uint32_t* pu4Created) {
    uint32_t u4Created = 0;
    BlkFileTableTag* pTable = UnixIpcFileTable();
    if (pTable == nullptr || szPath == nullptr || szPath[0] == '\0' ||
        strlen(szPath) >= NY_IPC_PATH_SIZE) {
        return nullptr;
    }
    BlkFileTransTag* pTrans = FileTransBegin(pTable, szPath);
    if (pTrans == nullptr) {
        return nullptr;
    }
    BlkFileRefTag* pRef = FileTableFind(pTable, szPath);
    pRef = pRef != nullptr ? OpenExisting(pRef, u4Length)
                           : OpenNew(pTable, szPath, u4Length, bZeroFill, &u4Created);
    FileTransEnd(pTable, pTrans);
    if (pRef != nullptr && pu4Created != nullptr) {
        *pu4Created = u4Created;
    }
    return pRef;
}

uint32_t FileClose(BlkFileRefTag* pRef) {
    BlkFileTableTag* pTable = UnixIpcFileTable();
    if (pTable == nullptr || pRef == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    // A reference inherited over fork(): this process never held its share lock, so it only
    // closes its descriptor and never removes the file.
    bool bLast = false;
    if (FileTableDropOrphan(pTable, pRef, &bLast)) {
        if (bLast) {
            close(pRef->iFd);
            FreeRef(pRef);
        }
        return NY_OK;
    }
    if (!FileTableContains(pTable, pRef)) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    char szPath[NY_IPC_PATH_SIZE];
    memcpy(szPath, pRef->szPath, sizeof(szPath));
    BlkFileTransTag* pTrans = FileTransBegin(pTable, szPath);
    if (pTrans == nullptr) {
        return NY_ERR_OUT_OF_MEMORY;
    }
    uint32_t u4Result = NY_OK;
    if (!FileTableContains(pTable, pRef)) {
        u4Result = NY_ERR_INVALID_ARGUMENT;  // closed by another thread meanwhile
    } else if (--pRef->u4RefCount == 0) {
        u4Result = CloseLast(pTable, pRef);
    }
    FileTransEnd(pTable, pTrans);
    return u4Result;
}
