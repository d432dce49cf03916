#include "runtime/NySecureMem.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

#include "runtime/NySafe.h"

namespace {

// Leads every allocation, one cache line before the memory handed out.
struct BlkSecureHeadTag {
    size_t cbMapped;  // the whole mapping, head included
    uint32_t bLocked;
};

constexpr size_t NY_SECURE_HEAD_SIZE = 64;
static_assert(sizeof(BlkSecureHeadTag) <= NY_SECURE_HEAD_SIZE, "head fits its line");

size_t PageSize() {
    long nPage = sysconf(_SC_PAGESIZE);
    return nPage > 0 ? static_cast<size_t>(nPage) : 4096;
}

BlkSecureHeadTag* HeadOf(const void* pv) {
    return reinterpret_cast<BlkSecureHeadTag*>(
        const_cast<uint8_t*>(static_cast<const uint8_t*>(pv)) - NY_SECURE_HEAD_SIZE);
}

}  // namespace

void* NySecureAlloc(size_t cbSize) {
    size_t cbPage = PageSize();
    size_t cbMapped = (cbSize + NY_SECURE_HEAD_SIZE + cbPage - 1) / cbPage * cbPage;
    void* pvMap =
        mmap(nullptr, cbMapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pvMap == MAP_FAILED) {
        return nullptr;
    }
    madvise(pvMap, cbMapped, MADV_DONTDUMP);
    auto* pHead = static_cast<BlkSecureHeadTag*>(pvMap);
    pHead->cbMapped = cbMapped;
    pHead->bLocked = mlock(pvMap, cbMapped) == 0 ? 1 : 0;
    return static_cast<uint8_t*>(pvMap) + NY_SECURE_HEAD_SIZE;
}

void NySecureFree(void* pv) {
    if (pv == nullptr) {
        return;
    }
    BlkSecureHeadTag* pHead = HeadOf(pv);
    size_t cbMapped = pHead->cbMapped;
    bool bLocked = pHead->bLocked != 0;
    NyMemSafeClear(pHead, cbMapped);
    if (bLocked) {
        munlock(pHead, cbMapped);
    }
    munmap(pHead, cbMapped);
}

bool NySecureIsLocked(const void* pv) {
    return pv != nullptr && HeadOf(pv)->bLocked != 0;
}
