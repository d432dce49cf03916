// A live UI server seen by a client: the round trip of a status poll through an interaction
// session, and the server's CPU time per second while 0, 1 or 5 sessions sit idle.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "CNyUiClient.h"
#include "NyUiServerProcess.h"
#include "os/NyOs.h"

namespace {

constexpr uint32_t CPU_WINDOW_MS = 5000;

// utime + stime of a process, in seconds.
double ProcessCpuSeconds(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string strLine;
    std::getline(stat, strLine);
    size_t nClose = strLine.rfind(')');
    if (nClose == std::string::npos) {
        return 0.0;
    }
    std::istringstream fields(strLine.substr(nClose + 2));
    std::string strField;
    unsigned long long u8Utime = 0;
    unsigned long long u8Stime = 0;
    // Fields after the name start at field 3 (state); utime and stime are fields 14 and 15.
    for (int i = 3; i <= 15 && fields >> strField; ++i) {
        if (i == 14) {
            u8Utime = std::stoull(strField);
        } else if (i == 15) {
            u8Stime = std::stoull(strField);
        }
    }
    return static_cast<double>(u8Utime + u8Stime) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

bool StartServer(CNyUiClient* pClient, benchmark::State& state) {
    uint32_t u4Result =
        pClient->StartServer(NyUiServerPathBesideSelf().c_str(), NyUiFreshMainName().c_str());
    if (u4Result != NY_OK) {
        state.SkipWithError("the UI server did not start");
        return false;
    }
    return true;
}

void BM_StatusPollRoundTrip(benchmark::State& state) {
    CNyUiClient client;
    if (!StartServer(&client, state) || client.OpenSession(1) != NY_OK) {
        state.SkipWithError("no session");
        return;
    }
    std::vector<double> vMicros;
    tagBlkUiParam blkAnswer;
    for (auto _ : state) {
        auto tStart = std::chrono::steady_clock::now();
        if (client.SendCommand(UI_CMD_GET_STATUS, &blkAnswer) != NY_OK) {
            state.SkipWithError("poll failed");
            return;
        }
        auto tEnd = std::chrono::steady_clock::now();
        vMicros.push_back(std::chrono::duration<double, std::micro>(tEnd - tStart).count());
    }
    std::sort(vMicros.begin(), vMicros.end());
    state.counters["p50_us"] = vMicros[vMicros.size() / 2];
    state.counters["p99_us"] = vMicros[vMicros.size() * 99 / 100];
    state.counters["max_us"] = vMicros.back();
}
BENCHMARK(BM_StatusPollRoundTrip)->Iterations(2000)->Unit(benchmark::kMicrosecond);

void BM_ServerCpuWithIdleSessions(benchmark::State& state) {
    CNyUiClient client;
    if (!StartServer(&client, state)) {
        return;
    }
    std::vector<std::unique_ptr<CNyUiClient>> vSessions;
    for (int i = 0; i < state.range(0); ++i) {
        vSessions.push_back(std::make_unique<CNyUiClient>());
        if (vSessions.back()->JoinServer(client.MainName().c_str()) != NY_OK ||
            vSessions.back()->OpenSession(static_cast<uint32_t>(i + 1)) != NY_OK) {
            state.SkipWithError("no session");
            return;
        }
    }
    NyOsSleep(500);  // let the sessions settle into their idle loop
    double dCpuShare = 0.0;
    for (auto _ : state) {
        double dBefore = ProcessCpuSeconds(client.StartedServerPid());
        NyOsSleep(CPU_WINDOW_MS);
        double dAfter = ProcessCpuSeconds(client.StartedServerPid());
        dCpuShare = (dAfter - dBefore) / (CPU_WINDOW_MS / 1000.0);
    }
    state.counters["server_cpu_pct_of_core"] = 100.0 * dCpuShare;
    state.counters["idle_sessions"] = static_cast<double>(state.range(0));
}
BENCHMARK(BM_ServerCpuWithIdleSessions)
    ->Arg(0)
    ->Arg(1)
    ->Arg(5)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
