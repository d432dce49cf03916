// Push throughput of the shared-memory log queue (records per second) for producer threads and
// producer processes, with the ring left to overflow (no listener: the oldest records are
// dropped) and with a listening consumer draining it. Runs on a private full-size queue.
#include <benchmark/benchmark.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "log/CNyShmLogger.h"
#include "log/NyLog.h"
#include "os/NyCommonLib.h"

namespace {

constexpr unsigned int NY_BENCH_DRAIN_BATCH = 32;
constexpr uint32_t NY_BENCH_RECORDS_PER_PROCESS = 20000;

std::string m_strQueue;
CNyShmLogger* m_pProducer = nullptr;

tagBlkLogItem MakeItem() {
    tagBlkLogItem item;
    memset(&item, 0, sizeof(item));
    item.u4Level = LOG_TRACE;
    item.u4Line = 42;
    strcpy(item.szSource, "bench/logqueue.cpp");
    strcpy(item.szMessage, "CUiService::RunUi() enter");
    return item;
}

// A listening consumer on a thread of its own, popping in batches while it runs.
class CDrainingConsumer {
public:
    explicit CDrainingConsumer(bool bRun) {
        if (bRun) {
            m_thread = std::thread([this] { Drain(); });
            while (!m_bListening.load()) {
                std::this_thread::yield();
            }
        }
    }
    ~CDrainingConsumer() {
        m_bStop = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

private:
    void Drain() {
        CNyShmLogger viewer(m_strQueue.c_str(), NY_SHMLOG_CAPACITY);
        std::vector<tagBlkLogItem> vBatch(NY_BENCH_DRAIN_BATCH);
        if (!viewer.Connect(true)) {
            m_bListening = true;  // let the benchmark go on; it then runs without a consumer
            return;
        }
        WarmUp(viewer, vBatch.data());
        m_bListening = true;
        while (!m_bStop.load(std::memory_order_relaxed)) {
            if (viewer.GetLogItem(vBatch.data(), NY_BENCH_DRAIN_BATCH) == 0) {
                std::this_thread::sleep_for(std::chrono::microseconds(100));
            }
        }
        viewer.DiscardLog(0);
        viewer.Disconnect();
    }

    // A fresh mapping faults on every page it touches; go once round the ring first, as a
    // long-running viewer has, so that the measurement sees the steady state.
    static void WarmUp(CNyShmLogger& viewer, tagBlkLogItem* pScratch) {
        const tagBlkLogItem item = MakeItem();
        for (uint32_t i = 0; i < NY_SHMLOG_CAPACITY; ++i) {
            viewer.SetLogItem(item);
            viewer.GetLogItem(pScratch, 1);
        }
    }

    std::atomic<bool> m_bStop{false};
    std::atomic<bool> m_bListening{false};
    std::thread m_thread;
};

// Range 0: 1 with a draining consumer, 0 without.
void BM_PushThreads(benchmark::State& state) {
    std::unique_ptr<CDrainingConsumer> pConsumer;
    if (state.thread_index() == 0) {
        pConsumer.reset(new CDrainingConsumer(state.range(0) != 0));
    }
    const tagBlkLogItem item = MakeItem();
    for (auto _ : state) {
        benchmark::DoNotOptimize(m_pProducer->SetLogItem(item));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PushThreads)->ArgName("consumer")->Arg(0)->Arg(1)->ThreadRange(1, 4)->UseRealTime();

// Control block shared with the producer processes: a generation number starts a round, each
// producer counts itself done at the end of it.
struct BlkBenchControlTag {
    std::atomic<uint32_t> u4Generation;
    std::atomic<uint32_t> u4Done;
    std::atomic<bool> bQuit;
};

void PushRecords(uint32_t u4Count) {
    const tagBlkLogItem item = MakeItem();
    for (uint32_t i = 0; i < u4Count; ++i) {
        m_pProducer->SetLogItem(item);
    }
}

// A long-lived producer process, as a real one is: it pushes one lap of the ring first (alone,
// so that it writes every slot and its page tables are warm), then one batch per round.
int ProducerProcess(BlkBenchControlTag* pControl) {
    PushRecords(NY_SHMLOG_CAPACITY);
    pControl->u4Done.fetch_add(1);
    uint32_t u4Seen = pControl->u4Generation.load();
    for (;;) {
        while (pControl->u4Generation.load() == u4Seen) {
            usleep(20);
        }
        u4Seen = pControl->u4Generation.load();
        if (pControl->bQuit.load()) {
            return 0;
        }
        PushRecords(NY_BENCH_RECORDS_PER_PROCESS);
        pControl->u4Done.fetch_add(1);
    }
}

void WaitDone(BlkBenchControlTag* pControl, uint32_t u4Count) {
    while (pControl->u4Done.load() < u4Count) {
        sched_yield();
    }
}

// Two producer processes; the time of a round runs from its start to the last one done.
void BM_PushTwoProcesses(benchmark::State& state) {
    constexpr uint32_t u4Processes = 2;
    void* pv = mmap(nullptr, sizeof(BlkBenchControlTag), PROT_READ | PROT_WRITE,
                    MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (pv == MAP_FAILED) {
        state.SkipWithError("no shared control block");
        return;
    }
    BlkBenchControlTag* pControl = new (pv) BlkBenchControlTag{{0}, {0}, {false}};
    std::vector<pid_t> vPids;
    for (uint32_t i = 0; i < u4Processes; ++i) {
        pid_t pid = fork();
        if (pid == 0) {
            _exit(ProducerProcess(pControl));
        }
        vPids.push_back(pid);
        WaitDone(pControl, i + 1);
    }
    {
        CDrainingConsumer consumer(state.range(0) != 0);
        for (auto _ : state) {
            auto tStart = std::chrono::steady_clock::now();
            pControl->u4Done.store(0);
            pControl->u4Generation.fetch_add(1);
            WaitDone(pControl, u4Processes);
            std::chrono::duration<double> dElapsed = std::chrono::steady_clock::now() - tStart;
            state.SetIterationTime(dElapsed.count());
        }
    }
    pControl->bQuit.store(true);
    pControl->u4Generation.fetch_add(1);
    for (pid_t pid : vPids) {
        waitpid(pid, nullptr, 0);
    }
    munmap(pv, sizeof(BlkBenchControlTag));
    state.SetItemsProcessed(state.iterations() * u4Processes * NY_BENCH_RECORDS_PER_PROCESS);
}
BENCHMARK(BM_PushTwoProcesses)->ArgName("consumer")->Arg(0)->Arg(1)->UseManualTime();

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    // The benchmark's own library logging stays off; it measures a private queue.
    static const tagBlkLogParam s_blkLogOff = {NY_LOG_MODE_OFF, {0}};
    NyLogSetInitParam(&s_blkLogOff);
    NyCommonLibInit();
    m_strQueue = "/NyBenchLog-" + std::to_string(getpid());
    CNyShmLogger producer(m_strQueue.c_str(), NY_SHMLOG_CAPACITY);
    if (!producer.Connect(false)) {
        fprintf(stderr, "cannot create the queue %s\n", m_strQueue.c_str());
        return 1;
    }
    m_pProducer = &producer;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    producer.Disconnect();
    shm_unlink(m_strQueue.c_str());
    NyCommonLibRelease();
    return 0;
}
