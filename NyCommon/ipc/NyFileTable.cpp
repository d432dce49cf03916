#include "ipc/NyFileTable.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "ipc/NyFileRef.h"
#include "ipc/NyIpcHandle.h"
#include "ipc/NyRecMutex.h"

namespace {

void LockTable(BlkFileTableTag* pTable) {
    NyRecMutexLock(&pTable->mtxTable, NY_WAIT_INFINITE);
}

void UnlockTable(BlkFileTableTag* pTable) {
    NyRecMutexUnlock(&pTable->mtxTable);
}

BlkFileTransTag* FindTrans(BlkFileTableTag* pTable, const char* szPath) {
    for (BlkFileTransTag* p = pTable->pTrans; p != nullptr; p = p->pNext) {
        if (strcmp(p->szPath, szPath) == 0) {
            return p;
        }
    }
    return nullptr;
}

void FreeTrans(BlkFileTransTag* pTrans) {
    NyRecMutexDestroy(pTrans->pMutex);
    free(pTrans->szPath);
    free(pTrans);
}

BlkFileTransTag* NewTrans(const char* szPath) {
    BlkFileTransTag* pTrans = static_cast<BlkFileTransTag*>(calloc(1, sizeof(BlkFileTransTag)));
    if (pTrans == nullptr) {
        return nullptr;
    }
    pTrans->szPath = strdup(szPath);
    pTrans->pMutex = NyRecMutexCreate();
    if (pTrans->szPath == nullptr || pTrans->pMutex == nullptr) {
        FreeTrans(pTrans);
        return nullptr;
    }
    return pTrans;
}

void UnlinkTrans(BlkFileTableTag* pTable, BlkFileTransTag* pTrans) {
    for (BlkFileTransTag** pp = &pTable->pTrans; *pp != nullptr; pp = &(*pp)->pNext) {
        if (*pp == pTrans) {
            *pp = pTrans->pNext;
            return;
        }
    }
}

bool ListHas(BlkFileRefTag* pHead, const BlkFileRefTag* pRef) {
    for (BlkFileRefTag* p = pHead; p != nullptr; p = p->pNext) {
        if (p == pRef) {
            return true;
        }
    }
    return false;
}

bool ListRemove(BlkFileRefTag** ppHead, BlkFileRefTag* pRef) {
    for (BlkFileRefTag** pp = ppHead; *pp != nullptr; pp = &(*pp)->pNext) {
        if (*pp == pRef) {
            *pp = pRef->pNext;
            return true;
        }
    }
    return false;
}

}  // namespace

BlkFileTableTag* FileTableCreate() {
    BlkFileTableTag* pTable = static_cast<BlkFileTableTag*>(calloc(1, sizeof(BlkFileTableTag)));
    if (pTable == nullptr) {
        return nullptr;
    }
    NyRecMutexReinit(&pTable->mtxTable);
    pTable->u4Tag = NY_FILE_TABLE_TAG;
    pTable->u4Pid = static_cast<uint32_t>(getpid());
    pTable->pSelf = pTable;
    return pTable;
}

bool FileTableDestroy(BlkFileTableTag* pTable) {
    LockTable(pTable);
    bool bEmpty =
        pTable->pRefs == nullptr && pTable->pTrans == nullptr && pTable->pOrphans == nullptr;
    UnlockTable(pTable);
    if (!bEmpty) {
        return false;
    }
    pthread_mutex_destroy(&pTable->mtxTable);
    memset(pTable, 0, sizeof(*pTable));
    free(pTable);
    return true;
}

BlkFileTransTag* FileTransBegin(BlkFileTableTag* pTable, const char* szPath) {
    LockTable(pTable);
    BlkFileTransTag* pTrans = FindTrans(pTable, szPath);
    if (pTrans == nullptr) {
        pTrans = NewTrans(szPath);
        if (pTrans != nullptr) {
            pTrans->pNext = pTable->pTrans;
            pTable->pTrans = pTrans;
        }
    }
    if (pTrans != nullptr) {
        ++pTrans->u4Users;
    }
    UnlockTable(pTable);
    if (pTrans != nullptr) {
        NyRecMutexLock(pTrans->pMutex, NY_WAIT_INFINITE);
    }
    return pTrans;
}

void FileTransEnd(BlkFileTableTag* pTable, BlkFileTransTag* pTrans) {
    LockTable(pTable);
    NyRecMutexUnlock(pTrans->pMutex);
    if (--pTrans->u4Users == 0) {
        UnlinkTrans(pTable, pTrans);
        FreeTrans(pTrans);
    }
    UnlockTable(pTable);
}

BlkFileRefTag* FileTableFind(BlkFileTableTag* pTable, const char* szPath) {
    LockTable(pTable);
    BlkFileRefTag* pFound = nullptr;
    for (BlkFileRefTag* p = pTable->pRefs; p != nullptr && pFound == nullptr; p = p->pNext) {
        if (strcmp(p->szPath, szPath) == 0) {
            pFound = p;
        }
    }
    UnlockTable(pTable);
    return pFound;
}

bool FileTableContains(BlkFileTableTag* pTable, const BlkFileRefTag* pRef) {
    LockTable(pTable);
    bool bFound = ListHas(pTable->pRefs, pRef);
    UnlockTable(pTable);
    return bFound;
}

bool FileTableDropOrphan(BlkFileTableTag* pTable, BlkFileRefTag* pRef, bool* pbLast) {
    LockTable(pTable);
    bool bFound = ListHas(pTable->pOrphans, pRef);
    *pbLast = bFound && --pRef->u4RefCount == 0;
    if (*pbLast) {
        ListRemove(&pTable->pOrphans, pRef);
    }
    UnlockTable(pTable);
    return bFound;
}

void FileTableAdd(BlkFileTableTag* pTable, BlkFileRefTag* pRef) {
    LockTable(pTable);
    pRef->pNext = pTable->pRefs;
    pTable->pRefs = pRef;
    UnlockTable(pTable);
}

void FileTableRemove(BlkFileTableTag* pTable, BlkFileRefTag* pRef) {
    LockTable(pTable);
    ListRemove(&pTable->pRefs, pRef);
    UnlockTable(pTable);
}

void FileTableForkPrepare(BlkFileTableTag* pTable) {
    LockTable(pTable);
}

void FileTableForkParent(BlkFileTableTag* pTable) {
    UnlockTable(pTable);
}

void FileTableForkChild(BlkFileTableTag* pTable) {
    NyRecMutexReinit(&pTable->mtxTable);
    pTable->u4Pid = static_cast<uint32_t>(getpid());
    // Transactions in flight belonged to threads that do not exist here; their records are
    // dropped (not freed: their mutexes may be in any state).
    pTable->pTrans = nullptr;
    while (BlkFileRefTag* pRef = pTable->pRefs) {
        pTable->pRefs = pRef->pNext;
        NyRecMutexReinit(pRef->pMutex);
        pRef->u4LockDepth = 0;
        pRef->pNext = pTable->pOrphans;
        pTable->pOrphans = pRef;
    }
}
