// Named shared-memory regions: file-backed, mapped read-write and shared, with a cross-process
// lock that is recursive per thread. A region exists while any process holds it open; a region
// left behind by dead processes is taken over (and zero-filled) by the next creator.
#pragma once

#include <cstdint>

#include "ipc/NyIpcHandle.h"

// u4Size > 0: create or join a region of at least that size. u4Size 0: open a region that a live
// process holds (absent: NY_ERR_OBJECT_ABSENT).
uint32_t NyShareMemOpen(const char* szName, uint32_t u4Size, NY_SHM_HANDLE* phShm);
// pvSecurity is accepted and not read. A non-zero u4Global: NY_ERR_GLOBAL_REFUSED.
uint32_t NyShareMemCreate2(void* pvSecurity, uint32_t u4Global, const char* szName, uint32_t u4Size,
                           NY_SHM_HANDLE* phShm);
// NyShareMemCreate2 with size 0 (open an existing region).
uint32_t NyShareMemOpen2(uint32_t u4Global, const char* szName, NY_SHM_HANDLE* phShm);

// The region's lock; NyShareMemLock waits forever.
uint32_t NyShareMemLock(NY_SHM_HANDLE hShm);
uint32_t NyShareMemLockTimeout(NY_SHM_HANDLE hShm, uint32_t u4TimeoutMs);
uint32_t NyShareMemUnlock(NY_SHM_HANDLE hShm);

// Copy out of / into the region under its lock (taken here; recursive, so a holder may call).
// u4Offset + u4Length beyond the region's size: NY_ERR_OUT_OF_MEMORY.
uint32_t NyShareMemRead(NY_SHM_HANDLE hShm, uint32_t u4Offset, void* pvBuffer, uint32_t u4Length);
uint32_t NyShareMemWrite(NY_SHM_HANDLE hShm, uint32_t u4Offset, const void* pvBuffer,
                         uint32_t u4Length);

uint32_t NyShareMemGetSize(NY_SHM_HANDLE hShm, uint32_t* pu4Size);
uint32_t NyShareMemGetData(NY_SHM_HANDLE hShm, void** ppvData);

// Unmap, close and free the handle; the last user's close removes the region's file.
uint32_t NyShareMemClose(NY_SHM_HANDLE hShm);
