// The record of one channel open in this process: the handles of its named objects. Copied
// freely; the objects themselves are closed once, by CNyShmCommunication::DestroyRecord.
#pragma once

#include "comm/NyCommunication.h"
#include "ipc/NyIpcHandle.h"
#include "runtime/NyTypes.h"

class CCommHeartBeat;
class CCommAnswerGuard;

struct BlkCommShmInfoTag {
    NY_SHM_HANDLE hShareMem;  // also the channel handle
    NY_MUTEX_HANDLE hMutex;
    NY_EVENT_HANDLE hEventRequest;
    NY_EVENT_HANDLE hEventResponse;
    char szName[COMM_NAME_SIZE];
    NY_EVENT_HANDLE hEventConnected;
    EnBool bIsServer;                // NY_TRUE in the process that created the channel
    CCommHeartBeat* pHeartBeat;      // the channel's beats; server side only, else null
    CCommAnswerGuard* pAnswerGuard;  // server side only, else null
    uint64_t au8FileIds[4];          // server side: device and inode of the region and mutex files
};
