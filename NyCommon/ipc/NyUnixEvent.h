// Events on System V semaphores. A named event is a set of two semaphores under a key hashed
// from its name: semaphore 0 is the state (1 set, 0 reset), semaphore 1 counts the processes
// holding the event (each adds 1 with SEM_UNDO, so the kernel takes a dead holder's count back).
// A nameless event is a private set of one semaphore.
#pragma once

#include <cstdint>

#include "ipc/NyIpcHandle.h"
#include "runtime/NyTypes.h"

uint32_t UnixEventCreate(const char* szName, EnBool* penCreated, NY_EVENT_HANDLE* phEvent);
uint32_t UnixEventOpen(const char* szName, NY_EVENT_HANDLE* phEvent);
uint32_t UnixEventSet(NY_EVENT_HANDLE hEvent);
uint32_t UnixEventReset(NY_EVENT_HANDLE hEvent);
uint32_t UnixEventWait(NY_EVENT_HANDLE hEvent, uint32_t u4TimeoutMs);
uint32_t UnixEventSetForWaiters(NY_EVENT_HANDLE hEvent, uint32_t u4MaxWakes, uint32_t* pu4Waiting);
bool UnixEventIsPresent(NY_EVENT_HANDLE hEvent);
uint32_t UnixEventClose(NY_EVENT_HANDLE hEvent);

// Decrements semaphore u4Index of iSemId by 1 with the time-out rules of NyEventWait.
uint32_t UnixSemTimedWait(int iSemId, uint32_t u4Index, uint32_t u4TimeoutMs);
