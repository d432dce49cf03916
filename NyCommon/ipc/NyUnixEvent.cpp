#include "ipc/NyUnixEvent.h"

#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "ipc/NyIpcName.h"
#include "ipc/NyIpcResult.h"
#include "runtime/NyResult.h"

namespace {

constexpr unsigned short NY_SEM_STATE = 0;
constexpr unsigned short NY_SEM_HOLDERS = 1;
constexpr int NY_SEM_MODE = 0666;
constexpr uint32_t NY_SEM_OPEN_ATTEMPTS = 10;
constexpr useconds_t NY_SEM_OPEN_RETRY_US = 100000;
constexpr uint32_t NY_SEM_CREATE_FAILURES = 3;
constexpr useconds_t NY_SEM_CREATE_RETRY_US = 50000;

struct BlkEventTag {
    uint32_t u4Tag;
    int32_t i4SemId;
    uint8_t u1Nameless;
    uint8_t u1Created;
};

union UnSemArg {
    int iVal;
    struct semid_ds* pDs;
};

// SEM_OPEN_UNINITIALISED: the set's creator never finished setting it up (it died half-way).
enum EnSemOpen {
    SEM_OPEN_OK,
    SEM_OPEN_ABSENT,
    SEM_OPEN_STALE,
    SEM_OPEN_UNINITIALISED,
    SEM_OPEN_FAILED
};

bool Vanished(int iError) {
    return iError == EIDRM || iError == EINVAL;
}

uint32_t CheckHandle(NY_EVENT_HANDLE hEvent) {
    return NyIpcCheckHandle(hEvent, NY_EVENT_TAG);
}

int SemSetValue(int iSemId, unsigned short u2Index, int iValue) {
    UnSemArg unArg;
    unArg.iVal = iValue;
    return semctl(iSemId, u2Index, SETVAL, unArg);
}

// Sets the state semaphore to 1 (set) or 0 (reset); a set never accumulates.
uint32_t SetState(NY_EVENT_HANDLE hEvent, int iState) {
    uint32_t u4Result = CheckHandle(hEvent);
    if (u4Result == NY_OK &&
        SemSetValue(static_cast<BlkEventTag*>(hEvent)->i4SemId, NY_SEM_STATE, iState) != 0) {
        u4Result = NY_ERR_SEMAPHORE_FAILED;
    }
    return u4Result;
}

int SemAdjustHolders(int iSemId, short i2Delta) {
    struct sembuf stOp = {NY_SEM_HOLDERS, i2Delta, SEM_UNDO};
    return semop(iSemId, &stOp, 1);
}

// Once the set is initialised: state reset, and (named) one holder, this process.
bool InitialiseSet(int iSemId, bool bNamed) {
    if (SemSetValue(iSemId, NY_SEM_STATE, 0) != 0) {
        return false;
    }
    struct sembuf astOps[2] = {{NY_SEM_STATE, 0, 0}, {NY_SEM_HOLDERS, 1, SEM_UNDO}};
    return semop(iSemId, astOps, bNamed ? 2 : 1) == 0;
}

// One look at an existing set; *pbRetry asks for another look after a pause.
EnSemOpen TryJoin(int iSemId, bool* pbRetry) {
    *pbRetry = false;
    struct semid_ds stDs = {};
    UnSemArg unArg;
    unArg.pDs = &stDs;
    if (semctl(iSemId, 0, IPC_STAT, unArg) != 0) {
        *pbRetry = Vanished(errno);
        return SEM_OPEN_FAILED;
    }
    if (stDs.sem_otime == 0) {
        *pbRetry = true;  // its creator has not finished initialising it
        return SEM_OPEN_UNINITIALISED;
    }
    int iHolders = semctl(iSemId, NY_SEM_HOLDERS, GETVAL);
    if (iHolders < 0) {
        *pbRetry = Vanished(errno);
        return SEM_OPEN_FAILED;
    }
    if (iHolders == 0) {
        return SEM_OPEN_STALE;
    }
    if (SemAdjustHolders(iSemId, 1) != 0) {
        *pbRetry = Vanished(errno);
        return SEM_OPEN_FAILED;
    }
    return SEM_OPEN_OK;
}

EnSemOpen SemOpen(key_t iKey, int* piSemId) {
    EnSemOpen enResult = SEM_OPEN_FAILED;
    for (uint32_t i = 0; i < NY_SEM_OPEN_ATTEMPTS; ++i) {
        if (i > 0) {
            usleep(NY_SEM_OPEN_RETRY_US);
        }
        *piSemId = semget(iKey, 2, 0);
        if (*piSemId < 0) {
            return SEM_OPEN_ABSENT;
        }
        bool bRetry = false;
        enResult = TryJoin(*piSemId, &bRetry);
        if (!bRetry) {
            return enResult;
        }
    }
    return enResult;
}

uint32_t NewRecord(int iSemId, bool bNameless, bool bCreated, NY_EVENT_HANDLE* phEvent) {
    BlkEventTag* pEvent = static_cast<BlkEventTag*>(calloc(1, sizeof(BlkEventTag)));
    if (pEvent == nullptr) {
        return NY_ERR_OUT_OF_MEMORY;
    }
    pEvent->u4Tag = NY_EVENT_TAG;
    pEvent->i4SemId = iSemId;
    pEvent->u1Nameless = bNameless ? 1 : 0;
    pEvent->u1Created = bCreated ? 1 : 0;
    *phEvent = pEvent;
    return NY_OK;
}

uint32_t CreateNameless(EnBool* penCreated, NY_EVENT_HANDLE* phEvent) {
    int iSemId = semget(IPC_PRIVATE, 1, IPC_CREAT | IPC_EXCL | NY_SEM_MODE);
    if (iSemId < 0 || !InitialiseSet(iSemId, false)) {
        if (iSemId >= 0) {
            semctl(iSemId, 0, IPC_RMID);
        }
        return NY_ERR_CREATE_FAILED;
    }
    uint32_t u4Result = NewRecord(iSemId, true, true, phEvent);
    if (u4Result != NY_OK) {
        semctl(iSemId, 0, IPC_RMID);
    } else if (penCreated != nullptr) {
        *penCreated = NY_TRUE;
    }
    return u4Result;
}

// Creates the set exclusively, or joins the existing one. A set without holders (all of them
// died), or one whose creator died before initialising it, is removed and created afresh.
uint32_t CreateOrJoinSet(key_t iKey, int* piSemId, bool* pbCreated) {
    uint32_t u4Failures = 0;
    for (;;) {
        *piSemId = semget(iKey, 2, IPC_CREAT | IPC_EXCL | NY_SEM_MODE);
        if (*piSemId >= 0) {
            *pbCreated = true;
            if (InitialiseSet(*piSemId, true)) {
                return NY_OK;
            }
            semctl(*piSemId, 0, IPC_RMID);
            return NY_ERR_CREATE_FAILED;
        }
        if (errno != EEXIST) {
            return NY_ERR_CREATE_FAILED;
        }
        *pbCreated = false;
        EnSemOpen enOpen = SemOpen(iKey, piSemId);
        if (enOpen == SEM_OPEN_OK) {
            return NY_OK;
        }
        if (enOpen == SEM_OPEN_STALE || enOpen == SEM_OPEN_UNINITIALISED) {
            semctl(*piSemId, 0, IPC_RMID);
            continue;
        }
        if (++u4Failures >= NY_SEM_CREATE_FAILURES) {
            return NY_ERR_CREATE_FAILED;
        }
        usleep(NY_SEM_CREATE_RETRY_US);
    }
}

// Gives up this process's hold; the last holder removes the set. A set that is gone already is
// fine.
uint32_t DropHold(int iSemId) {
    int iHolders = semctl(iSemId, NY_SEM_HOLDERS, GETVAL);
    if (iHolders < 0) {
        return Vanished(errno) ? NY_OK : NY_ERR_UNEXPECTED;
    }
    if (iHolders >= 2) {
        return SemAdjustHolders(iSemId, -1) == 0 ? NY_OK : NY_ERR_SEMAPHORE_FAILED;
    }
    semctl(iSemId, 0, IPC_RMID);
    return NY_OK;
}

}  // namespace

uint32_t UnixEventCreate(const char* szName, EnBool* penCreated, NY_EVENT_HANDLE* phEvent) {
    if (phEvent == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    key_t iKey = static_cast<key_t>(UnixName2Key(NY_KEY_KIND_EVENT, szName));
    if (iKey == 0) {
        return CreateNameless(penCreated, phEvent);
    }
    int iSemId = -1;
    bool bCreated = false;
    uint32_t u4Result = CreateOrJoinSet(iKey, &iSemId, &bCreated);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    u4Result = NewRecord(iSemId, false, bCreated, phEvent);
    if (u4Result != NY_OK) {
        DropHold(iSemId);
    } else if (penCreated != nullptr) {
        *penCreated = bCreated ? NY_TRUE : NY_FALSE;
    }
    return u4Result;
}

uint32_t UnixEventOpen(const char* szName, NY_EVENT_HANDLE* phEvent) {
    if (phEvent == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    key_t iKey = static_cast<key_t>(UnixName2Key(NY_KEY_KIND_EVENT, szName));
    if (iKey == 0) {
        return NY_ERR_NOT_FOUND;
    }
    int iSemId = -1;
    if (SemOpen(iKey, &iSemId) != SEM_OPEN_OK) {
        return NY_ERR_CREATE_FAILED;
    }
    uint32_t u4Result = NewRecord(iSemId, false, false, phEvent);
    if (u4Result != NY_OK) {
        DropHold(iSemId);
    }
    return u4Result;
}

uint32_t UnixEventSet(NY_EVENT_HANDLE hEvent) {
    return SetState(hEvent, 1);
}

uint32_t UnixEventReset(NY_EVENT_HANDLE hEvent) {
    return SetState(hEvent, 0);
}

// The kernel hands a set state to one waiting process at once (inside SETVAL), so each further
// set while GETNCNT reports waiters releases one more of them.
uint32_t UnixEventSetForWaiters(NY_EVENT_HANDLE hEvent, uint32_t u4MaxWakes, uint32_t* pu4Waiting) {
    if (pu4Waiting != nullptr) {
        *pu4Waiting = 0;
        if (CheckHandle(hEvent) == NY_OK) {
            int iWaiting =
                semctl(static_cast<BlkEventTag*>(hEvent)->i4SemId, NY_SEM_STATE, GETNCNT);
            *pu4Waiting = iWaiting > 0 ? static_cast<uint32_t>(iWaiting) : 0;
        }
    }
    uint32_t u4Result = SetState(hEvent, 1);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    int iSemId = static_cast<BlkEventTag*>(hEvent)->i4SemId;
    for (uint32_t u4Wake = 0; u4Wake < u4MaxWakes; ++u4Wake) {
        if (semctl(iSemId, NY_SEM_STATE, GETNCNT) <= 0 ||
            semctl(iSemId, NY_SEM_STATE, GETVAL) != 0) {
            break;
        }
        if (SemSetValue(iSemId, NY_SEM_STATE, 1) != 0) {
            return NY_ERR_SEMAPHORE_FAILED;
        }
    }
    return NY_OK;
}

bool UnixEventIsPresent(NY_EVENT_HANDLE hEvent) {
    if (CheckHandle(hEvent) != NY_OK) {
        return false;
    }
    struct semid_ds stDs = {};
    UnSemArg unArg;
    unArg.pDs = &stDs;
    return semctl(static_cast<BlkEventTag*>(hEvent)->i4SemId, 0, IPC_STAT, unArg) == 0;
}

uint32_t UnixEventWait(NY_EVENT_HANDLE hEvent, uint32_t u4TimeoutMs) {
    uint32_t u4Result = CheckHandle(hEvent);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    return UnixSemTimedWait(static_cast<BlkEventTag*>(hEvent)->i4SemId, NY_SEM_STATE, u4TimeoutMs);
}

uint32_t UnixEventClose(NY_EVENT_HANDLE hEvent) {
    uint32_t u4Result = CheckHandle(hEvent);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    BlkEventTag* pEvent = static_cast<BlkEventTag*>(hEvent);
    if (pEvent->u1Nameless != 0) {
        semctl(pEvent->i4SemId, 0, IPC_RMID);
    } else {
        u4Result = DropHold(pEvent->i4SemId);
        if (u4Result != NY_OK) {
            return u4Result;
        }
    }
    memset(pEvent, 0, sizeof(*pEvent));
    free(pEvent);
    return NY_OK;
}

uint32_t UnixSemTimedWait(int iSemId, uint32_t u4Index, uint32_t u4TimeoutMs) {
    struct sembuf stOp = {static_cast<unsigned short>(u4Index), -1, 0};
    if (u4TimeoutMs == NY_WAIT_INFINITE) {
        while (semop(iSemId, &stOp, 1) != 0) {
            if (errno != EINTR) {
                return static_cast<uint32_t>(errno);
            }
        }
        return NY_OK;
    }
    if (u4TimeoutMs > 0) {
        struct timespec stWait = {static_cast<time_t>(u4TimeoutMs / 1000),
                                  static_cast<long>(u4TimeoutMs % 1000) * 1000000L};
        while (semtimedop(iSemId, &stOp, 1, &stWait) != 0) {
            if (errno != EINTR) {
                return static_cast<uint32_t>(errno);
            }
        }
        return NY_OK;
    }
    stOp.sem_flg = IPC_NOWAIT;
    if (semop(iSemId, &stOp, 1) == 0) {
        return NY_OK;
    }
    if (errno == EINTR) {
        return NY_ERR_TIMEOUT;
    }
    if (errno == EAGAIN) {
        usleep(1000);
        return NY_ERR_TIMEOUT;
    }
    return static_cast<uint32_t>(errno);
}
