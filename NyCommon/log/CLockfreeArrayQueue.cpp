#include "log/CLockfreeArrayQueue.h"

#include <sched.h>

#include <cstring>

#include "os/NyAtomic.h"

namespace {

constexpr size_t NY_LFQ_SLOTS_OFFSET = sizeof(BlkLockfreeQueueTag);
constexpr size_t NY_LFQ_SPARE_BYTES = 1;

// The counters live in memory shared with other processes: every access is atomic (loads
// acquire, updates are full barriers), so a record's bytes are visible before its commit.
uint32_t Load(const uint32_t* pu4Word) {
    return __atomic_load_n(pu4Word, __ATOMIC_ACQUIRE);
}

// Adds u4Delta (modulo 2^32) unless the word already holds u4Bound.
bool StepBounded(uint32_t* pu4Word, uint32_t u4Bound, uint32_t u4Delta) {
    for (;;) {
        uint32_t u4Old = Load(pu4Word);
        if (u4Old == u4Bound) {
            return false;
        }
        if (NyAtomicCAS32(pu4Word, u4Old, u4Old + u4Delta)) {
            return true;
        }
    }
}

bool IsPowerOfTwo(uint32_t u4Value) {
    return u4Value != 0 && (u4Value & (u4Value - 1)) == 0;
}

}  // namespace

size_t CLockfreeArrayQueue::CalcBufferLen(uint32_t u4Capacity) {
    const size_t cbFixed = NY_LFQ_SLOTS_OFFSET + NY_LFQ_SPARE_BYTES;
    if (u4Capacity == 0 || u4Capacity > (SIZE_MAX - cbFixed) / NY_LOG_ITEM_SIZE) {
        return 0;
    }
    return static_cast<size_t>(u4Capacity) * NY_LOG_ITEM_SIZE + cbFixed;
}

bool CLockfreeArrayQueue::Initialize(void* pvBuffer, size_t cbLength, uint32_t u4Capacity,
                                     bool bAttachExisting) {
    if (pvBuffer == nullptr || !IsPowerOfTwo(u4Capacity) || CheckBuffer() ||
        cbLength != CalcBufferLen(u4Capacity)) {
        return false;
    }
    BlkLockfreeQueueTag* pHeader = static_cast<BlkLockfreeQueueTag*>(pvBuffer);
    if (bAttachExisting) {
        if (Load(&pHeader->u4Capacity) != u4Capacity) {
            return false;
        }
    } else {
        memset(pvBuffer, 0, cbLength);
        __atomic_store_n(&pHeader->u4Capacity, u4Capacity, __ATOMIC_RELEASE);
    }
    m_pHeader = pHeader;
    m_u4Capacity = u4Capacity;
    return true;
}

void CLockfreeArrayQueue::Finalize() {
    m_pHeader = nullptr;
    m_u4Capacity = 0;
}

bool CLockfreeArrayQueue::CheckBuffer() const {
    if (m_pHeader == nullptr) {
        return false;
    }
    uint32_t u4Capacity = Load(&m_pHeader->u4Capacity);
    return u4Capacity != 0 && u4Capacity == m_u4Capacity;
}

uint8_t* CLockfreeArrayQueue::SlotAt(uint32_t u4Position) const {
    size_t uIndex = u4Position & (m_u4Capacity - 1);
    return reinterpret_cast<uint8_t*>(m_pHeader) + NY_LFQ_SLOTS_OFFSET + uIndex * NY_LOG_ITEM_SIZE;
}

int32_t CLockfreeArrayQueue::Push(const tagBlkLogItem& item) {
    if (!CheckBuffer()) {
        return NY_LFQ_INVALID;
    }
    const uint32_t u4Mask = m_u4Capacity - 1;
    uint32_t u4Spins = 0;
    for (;;) {
        uint32_t u4Reserve = Load(&m_pHeader->u4Reserve);
        uint32_t u4Read = Load(&m_pHeader->u4Read);
        uint32_t u4Commit = Load(&m_pHeader->u4Commit);
        if (((u4Reserve + 1) & u4Mask) == (u4Read & u4Mask)) {
            return NY_LFQ_FULL;
        }
        if (u4Commit != u4Reserve) {
            // Another producer is between claim and commit: wait for it, and after the spin
            // budget assume it died and move its commit forward.
            if (++u4Spins < NY_LFQ_SPIN_LIMIT) {
                sched_yield();
                continue;
            }
            if (!NyAtomicCAS32(&m_pHeader->u4Commit, u4Commit, u4Reserve)) {
                continue;
            }
        }
        if (!NyAtomicCAS32(&m_pHeader->u4Reserve, u4Reserve, u4Reserve + 1)) {
            u4Spins = 0;
            continue;
        }
        memcpy(SlotAt(u4Reserve), &item, NY_LOG_ITEM_SIZE);
        NyAtomicCAS32(&m_pHeader->u4Commit, u4Reserve, u4Reserve + 1);
        return NY_LFQ_OK;
    }
}

void CLockfreeArrayQueue::CopyOut(uint32_t u4Read, uint32_t u4Count, tagBlkLogItem* pOut) const {
    // Slots are contiguous up to the end of the ring; copy in at most two runs.
    uint32_t u4Index = u4Read & (m_u4Capacity - 1);
    uint32_t u4First = m_u4Capacity - u4Index;
    if (u4First > u4Count) {
        u4First = u4Count;
    }
    memcpy(pOut, SlotAt(u4Read), static_cast<size_t>(u4First) * NY_LOG_ITEM_SIZE);
    if (u4Count > u4First) {
        memcpy(pOut + u4First, SlotAt(u4Read + u4First),
               static_cast<size_t>(u4Count - u4First) * NY_LOG_ITEM_SIZE);
    }
}

uint32_t CLockfreeArrayQueue::ReadPosition() const {
    return CheckBuffer() ? Load(&m_pHeader->u4Read) : 0;
}

unsigned int CLockfreeArrayQueue::Peek(uint32_t& u4Position, tagBlkLogItem* pOut,
                                       unsigned int u4Max) const {
    if (!CheckBuffer() || pOut == nullptr || u4Max == 0) {
        return 0;
    }
    uint32_t u4Read = Load(&m_pHeader->u4Read);
    uint32_t u4Commit = Load(&m_pHeader->u4Commit);
    if (u4Position - u4Read > u4Commit - u4Read) {
        u4Position = u4Read;
    }
    uint32_t u4Take = u4Commit - u4Position < u4Max ? u4Commit - u4Position : u4Max;
    if (u4Take == 0) {
        return 0;
    }
    CopyOut(u4Position, u4Take, pOut);
    // The copy is checked afterwards, as a sequence lock is: the claim of position p + capacity
    // reuses the slot of p, so the records below reserve - capacity may be torn.
    __atomic_thread_fence(__ATOMIC_ACQUIRE);
    uint32_t u4Torn = Load(&m_pHeader->u4Reserve) - m_u4Capacity - u4Position;
    u4Torn = static_cast<int32_t>(u4Torn) <= 0 ? 0 : u4Torn < u4Take ? u4Torn : u4Take;
    memmove(pOut, pOut + u4Torn, static_cast<size_t>(u4Take - u4Torn) * NY_LOG_ITEM_SIZE);
    u4Position += u4Take;
    return u4Take - u4Torn;
}

int32_t CLockfreeArrayQueue::Pop(tagBlkLogItem* pOut, unsigned int& u4Count) {
    unsigned int u4Wanted = u4Count;
    u4Count = 0;
    if (!CheckBuffer() || pOut == nullptr || u4Wanted == 0) {
        return NY_LFQ_INVALID;
    }
    for (;;) {
        uint32_t u4Read = Load(&m_pHeader->u4Read);
        uint32_t u4Available = Load(&m_pHeader->u4Commit) - u4Read;
        uint32_t u4Take = u4Available < u4Wanted ? u4Available : u4Wanted;
        if (u4Take == 0) {
            return NY_LFQ_EMPTY;
        }
        CopyOut(u4Read, u4Take, pOut);
        if (NyAtomicCAS32(&m_pHeader->u4Read, u4Read, u4Read + u4Take)) {
            u4Count = u4Take;
            return NY_LFQ_OK;
        }
    }
}

uint32_t CLockfreeArrayQueue::Discard(uint32_t u4Count) {
    if (!CheckBuffer()) {
        return 0;
    }
    if (u4Count == 0) {
        return 1;
    }
    if (u4Count > m_u4Capacity) {
        u4Count = m_u4Capacity;
    }
    uint32_t u4Read = Load(&m_pHeader->u4Read);
    uint32_t u4Available = Load(&m_pHeader->u4Commit) - u4Read;
    uint32_t u4Drop = u4Available < u4Count ? u4Available : u4Count;
    if (u4Drop == 0) {
        return 1;
    }
    return NyAtomicCAS32(&m_pHeader->u4Read, u4Read, u4Read + u4Drop) ? 1 : 0;
}

uint32_t CLockfreeArrayQueue::Count() const {
    if (!CheckBuffer()) {
        return 0;
    }
    uint32_t u4Read = Load(&m_pHeader->u4Read);
    uint32_t u4Reserve = Load(&m_pHeader->u4Reserve);
    uint32_t u4Count = u4Reserve - u4Read;
    if (u4Reserve < u4Read) {
        u4Count += m_u4Capacity;
    }
    return u4Count;
}

void CLockfreeArrayQueue::AddConsumerHeartbeatCount() {
    if (CheckBuffer()) {
        NyAtomicAdd32(&m_pHeader->u4Heartbeat, 1);
    }
}

uint32_t CLockfreeArrayQueue::GetConsumerHeartbeatCount() const {
    return CheckBuffer() ? Load(&m_pHeader->u4Heartbeat) : 0;
}

bool CLockfreeArrayQueue::AddConsumerListeningCount() {
    return CheckBuffer() && StepBounded(&m_pHeader->u4Listening, UINT32_MAX, 1);
}

bool CLockfreeArrayQueue::SubConsumerListeningCount() {
    return CheckBuffer() && StepBounded(&m_pHeader->u4Listening, 0, static_cast<uint32_t>(-1));
}

bool CLockfreeArrayQueue::ResetConsumerListeningCount() {
    if (!CheckBuffer()) {
        return false;
    }
    return NyAtomicCAS32(&m_pHeader->u4Listening, Load(&m_pHeader->u4Listening), 0);
}

uint32_t CLockfreeArrayQueue::GetConsumerListeningCount() const {
    return CheckBuffer() ? Load(&m_pHeader->u4Listening) : 0;
}
