// Mutexes: recursive pthread mutexes when nameless, file-backed cross-process locks when named.
#pragma once

#include <cstdint>

#include "ipc/NyIpcHandle.h"
#include "runtime/NyTypes.h"

uint32_t UnixMtxCreate(const char* szName, EnBool* penCreated, NY_MUTEX_HANDLE* phMutex);
uint32_t UnixMtxOpen(const char* szName, NY_MUTEX_HANDLE* phMutex);
uint32_t UnixMtxWait(NY_MUTEX_HANDLE hMutex, uint32_t u4TimeoutMs);
uint32_t UnixMtxTryWait(NY_MUTEX_HANDLE hMutex);
uint32_t UnixMtxRelease(NY_MUTEX_HANDLE hMutex);
uint32_t UnixMtxDestroy(NY_MUTEX_HANDLE hMutex);
