#include "ipc/NyEvent.h"

#include "ipc/NyUnixEvent.h"
#include "runtime/NyResult.h"

uint32_t NyEventCreate(const char* szName, NY_EVENT_HANDLE* phEvent) {
    return NyEventCreateEx(szName, nullptr, phEvent);
}

uint32_t NyEventCreateEx(const char* szName, EnBool* penCreated, NY_EVENT_HANDLE* phEvent) {
    return UnixEventCreate(szName, penCreated, phEvent);
}

uint32_t NyEventCreate2(uint32_t u4Global, const char* szName, EnBool* penCreated,
                        NY_EVENT_HANDLE* phEvent) {
    return u4Global != 0 ? NY_ERR_GLOBAL_REFUSED : NyEventCreateEx(szName, penCreated, phEvent);
}

uint32_t NyEventOpen(const char* szName, NY_EVENT_HANDLE* phEvent) {
    return UnixEventOpen(szName, phEvent);
}

uint32_t NyEventOpen2(uint32_t u4Global, const char* szName, NY_EVENT_HANDLE* phEvent) {
    return u4Global != 0 ? NY_ERR_GLOBAL_REFUSED : NyEventOpen(szName, phEvent);
}

uint32_t NyEventSet(NY_EVENT_HANDLE hEvent) {
    return UnixEventSet(hEvent);
}

uint32_t NyEventReset(NY_EVENT_HANDLE hEvent) {
    return UnixEventReset(hEvent);
}

uint32_t NyEventWait(NY_EVENT_HANDLE hEvent, uint32_t u4TimeoutMs) {
    return UnixEventWait(hEvent, u4TimeoutMs);
}

uint32_t NyEventSetForWaiters(NY_EVENT_HANDLE hEvent, uint32_t u4MaxWakes, uint32_t* pu4Waiting) {
    return UnixEventSetForWaiters(hEvent, u4MaxWakes, pu4Waiting);
}

EnBool NyEventIsPresent(NY_EVENT_HANDLE hEvent) {
    return UnixEventIsPresent(hEvent) ? NY_TRUE : NY_FALSE;
}

uint32_t NyEventClose(NY_EVENT_HANDLE hEvent) {
    return UnixEventClose(hEvent);
}
