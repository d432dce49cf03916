#include "crypto/NySymmExtern.h"

#include <mutex>

namespace {

std::mutex m_ExternMutex;
BlkSymmExternImplTag m_aExternImpls[] = {
    {NY_SYMM_EXTERN_1, 0, nullptr},
    {NY_SYMM_EXTERN_2, 0, nullptr},
};

BlkSymmExternImplTag* FindSlot(uint32_t u4AlgId) {
    for (BlkSymmExternImplTag& impl : m_aExternImpls) {
        if (impl.u4AlgId == u4AlgId) {
            return &impl;
        }
    }
    return nullptr;
}

}  // namespace

uint32_t NySymmSetExternImpl(uint32_t u4AlgId, uint32_t u4Flags, PFN_NY_SYMM_EXTERN pfnCipher) {
    std::lock_guard<std::mutex> lock(m_ExternMutex);
    BlkSymmExternImplTag* pSlot = FindSlot(u4AlgId);
    if (pSlot == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    pSlot->u4Flags = u4Flags;
    pSlot->pfnCipher = pfnCipher;
    return NY_OK;
}

bool NySymmFindExternImpl(uint32_t u4AlgId, BlkSymmExternImplTag* pImpl) {
    std::lock_guard<std::mutex> lock(m_ExternMutex);
    const BlkSymmExternImplTag* pSlot = FindSlot(u4AlgId);
    if (pSlot == nullptr || pSlot->pfnCipher == nullptr) {
        return false;
    }
    *pImpl = *pSlot;
    return true;
}
