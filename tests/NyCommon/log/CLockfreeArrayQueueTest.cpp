#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mman.h>

#include <cstring>
#include <memory>
#include <vector>

#include "LogTestItems.h"
#include "log/CLockfreeArrayQueue.h"
#include "support/CNyTestChild.h"
#include "support/NyTestProcess.h"

namespace {

// A ring in anonymous shared memory: visible to forked children, gone with the last mapping.
struct CTestRing {
    explicit CTestRing(uint32_t u4Capacity)
        : cbLength(CLockfreeArrayQueue::CalcBufferLen(u4Capacity)),
          pu1(static_cast<uint8_t*>(
              mmap(nullptr, cbLength, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
        EXPECT_NE(pu1, MAP_FAILED);
        EXPECT_TRUE(queue.Initialize(pu1, cbLength, u4Capacity, false));
    }
    ~CTestRing() { munmap(pu1, cbLength); }
    CLockfreeArrayQueue& Queue() { return queue; }
    BlkLockfreeQueueTag* Header() { return reinterpret_cast<BlkLockfreeQueueTag*>(pu1); }
    const size_t cbLength;
    uint8_t* const pu1;
    CLockfreeArrayQueue queue;
};

void PushSequence(CLockfreeArrayQueue& queue, uint32_t u4First, uint32_t u4Count) {
    for (uint32_t i = 0; i < u4Count; ++i) {
        tagBlkLogItem item = MakeItem(0, u4First + i);
        ASSERT_EQ(queue.Push(item), NY_LFQ_OK) << "record " << u4First + i;
    }
}

}  // namespace

TEST(CLockfreeArrayQueue, BufferLengthIsSlotsPlusHeaderPlusOneSpareByte) {
    EXPECT_EQ(CLockfreeArrayQueue::CalcBufferLen(0), 0u);
    EXPECT_EQ(CLockfreeArrayQueue::CalcBufferLen(1), 5185u);
    EXPECT_EQ(CLockfreeArrayQueue::CalcBufferLen(4), 20545u);
    EXPECT_EQ(CLockfreeArrayQueue::CalcBufferLen(32768), 167772225u);
}

// A ring of capacity 4 holds 3; batches that cross its end, and positions that wrap the 32-bit
// range, keep their order.
TEST(CLockfreeArrayQueue, RingOfFourHoldsThreeInOrderAcrossItsEndAndThe32BitWrap) {
    for (uint32_t u4Start : {0u, 0xFFFFFFFEu}) {
        CTestRing ring(4);
        ring.Header()->u4Reserve = ring.Header()->u4Read = ring.Header()->u4Commit = u4Start;
        std::vector<uint32_t> vSeen;
        for (uint32_t u4Next = 0; u4Next < 18; u4Next += 3) {
            PushSequence(ring.Queue(), u4Next, 3);
            tagBlkLogItem item = MakeItem(0, 99);
            EXPECT_EQ(ring.Queue().Push(item), NY_LFQ_FULL);
            EXPECT_EQ(ring.Header()->u4Commit, u4Start + u4Next + 3);
            std::vector<uint32_t> v = PopLines(ring.Queue(), u4Next == 0 ? 1 : 10);
            vSeen.insert(vSeen.end(), v.begin(), v.end());
            if (u4Next == 0) {
                EXPECT_EQ(v, std::vector<uint32_t>{0});
                v = PopLines(ring.Queue(), 10);
                vSeen.insert(vSeen.end(), v.begin(), v.end());
            }
        }
        std::vector<uint32_t> vExpected(18);
        for (uint32_t i = 0; i < 18; ++i) {
            vExpected[i] = i;
        }
        EXPECT_EQ(vSeen, vExpected) << "start " << u4Start;
    }
}

TEST(CLockfreeArrayQueue, PopReportsEmptyAndRefusesABatchOfNone) {
    CTestRing ring(8);
    tagBlkLogItem item;
    unsigned int u4Count = 1;
    EXPECT_EQ(ring.Queue().Pop(&item, u4Count), NY_LFQ_EMPTY);
    EXPECT_EQ(u4Count, 0u);
    PushSequence(ring.Queue(), 0, 1);
    EXPECT_EQ(ring.Queue().Pop(&item, u4Count), NY_LFQ_INVALID);
    EXPECT_EQ(ring.Queue().Count(), 1u);
}

TEST(CLockfreeArrayQueue, PeekReadsCommittedRecordsAndMovesNothing) {
    CTestRing ring(4);
    PushSequence(ring.Queue(), 0, 3);
    ASSERT_EQ(2u, PopLines(ring.Queue(), 2).size());
    PushSequence(ring.Queue(), 3, 2);  // positions 2, 3, 4: the last one in slot 0
    std::vector<tagBlkLogItem> vItems(4);
    uint32_t u4Position = 0;  // behind the read position: the look starts there
    ASSERT_EQ(3u, ring.Queue().Peek(u4Position, vItems.data(), 4));
    EXPECT_EQ(2u, vItems[0].u4Line);
    EXPECT_EQ(4u, vItems[2].u4Line);
    EXPECT_EQ(5u, u4Position);
    EXPECT_EQ(0u, ring.Queue().Peek(u4Position, vItems.data(), 4));
    EXPECT_EQ(2u, ring.Queue().ReadPosition());
    EXPECT_EQ(3u, ring.Queue().Count());
    // Producers that claimed two more positions while the records were copied have reused the
    // slot of position 2: that record is left out.
    ring.Header()->u4Reserve += 2;
    u4Position = 2;
    ASSERT_EQ(2u, ring.Queue().Peek(u4Position, vItems.data(), 4));
    EXPECT_EQ(3u, vItems[0].u4Line);
    EXPECT_EQ(4u, vItems[1].u4Line);
}

TEST(CLockfreeArrayQueue, DiscardDropsOnlyCommittedRecordsOldestFirst) {
    const struct {
        uint32_t u4Stored;
        uint32_t u4Discard;
        uint32_t u4Result;
        std::vector<uint32_t> vLeft;
    } aCases[] = {{2, 5, 1, {}},  {0, 5, 1, {}},   {3, 0, 1, {0, 1, 2}},
                  {3, 2, 1, {2}}, {7, 100, 1, {}}, {5, 3, 1, {3, 4}}};
    for (const auto& c : aCases) {
        CTestRing ring(8);
        PushSequence(ring.Queue(), 0, c.u4Stored);
        EXPECT_EQ(ring.Queue().Discard(c.u4Discard), c.u4Result)
            << c.u4Stored << " stored, discard " << c.u4Discard;
        EXPECT_EQ(PopLines(ring.Queue(), 10), c.vLeft)
            << c.u4Stored << " stored, discard " << c.u4Discard;
    }

    CTestRing ring(8);
    PushSequence(ring.Queue(), 0, 2);
    ring.Header()->u4Reserve = 3;  // a third claim, not yet committed
    EXPECT_EQ(ring.Queue().Discard(3), 1u);
    EXPECT_EQ(ring.Header()->u4Read, 2u);
}

TEST(CLockfreeArrayQueue, ConsumerCountersSaturateAndResetAndNothingWorksOnAnInvalidHeader) {
    CTestRing ring(4);
    CLockfreeArrayQueue& queue = ring.Queue();
    EXPECT_FALSE(queue.SubConsumerListeningCount());
    EXPECT_TRUE(queue.AddConsumerListeningCount());
    EXPECT_TRUE(queue.AddConsumerListeningCount());
    EXPECT_TRUE(queue.SubConsumerListeningCount());
    EXPECT_EQ(queue.GetConsumerListeningCount(), 1u);
    ring.Header()->u4Listening = 0xFFFFFFFFu;
    EXPECT_FALSE(queue.AddConsumerListeningCount());
    EXPECT_EQ(queue.GetConsumerListeningCount(), 0xFFFFFFFFu);
    EXPECT_TRUE(queue.ResetConsumerListeningCount());
    EXPECT_EQ(queue.GetConsumerListeningCount(), 0u);
    queue.AddConsumerHeartbeatCount();
    EXPECT_EQ(queue.GetConsumerHeartbeatCount(), 1u);

    CLockfreeArrayQueue detached;
    tagBlkLogItem item = MakeItem(0, 0);
    unsigned int u4Count = 1;
    EXPECT_EQ(detached.Push(item), NY_LFQ_INVALID);
    EXPECT_EQ(detached.Pop(&item, u4Count), NY_LFQ_INVALID);
    EXPECT_EQ(u4Count, 0u);
    EXPECT_EQ(detached.Discard(1), 0u);
    EXPECT_EQ(detached.Count(), 0u);
    EXPECT_FALSE(detached.AddConsumerListeningCount());

    // Another party re-stamps the shared header with a different capacity.
    PushSequence(queue, 0, 1);
    ring.Header()->u4Capacity = 8;
    EXPECT_EQ(queue.Push(item), NY_LFQ_INVALID);
    u4Count = 1;
    EXPECT_EQ(queue.Pop(&item, u4Count), NY_LFQ_INVALID);
    EXPECT_EQ(queue.Discard(1), 0u);
    queue.AddConsumerHeartbeatCount();
    EXPECT_EQ(ring.Header()->u4Heartbeat, 1u);
    EXPECT_EQ(ring.Header()->u4Reserve, 1u);
    EXPECT_EQ(ring.Header()->u4Read, 0u);
}

TEST(CLockfreeArrayQueue, ProducerKilledBetweenClaimAndCommitDelaysOthersOnlyBriefly) {
    CTestRing ring(8);
    PushSequence(ring.Queue(), 0, 1);
    BlkLockfreeQueueTag* pHeader = ring.Header();
    CNyTestChild claimer(NyTestForkChild([pHeader] {
        // Claim slot 1 the way a producer does, then never commit it.
        uint32_t u4Expected = 1;
        if (!__atomic_compare_exchange_n(&pHeader->u4Reserve, &u4Expected, 2, false,
                                         __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST)) {
            return 1;
        }
        for (;;) {
            pause();
        }
    }));
    ASSERT_TRUE(claimer.Started());
    ASSERT_TRUE(NyTestWaitUntil([pHeader] { return pHeader->u4Reserve == 2; }, 5000));
    claimer.Kill();

    // The next push, in a process of its own so that a hang shows as a time-out.
    CLockfreeArrayQueue* pQueue = &ring.Queue();
    CNyTestChild pusher(NyTestForkChild([pQueue] {
        tagBlkLogItem item = MakeItem(0, 2);
        return pQueue->Push(item) == NY_LFQ_OK ? 0 : 1;
    }));
    EXPECT_EQ(pusher.Wait(5000), 0);
    EXPECT_EQ(pHeader->u4Reserve, 3u);
    EXPECT_EQ(pHeader->u4Commit, 3u);
    std::vector<uint32_t> vLines = PopLines(ring.Queue(), 10);
    ASSERT_EQ(vLines.size(), 3u);
    EXPECT_EQ(vLines[2], 2u);  // the dead producer's slot is skipped over, not reused
}

// Producer processes race for slots while this process drains: every record arrives, byte for
// byte, in its producer's order.
TEST(CLockfreeArrayQueue, ProducerProcessesLoseNothingAndKeepTheirOrder) {
    constexpr uint32_t u4Producers = 3;
    constexpr uint32_t u4PerProducer = 4000;
    CTestRing ring(64);
    CLockfreeArrayQueue* pQueue = &ring.Queue();
    std::vector<std::unique_ptr<CNyTestChild>> vProducers;
    for (uint32_t p = 0; p < u4Producers; ++p) {
        vProducers.emplace_back(new CNyTestChild(NyTestForkChild([pQueue, p] {
            for (uint32_t s = 0; s < u4PerProducer; ++s) {
                int32_t i4Result;
                while ((i4Result = pQueue->Push(MakeItem(p, s))) == NY_LFQ_FULL) {
                    sched_yield();
                }
                if (i4Result != NY_LFQ_OK) {
                    return 1;
                }
            }
            return 0;
        })));
    }
    std::vector<uint32_t> vNext(u4Producers, 0);
    uint32_t u4Total = 0, u4Faults = 0;
    std::vector<tagBlkLogItem> vBatch(16);
    NyTestWaitUntil(
        [&] {
            unsigned int u4Count = 16;
            for (; pQueue->Pop(vBatch.data(), u4Count) == NY_LFQ_OK; u4Count = 16) {
                for (unsigned int i = 0; i < u4Count; ++i, ++u4Total) {
                    const tagBlkLogItem& item = vBatch[i];
                    tagBlkLogItem expected =
                        MakeItem(item.u4Pid, vNext[item.u4Pid % u4Producers]++);
                    u4Faults += memcmp(&item, &expected, sizeof(item)) != 0 ? 1 : 0;
                }
            }
            return u4Total >= u4Producers * u4PerProducer;
        },
        120000);
    for (auto& pProducer : vProducers) {
        EXPECT_EQ(pProducer->Wait(10000), 0);
    }
    EXPECT_EQ(u4Faults, 0u);
    EXPECT_EQ(vNext, std::vector<uint32_t>(u4Producers, u4PerProducer));
}
