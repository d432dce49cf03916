// Named events: auto-reset, created or opened by name from any process, removed when the last
// holder closes them (crashed holders do not count). An empty or null name makes a private,
// nameless event. Waits take milliseconds; NY_WAIT_INFINITE waits forever, 0 tries once.
#pragma once

#include <cstdint>

#include "ipc/NyIpcHandle.h"
#include "runtime/NyTypes.h"

// Create or open. penCreated (may be null) tells the first creator apart: NY_TRUE when this call
// created the event.
uint32_t NyEventCreate(const char* szName, NY_EVENT_HANDLE* phEvent);
uint32_t NyEventCreateEx(const char* szName, EnBool* penCreated, NY_EVENT_HANDLE* phEvent);
// A non-zero u4Global asks for a machine-global object: NY_ERR_GLOBAL_REFUSED.
uint32_t NyEventCreate2(uint32_t u4Global, const char* szName, EnBool* penCreated,
                        NY_EVENT_HANDLE* phEvent);
// Open an existing named event; an empty name gives NY_ERR_NOT_FOUND, an absent event
// NY_ERR_CREATE_FAILED.
uint32_t NyEventOpen(const char* szName, NY_EVENT_HANDLE* phEvent);
uint32_t NyEventOpen2(uint32_t u4Global, const char* szName, NY_EVENT_HANDLE* phEvent);

// Set / reset the state. Setting twice leaves it set once.
uint32_t NyEventSet(NY_EVENT_HANDLE hEvent);
uint32_t NyEventReset(NY_EVENT_HANDLE hEvent);
// Waits for the set state and consumes it. Time-out 0 that finds the event reset: NY_ERR_TIMEOUT
// (after about 1 ms); a positive time-out that expires returns the system's EAGAIN number.
uint32_t NyEventWait(NY_EVENT_HANDLE hEvent, uint32_t u4TimeoutMs);
// Sets the event, then sets it again for every waiter that took it, so that all the waiters
// present are released, not just one (at most u4MaxWakes extra sets). *pu4Waiting (optional)
// receives how many processes were waiting before the first set.
uint32_t NyEventSetForWaiters(NY_EVENT_HANDLE hEvent, uint32_t u4MaxWakes,
                              uint32_t* pu4Waiting = nullptr);
// NY_TRUE while the object behind the handle still exists (nobody removed it from outside).
EnBool NyEventIsPresent(NY_EVENT_HANDLE hEvent);
// Drops this process's hold and frees the handle; the last holder removes the event.
uint32_t NyEventClose(NY_EVENT_HANDLE hEvent);
