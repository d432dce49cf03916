#include "os/NyAtomic.h"

#include "os/NyOs.h"

namespace {
constexpr uint32_t NY_SPIN_SLEEP_MS = 10;
}

void NyAtomicGetLock(volatile uint32_t* pu4Word) {
    while (!NyAtomicCAS32(pu4Word, 0, 1)) {
        NyOsSleep(NY_SPIN_SLEEP_MS);
    }
}

void NyAtomicReleaseLock(volatile uint32_t* pu4Word) {
    NyAtomicCAS32(pu4Word, 1, 0);
}

uint32_t NyAtomicAdd32(volatile uint32_t* pu4Word, uint32_t u4Value) {
    return pu4Word == nullptr ? 0 : __atomic_fetch_add(pu4Word, u4Value, __ATOMIC_SEQ_CST);
}

uint32_t NyAtomicSub32(volatile uint32_t* pu4Word, uint32_t u4Value) {
    return pu4Word == nullptr ? 0 : __atomic_fetch_sub(pu4Word, u4Value, __ATOMIC_SEQ_CST);
}

bool NyAtomicCAS32(volatile uint32_t* pu4Word, uint32_t u4Expected, uint32_t u4Desired) {
    return pu4Word != nullptr && __atomic_compare_exchange_n(pu4Word, &u4Expected, u4Desired, false,
                                                             __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
}

uint32_t NyAtomicCASVal32(volatile uint32_t* pu4Word, uint32_t u4Expected, uint32_t u4Desired) {
    if (pu4Word == nullptr) {
        return 0;
    }
    __atomic_compare_exchange_n(pu4Word, &u4Expected, u4Desired, false, __ATOMIC_SEQ_CST,
                                __ATOMIC_SEQ_CST);
    return u4Expected;
}
