// Channel costs between real processes: the round trip of a 4096-byte request and answer
// (client here, server in a forked child), and the CPU an idle server channel burns.
#include <benchmark/benchmark.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

#include "comm/NyCommunication.h"
#include "os/NyCommonLib.h"
#include "os/NyOs.h"

namespace {

constexpr uint32_t BLOCK_SIZE = COMM_DEFAULT_DATA_SIZE;
constexpr uint32_t QUIT_LENGTH = 1;  // a one-byte request ends the echo server
constexpr uint32_t IDLE_MS = 2000;

BlkCommInitParamTag Param(const char* szName) {
    BlkCommInitParamTag blkParam = {};
    blkParam.u4Type = COMM_INIT_TYPE_PLAIN;
    std::snprintf(blkParam.blkShm.szName, sizeof(blkParam.blkShm.szName), "%s", szName);
    blkParam.blkShm.u4DataSize = BLOCK_SIZE;
    return blkParam;
}

void UniqueName(char* szName, size_t cchName, const char* szKind) {
    static std::atomic<unsigned> s_u4Counter{0};
    std::snprintf(szName, cchName, "bench-comm-%s-%d-%u", szKind, static_cast<int>(getpid()),
                  s_u4Counter.fetch_add(1));
}

// Answers every request with the same bytes until the one-byte quit request.
int EchoServer(const char* szName) {
    BlkCommInitParamTag blkParam = Param(szName);
    NY_COMM_HANDLE hSession = nullptr;
    if (NyCommConnectAsServer(&blkParam, &hSession) != 0) {
        return 1;
    }
    std::vector<uint8_t> vBuffer(BLOCK_SIZE);
    for (;;) {
        uint32_t u4Length = BLOCK_SIZE;
        uint32_t u4Result = NyCommListen(hSession, vBuffer.data(), &u4Length);
        if (u4Result == static_cast<uint32_t>(EAGAIN)) {
            continue;
        }
        if (u4Result != 0) {
            break;
        }
        BlkCommNotifyDataTag blkNotify = {COMM_SIGNAL_RESPONSE, vBuffer.data(), u4Length};
        NyCommNotify(hSession, &blkNotify);
        if (u4Length == QUIT_LENGTH) {
            break;
        }
    }
    NyCommDisconnect(hSession);
    return 0;
}

uint32_t ConnectWithRetry(const char* szName, NY_COMM_HANDLE* phSession) {
    BlkCommInitParamTag blkParam = Param(szName);
    uint32_t u4Result = 0;
    for (int i = 0; i < 500; ++i) {
        u4Result = NyCommConnect(&blkParam, 500, phSession);
        if (u4Result == 0) {
            break;
        }
        NyOsSleep(10);
    }
    return u4Result;
}

double Percentile(std::vector<double> vSamples, double dFraction) {
    if (vSamples.empty()) {
        return 0;
    }
    size_t uIndex = static_cast<size_t>(dFraction * static_cast<double>(vSamples.size() - 1));
    std::nth_element(vSamples.begin(), vSamples.begin() + uIndex, vSamples.end());
    return vSamples[uIndex];
}

void BM_RoundTrip4096(benchmark::State& state) {
    char szName[128];
    UniqueName(szName, sizeof(szName), "rt");
    pid_t pidServer = fork();
    if (pidServer == 0) {
        _exit(EchoServer(szName));
    }
    NY_COMM_HANDLE hSession = nullptr;
    if (pidServer < 0 || ConnectWithRetry(szName, &hSession) != 0) {
        state.SkipWithError("server did not come up");
        if (pidServer > 0) {
            kill(pidServer, SIGKILL);
            waitpid(pidServer, nullptr, 0);
        }
        return;
    }
    std::vector<uint8_t> vRequest(BLOCK_SIZE, 0x5A);
    std::vector<uint8_t> vAnswer(BLOCK_SIZE);
    std::vector<double> vMicros;
    vMicros.reserve(static_cast<size_t>(state.max_iterations));
    for (auto _ : state) {
        timespec tsStart = {};
        timespec tsEnd = {};
        clock_gettime(CLOCK_MONOTONIC, &tsStart);
        uint32_t u4Result =
            NyCommCommit(hSession, vRequest.data(), BLOCK_SIZE, vAnswer.data(), BLOCK_SIZE);
        clock_gettime(CLOCK_MONOTONIC, &tsEnd);
        if (u4Result != 0) {
            state.SkipWithError("commit failed");
            break;
        }
        vMicros.push_back(static_cast<double>(tsEnd.tv_sec - tsStart.tv_sec) * 1e6 +
                          static_cast<double>(tsEnd.tv_nsec - tsStart.tv_nsec) / 1e3);
    }
    uint8_t u1Quit = 0;
    NyCommCommit(hSession, &u1Quit, QUIT_LENGTH, nullptr, 0);
    NyCommDisconnect(hSession);
    waitpid(pidServer, nullptr, 0);
    state.counters["p50_us"] = Percentile(vMicros, 0.50);
    state.counters["p99_us"] = Percentile(vMicros, 0.99);
    state.counters["max_us"] = Percentile(vMicros, 1.0);
    state.counters["round_trips"] = static_cast<double>(vMicros.size());
}
BENCHMARK(BM_RoundTrip4096)->Iterations(3000)->Unit(benchmark::kMicrosecond);

double ProcessCpuMicros() {
    timespec ts = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) * 1e6 + static_cast<double>(ts.tv_nsec) / 1e3;
}

// CPU per second of wall time of one server channel left idle: its heartbeat only, or its
// heartbeat plus a request loop listening the way the server's loops do.
void BM_IdleServerCpu(benchmark::State& state) {
    bool bListening = state.range(0) != 0;
    char szName[128];
    UniqueName(szName, sizeof(szName), "idle");
    BlkCommInitParamTag blkParam = Param(szName);
    NY_COMM_HANDLE hSession = nullptr;
    if (NyCommConnectAsServer(&blkParam, &hSession) != 0) {
        state.SkipWithError("server start failed");
        return;
    }
    std::atomic<bool> bStop{false};
    std::thread listener([&] {
        std::vector<uint8_t> vBuffer(BLOCK_SIZE);
        while (bListening && !bStop) {
            uint32_t u4Length = BLOCK_SIZE;
            NyCommListen(hSession, vBuffer.data(), &u4Length);
        }
    });
    double dCpuUs = 0;
    for (auto _ : state) {
        double dStart = ProcessCpuMicros();
        NyOsSleep(IDLE_MS);
        dCpuUs = ProcessCpuMicros() - dStart;
    }
    bStop = true;
    listener.join();
    NyCommDisconnect(hSession);
    state.counters["cpu_us_per_s"] = dCpuUs * 1000.0 / IDLE_MS;
    state.counters["cpu_percent"] = dCpuUs / (IDLE_MS * 10.0);
}
BENCHMARK(BM_IdleServerCpu)
    ->ArgName("listening")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    NyCommonLibInit();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    NyCommonLibRelease();
    return 0;
}
