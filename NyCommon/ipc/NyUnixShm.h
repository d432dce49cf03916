// Shared-memory regions on files mapped read-write and shared.
#pragma once

#include <cstdint>

#include "ipc/NyIpcHandle.h"

// As NyShareMemOpen; pu4Created (may be null) is 1 when this call created the region or took
// over one left by dead processes.
uint32_t UnixShmOpen(const char* szName, uint32_t u4Size, NY_SHM_HANDLE* phShm,
                     uint32_t* pu4Created);
uint32_t UnixShmLock(NY_SHM_HANDLE hShm, uint32_t u4TimeoutMs);
uint32_t UnixShmUnlock(NY_SHM_HANDLE hShm);
uint32_t UnixShmRead(NY_SHM_HANDLE hShm, uint32_t u4Offset, void* pvBuffer, uint32_t u4Length);
uint32_t UnixShmWrite(NY_SHM_HANDLE hShm, uint32_t u4Offset, const void* pvBuffer,
                      uint32_t u4Length);
uint32_t UnixShmGetSize(NY_SHM_HANDLE hShm, uint32_t* pu4Size);
uint32_t UnixShmGetData(NY_SHM_HANDLE hShm, void** ppvData);
uint32_t UnixShmClose(NY_SHM_HANDLE hShm);
