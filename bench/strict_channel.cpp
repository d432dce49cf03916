// What a token library that follows the channel's client side step by step pays against a
// running ukey-uiserver (separate process): a main-session round trip, a status poll on an
// interaction session, the first connect to a session just started, and 100 client processes
// that connect and start a session at the same moment; how long a server whose main channel was
// removed under it takes to serve again and how many log records it writes meanwhile, and how
// soon a new server takes over the name of a killed one.
//   bench_strict_channel [--server=PATH] [benchmark flags]
// --server measures another build of the server (default: the one beside this program).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "CNyStrictClient.h"
#include "CNyStrictServer.h"
#include "NyUiServerProcess.h"
#include "comm/BlkShmCommHeader.h"
#include "ipc/NyIpcName.h"
#include "ipc/NyShareMem.h"
#include "log/CLockfreeArrayQueue.h"
#include "log/CNyShmLogger.h"
#include "os/NyCommonLib.h"
#include "session/NyMainSessionRecord.h"
#include "uiblock/NyUiParam.h"

namespace {

constexpr uint32_t STORM_CLIENTS = 100;
constexpr uint32_t CONNECT_MS = 500;
// The storm's aim: every client of a round through within this.
constexpr double STORM_SLOWEST_AIM_US = 50000.0;
std::string g_strServer;
std::string g_strSelf;

using Clock = std::chrono::steady_clock;

double MicrosSince(Clock::time_point tStart) {
    return std::chrono::duration<double, std::micro>(Clock::now() - tStart).count();
}

void Percentiles(benchmark::State& state, std::vector<double> v) {
    if (v.empty()) {
        return;
    }
    std::sort(v.begin(), v.end());
    state.counters["p50_us"] = v[v.size() / 2];
    state.counters["p99_us"] = v[v.size() * 99 / 100];
    state.counters["max_us"] = v.back();
}

uint32_t StartSession(CNyStrictClient* pMain, uint32_t u4Id, std::string* pstrName) {
    BlkMainSessionRequestTag blkReq = {};
    blkReq.u4ReqType = MAIN_REQ_START_SESSION;
    blkReq.uInteractionID = u4Id;
    blkReq.uClientPid = static_cast<uint32_t>(getpid());
    BlkMainSessionResponseTag blkResp = {};
    uint32_t u4Result = pMain->Request(&blkReq, sizeof(blkReq), &blkResp, sizeof(blkResp));
    if (u4Result == NY_OK && blkResp.u4Status != MAIN_STATUS_DONE) {
        u4Result = NY_ERR_UNEXPECTED;
    }
    pstrName->assign(blkResp.szSessionName, strnlen(blkResp.szSessionName, 256));
    return u4Result;
}

// Starts the server, a session on it and connects pSession to that session.
bool StartAndConnectSession(CNyStrictServer* pServer, CNyStrictClient* pSession) {
    std::string strSession;
    return pServer->Start(g_strServer, CONNECT_MS) &&
           StartSession(&pServer->main, 1, &strSession) == NY_OK &&
           pSession->Open(strSession) == NY_OK && pSession->Connect(CONNECT_MS) == NY_OK;
}

// Times one request per iteration on pClient and reports the percentiles of the round trips.
template <typename TReq, typename TResp>
void TimeRequests(benchmark::State& state, CNyStrictClient* pClient, TReq blkReq, TResp* pResp) {
    std::vector<double> vMicros;
    for (auto _ : state) {
        auto tStart = Clock::now();
        if (pClient->Request(&blkReq, sizeof(blkReq), pResp, sizeof(*pResp)) != NY_OK) {
            state.SkipWithError("request failed");
            return;
        }
        vMicros.push_back(MicrosSince(tStart));
    }
    Percentiles(state, vMicros);
}

void BM_MainRoundTrip(benchmark::State& state) {
    CNyStrictServer server;
    if (!server.Start(g_strServer, CONNECT_MS)) {
        state.SkipWithError("the server did not start");
        return;
    }
    BlkMainSessionRequestTag blkReq = {};  // type 0: answered with status 0
    BlkMainSessionResponseTag blkResp = {};
    TimeRequests(state, &server.main, blkReq, &blkResp);
}
BENCHMARK(BM_MainRoundTrip)->Iterations(1000)->Unit(benchmark::kMicrosecond);

void BM_SessionStatusPoll(benchmark::State& state) {
    CNyStrictServer server;
    CNyStrictClient session;
    if (!StartAndConnectSession(&server, &session)) {
        state.SkipWithError("no session");
        return;
    }
    tagBlkUiParam blkReq = {};
    blkReq.enUiCmdType = UI_CMD_GET_STATUS;
    tagBlkUiParam blkResp = {};
    TimeRequests(state, &session, blkReq, &blkResp);
}
BENCHMARK(BM_SessionStatusPoll)->Iterations(1000)->Unit(benchmark::kMicrosecond);

// How long an answer stays readable in the session's region after its client has read it and
// released the channel (the server wipes it then).
void BM_AnswerReadableAfterRequest(benchmark::State& state) {
    CNyStrictServer server;
    CNyStrictClient session;
    if (!StartAndConnectSession(&server, &session)) {
        state.SkipWithError("no session");
        return;
    }
    std::vector<double> vMicros;
    tagBlkUiParam blkReq = {};
    blkReq.enUiCmdType = UI_CMD_GET_STATUS;
    std::fill(blkReq.au1Payload, blkReq.au1Payload + sizeof(blkReq.au1Payload), 0x5A);
    tagBlkUiParam blkResp = {};
    for (auto _ : state) {
        if (session.Request(&blkReq, sizeof(blkReq), &blkResp, sizeof(blkResp)) != NY_OK) {
            state.SkipWithError("poll failed");
            return;
        }
        auto tStart = Clock::now();
        uint8_t u1Byte = 0x5A;
        while (u1Byte != 0 && MicrosSince(tStart) < 1e6) {
            NyShareMemRead(session.Region(), COMM_DATA_OFFSET + NY_UI_PAYLOAD_OFFSET, &u1Byte, 1);
        }
        vMicros.push_back(MicrosSince(tStart));
    }
    Percentiles(state, vMicros);
}
BENCHMARK(BM_AnswerReadableAfterRequest)->Iterations(200)->Unit(benchmark::kMicrosecond);

// From the start answer to a connected session channel.
void BM_FirstConnectToNewSession(benchmark::State& state) {
    CNyStrictServer server;
    if (!server.Start(g_strServer, CONNECT_MS)) {
        state.SkipWithError("the server did not start");
        return;
    }
    std::vector<double> vMicros;
    uint32_t u4Id = 1;
    for (auto _ : state) {
        std::string strSession;
        if (StartSession(&server.main, u4Id++, &strSession) != NY_OK) {
            state.SkipWithError("start failed");
            return;
        }
        auto tStart = Clock::now();
        CNyStrictClient session;
        if (session.Open(strSession) != NY_OK || session.Connect(CONNECT_MS) != NY_OK) {
            state.SkipWithError("connect failed");
            return;
        }
        vMicros.push_back(MicrosSince(tStart));
    }
    Percentiles(state, vMicros);
}
BENCHMARK(BM_FirstConnectToNewSession)->Iterations(100)->Unit(benchmark::kMicrosecond);

// One storm client (a process of its own): waits for the start pipe to close, then connects to
// the main channel, starts a session and connects to it; writes its time in µs, or -1.
int StormChild(const std::string& strMain, int iGoFd, int iResultFd) {
    NyCommonLibInit();
    CNyStrictClient main;
    bool bOpen = main.Open(strMain) == NY_OK;
    char c = 0;
    while (read(iGoFd, &c, 1) > 0) {
    }
    auto tStart = Clock::now();
    std::string strSession;
    CNyStrictClient session;
    // A failure is reported as minus the number of the step that failed.
    int iStep = !bOpen                                                                       ? 1
                : main.Connect(CONNECT_MS) != NY_OK                                          ? 2
                : StartSession(&main, static_cast<uint32_t>(getpid()), &strSession) != NY_OK ? 3
                : session.Open(strSession) != NY_OK                                          ? 4
                : session.Connect(CONNECT_MS) != NY_OK                                       ? 5
                                                                                             : 0;
    double dMicros = iStep == 0 ? MicrosSince(tStart) : -static_cast<double>(iStep);
    ssize_t nWritten = write(iResultFd, &dMicros, sizeof(dMicros));
    session.Close();
    main.Close();
    NyCommonLibRelease();
    return nWritten == sizeof(dMicros) ? 0 : 1;
}

void BM_ConnectStorm100(benchmark::State& state) {
    CNyStrictServer server;
    if (!server.Start(g_strServer, CONNECT_MS)) {
        state.SkipWithError("the server did not start");
        return;
    }
    std::vector<double> vSlowest;
    uint32_t u4Failed = 0;
    uint32_t au4FailedAt[6] = {};
    for (auto _ : state) {
        int aiGo[2];
        int aiResult[2];
        if (pipe(aiGo) != 0 || pipe(aiResult) != 0) {
            state.SkipWithError("pipe");
            return;
        }
        std::vector<pid_t> vChildren;
        for (uint32_t i = 0; i < STORM_CLIENTS; ++i) {
            pid_t pid = fork();
            if (pid == 0) {
                close(aiGo[1]);
                close(aiResult[0]);
                std::string strGo = std::to_string(aiGo[0]);
                std::string strRes = std::to_string(aiResult[1]);
                execl(g_strSelf.c_str(), g_strSelf.c_str(), "--storm-child", server.strMain.c_str(),
                      strGo.c_str(), strRes.c_str(), static_cast<char*>(nullptr));
                _exit(127);
            }
            vChildren.push_back(pid);
        }
        close(aiGo[0]);
        close(aiResult[1]);
        usleep(500000);  // every child has opened the channel and waits at the pipe
        close(aiGo[1]);
        double dSlowest = 0.0;
        double dMicros = 0.0;
        uint32_t u4Answers = 0;
        while (read(aiResult[0], &dMicros, sizeof(dMicros)) == sizeof(dMicros)) {
            ++u4Answers;
            if (dMicros < 0) {
                ++u4Failed;
                ++au4FailedAt[static_cast<int>(-dMicros) % 6];
            } else {
                dSlowest = std::max(dSlowest, dMicros);
            }
        }
        u4Failed += STORM_CLIENTS - u4Answers;
        close(aiResult[0]);
        for (pid_t pid : vChildren) {
            waitpid(pid, nullptr, 0);
        }
        vSlowest.push_back(dSlowest);
    }
    std::sort(vSlowest.begin(), vSlowest.end());
    state.counters["slowest_p50_us"] = vSlowest[vSlowest.size() / 2];
    state.counters["slowest_max_us"] = vSlowest.back();
    state.counters["rounds_over_50ms"] = static_cast<double>(std::count_if(
        vSlowest.begin(), vSlowest.end(), [](double dUs) { return dUs > STORM_SLOWEST_AIM_US; }));
    state.counters["failed_clients"] = u4Failed;
    for (int i = 1; i < 6; ++i) {
        if (au4FailedAt[i] != 0) {
            state.counters["failed_at_step_" + std::to_string(i)] = au4FailedAt[i];
        }
    }
}
BENCHMARK(BM_ConnectStorm100)->Iterations(10)->Unit(benchmark::kMillisecond);

// A fresh client (objects opened anew) that gets an answer from the server of pid.
bool ServedBy(const std::string& strMain, pid_t pid) {
    CNyStrictClient client;
    BlkMainSessionRequestTag blkReq = {};
    BlkMainSessionResponseTag blkResp = {};
    return client.Open(strMain) == NY_OK && client.Connect(20) == NY_OK &&
           client.Request(&blkReq, sizeof(blkReq), &blkResp, sizeof(blkResp)) == NY_OK &&
           blkResp.uServerPid == static_cast<uint32_t>(pid);
}

// Microseconds until ServedBy succeeds (tried every millisecond), or -1 after 5 s.
double MicrosUntilServed(const std::string& strMain, pid_t pid, Clock::time_point tStart) {
    while (!ServedBy(strMain, pid)) {
        if (MicrosSince(tStart) > 5e6) {
            return -1.0;
        }
        usleep(1000);
    }
    return MicrosSince(tStart);
}

// The machine-wide log ring, read-only in effect: counts the records of one process written
// since Mark().
class LogRecordCounter {
public:
    LogRecordCounter() {
        m_cbLen = CLockfreeArrayQueue::CalcBufferLen(NY_SHMLOG_CAPACITY);
        int fd = shm_open(NY_SHMLOG_QUEUE_NAME, O_RDWR, 0);
        void* pv = fd >= 0 ? mmap(nullptr, m_cbLen, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0)
                           : MAP_FAILED;
        if (fd >= 0) {
            close(fd);
        }
        m_pvMap = pv != MAP_FAILED ? pv : nullptr;
        m_bOk = m_pvMap != nullptr && m_ring.Initialize(m_pvMap, m_cbLen, NY_SHMLOG_CAPACITY, true);
    }
    ~LogRecordCounter() {
        if (m_pvMap != nullptr) {
            munmap(m_pvMap, m_cbLen);
        }
    }
    bool Ok() const { return m_bOk; }
    void Mark() { m_u4Pos = static_cast<const BlkLockfreeQueueTag*>(m_pvMap)->u4Commit; }
    uint32_t CountOf(pid_t pid) {
        std::vector<tagBlkLogItem> vItems(256);
        uint32_t u4Count = 0;
        while (unsigned int n = m_ring.Peek(m_u4Pos, vItems.data(), 256)) {
            u4Count += static_cast<uint32_t>(
                std::count_if(vItems.begin(), vItems.begin() + n, [pid](const tagBlkLogItem& item) {
                    return item.u4Pid == static_cast<uint32_t>(pid);
                }));
        }
        return u4Count;
    }

private:
    CLockfreeArrayQueue m_ring;
    void* m_pvMap = nullptr;
    size_t m_cbLen = 0;
    uint32_t m_u4Pos = 0;
    bool m_bOk = false;
};

// What any local user can do to the main channel: remove its two files, or its event sets.
void RemoveMainObjects(const std::string& strMain, bool bFiles) {
    char szPath[NY_IPC_PATH_SIZE];
    if (bFiles) {
        std::string strMutex = strMain + "_Mutex_Communication";
        FileName2Path(strMain.c_str(), NY_FILE_KIND_SHM, szPath, sizeof(szPath));
        unlink(szPath);
        FileName2Path(strMutex.c_str(), NY_FILE_KIND_MUTEX, szPath, sizeof(szPath));
        unlink(szPath);
        return;
    }
    for (const char* szSuffix : {"_Event_Request", "_Event_Response", "_Event_Connected"}) {
        std::string strEvent = strMain + szSuffix;
        key_t key = static_cast<key_t>(UnixName2Key(NY_KEY_KIND_EVENT, strEvent.c_str()));
        semctl(semget(key, 2, 0), 0, IPC_RMID);
    }
}

// Arg 0: the files removed, 1: the event sets. From the removal to a new client served, and the
// server's log records from the removal to 200 ms after that.
void BM_MainChannelOutage(benchmark::State& state) {
    LogRecordCounter counter;
    std::vector<double> vMicros;
    std::vector<double> vRecords;
    for (auto _ : state) {
        CNyStrictServer server;
        if (!counter.Ok() || !server.Start(g_strServer, CONNECT_MS)) {
            state.SkipWithError("no server or no log ring");
            return;
        }
        server.main.Close();
        usleep(300000);  // the start's own records are written
        counter.Mark();
        auto tStart = Clock::now();
        RemoveMainObjects(server.strMain, state.range(0) == 0);
        double dMicros = MicrosUntilServed(server.strMain, server.pid, tStart);
        usleep(200000);
        vRecords.push_back(counter.CountOf(server.pid));
        if (dMicros < 0) {
            state.SkipWithError("not served again");
            return;
        }
        vMicros.push_back(dMicros);
    }
    Percentiles(state, vMicros);
    std::sort(vRecords.begin(), vRecords.end());
    state.counters["log_records_p50"] = vRecords[vRecords.size() / 2];
    state.counters["log_records_max"] = vRecords.back();
}
BENCHMARK(BM_MainChannelOutage)->Arg(0)->Arg(1)->Iterations(10)->Unit(benchmark::kMillisecond);

// A server killed with -9 while a client still holds its channel; a new server started under
// the same name: from its spawn to a new client served by it.
void BM_TakeoverOfKilledServer(benchmark::State& state) {
    std::vector<double> vMicros;
    for (auto _ : state) {
        CNyStrictServer server;
        if (!server.Start(g_strServer, CONNECT_MS)) {
            state.SkipWithError("the server did not start");
            return;
        }
        kill(server.pid, SIGKILL);
        waitpid(server.pid, nullptr, 0);
        auto tStart = Clock::now();
        uint32_t u4Error = 0;
        server.pid = NyUiServerSpawn(g_strServer.c_str(), server.strMain.c_str(), false, &u4Error);
        double dMicros =
            server.pid > 0 ? MicrosUntilServed(server.strMain, server.pid, tStart) : -1;
        if (dMicros < 0) {
            state.SkipWithError("the name was not taken over");
            return;
        }
        vMicros.push_back(dMicros);
    }
    Percentiles(state, vMicros);
}
BENCHMARK(BM_TakeoverOfKilledServer)->Iterations(20)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    char szSelf[4096] = {};
    ssize_t nSelf = readlink("/proc/self/exe", szSelf, sizeof(szSelf) - 1);
    g_strSelf.assign(szSelf, nSelf > 0 ? static_cast<size_t>(nSelf) : 0);
    if (argc == 5 && strcmp(argv[1], "--storm-child") == 0) {
        return StormChild(argv[2], atoi(argv[3]), atoi(argv[4]));
    }
    g_strServer = NyUiServerPathBesideSelf();
    std::vector<char*> vArgs;
    for (int i = 0; i < argc; ++i) {
        if (strncmp(argv[i], "--server=", 9) == 0) {
            g_strServer = argv[i] + 9;
        } else {
            vArgs.push_back(argv[i]);
        }
    }
    int iArgs = static_cast<int>(vArgs.size());
    NyCommonLibInit();
    benchmark::Initialize(&iArgs, vArgs.data());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    NyCommonLibRelease();
    return 0;
}
