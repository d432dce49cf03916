// A ring of log records over a caller-provided buffer (normally shared memory mapped by several
// processes). Producers push without locks, serialised through the commit position; consumers pop
// committed records. The header and slot layout are shared with programs that are not ours.
#pragma once

#include <cstddef>
#include <cstdint>

#include "log/NyLogRecord.h"

// Header of the shared ring; the slots follow at offset 64, one spare zero byte after them.
// Naturally aligned as laid out, so its counters can be used atomically in place.
struct BlkLockfreeQueueTag {
    uint32_t u4Capacity;  // slots, a power of two; 0 = not initialised
    uint32_t u4Reserve;   // free-running count of slots claimed by producers
    uint32_t u4Read;      // free-running count of slots consumed
    uint32_t u4Commit;    // free-running count of slots completely written
    uint32_t u4Heartbeat;
    uint32_t u4Listening;  // attached listening consumers
    uint8_t au1Reserved[40];
};

static_assert(sizeof(BlkLockfreeQueueTag) == 64, "queue header size");
static_assert(offsetof(BlkLockfreeQueueTag, u4Reserve) == 4, "reserve offset");
static_assert(offsetof(BlkLockfreeQueueTag, u4Read) == 8, "read offset");
static_assert(offsetof(BlkLockfreeQueueTag, u4Commit) == 12, "commit offset");
static_assert(offsetof(BlkLockfreeQueueTag, u4Heartbeat) == 16, "heartbeat offset");
static_assert(offsetof(BlkLockfreeQueueTag, u4Listening) == 20, "listening offset");

// Results of Push and Pop.
constexpr int32_t NY_LFQ_OK = 0;
constexpr int32_t NY_LFQ_FULL = -1;   // Push: no free slot
constexpr int32_t NY_LFQ_EMPTY = -1;  // Pop: nothing committed
constexpr int32_t NY_LFQ_INVALID = 1;

// A producer that finds another claim uncommitted this many times treats it as dead.
constexpr uint32_t NY_LFQ_SPIN_LIMIT = 1000;

class CLockfreeArrayQueue {
public:
    CLockfreeArrayQueue() = default;
    virtual ~CLockfreeArrayQueue() = default;
    CLockfreeArrayQueue(const CLockfreeArrayQueue&) = delete;
    CLockfreeArrayQueue& operator=(const CLockfreeArrayQueue&) = delete;

    // capacity x 5120 + 65 bytes; 0 for capacity 0 (or a size that does not fit).
    static size_t CalcBufferLen(uint32_t u4Capacity);

    // Attaches to a buffer of exactly CalcBufferLen(u4Capacity) bytes. A new buffer is zeroed and
    // stamped with the capacity; an existing one must already carry exactly this capacity.
    bool Initialize(void* pvBuffer, size_t cbLength, uint32_t u4Capacity, bool bAttachExisting);
    // Forgets the buffer; does not unmap it.
    void Finalize();
    bool CheckBuffer() const;

    int32_t Push(const tagBlkLogItem& item);
    // Copies up to u4Count records into pOut; u4Count is set to the number copied.
    int32_t Pop(tagBlkLogItem* pOut, unsigned int& u4Count);
    // Drops up to u4Count oldest committed records. 1 when there was nothing to do or the drop
    // succeeded, 0 when another consumer moved first or the header is invalid.
    uint32_t Discard(uint32_t u4Count);
    uint32_t Count() const;
    // The read position (free-running), for a reader that only peeks.
    uint32_t ReadPosition() const;
    // Read-only look at the committed records: copies up to u4Max of them, from u4Position (or
    // from the read position when u4Position lies outside read..commit), into pOut and advances
    // u4Position past them. Writes nothing into the ring, so it works on a read-only mapping.
    // Records that a producer may have overwritten during the copy are left out.
    unsigned int Peek(uint32_t& u4Position, tagBlkLogItem* pOut, unsigned int u4Max) const;

    void AddConsumerHeartbeatCount();
    uint32_t GetConsumerHeartbeatCount() const;
    bool AddConsumerListeningCount();
    bool SubConsumerListeningCount();
    bool ResetConsumerListeningCount();
    uint32_t GetConsumerListeningCount() const;

private:
    uint8_t* SlotAt(uint32_t u4Position) const;
    void CopyOut(uint32_t u4Read, uint32_t u4Count, tagBlkLogItem* pOut) const;

    BlkLockfreeQueueTag* m_pHeader = nullptr;
    uint32_t m_u4Capacity = 0;
};
