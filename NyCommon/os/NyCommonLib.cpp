#include "os/NyCommonLib.h"

#include "os/NyAtomic.h"
#include "os/NyOsCommonLib.h"
#include "runtime/NyResult.h"

namespace {
volatile uint32_t m_u4LibLock = 0;
uint32_t m_u4LibRefCount = 0;
constexpr uint32_t NY_LIB_NOT_STARTED = 0xFFFFFFFF;
}  // namespace

uint32_t NyCommonLibInit() {
    uint32_t u4Result = NY_OK;
    NyAtomicGetLock(&m_u4LibLock);
    if (m_u4LibRefCount == 0) {
        u4Result = NyOsCommonLibInit();
    }
    if (u4Result == NY_OK) {
        ++m_u4LibRefCount;
    }
    NyAtomicReleaseLock(&m_u4LibLock);
    return u4Result;
}

uint32_t NyCommonLibRelease() {
    uint32_t u4Result = NY_OK;
    NyAtomicGetLock(&m_u4LibLock);
    if (m_u4LibRefCount == 0) {
        u4Result = NY_LIB_NOT_STARTED;
    } else if (--m_u4LibRefCount == 0) {
        NyOsCommonLibFinal();
    }
    NyAtomicReleaseLock(&m_u4LibLock);
    return u4Result;
}
