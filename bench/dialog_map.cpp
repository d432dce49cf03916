// Time until a PIN dialog is on screen: from the verify request sent to the UI server to the
// dialog window being mapped; the whole way a token library's user waits (main-session start
// request, connect to the new session, verify request, dialog mapped) with a client that takes
// every step of the channel's client side; and the same for pinentry-gtk-2 (from its GETPIN,
// and from its spawn), side by side on one private Xvfb without a window manager. The moment of
// mapping is the MapNotify that an X client watching the root window receives, not a polling
// loop.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "CNyStrictClient.h"
#include "CNyStrictServer.h"
#include "CNyUiClient.h"
#include "NyUiServerProcess.h"
#include "runtime/NyResult.h"
#include "session/NyMainSessionRecord.h"
#include "support/NyTestDisplay.h"
#include "uiblock/NyUiParam.h"

// Last: its macros (None, Bool, Status) clash with names in the headers above.
#include <X11/Xlib.h>

namespace {

constexpr int NY_BENCH_RUNS = 20;
constexpr int NY_BENCH_MAP_TIMEOUT_MS = 10000;
constexpr uint32_t NY_BENCH_CONNECT_MS = 500;
constexpr useconds_t NY_BENCH_SETTLE_US = 300000;

double MonotonicSeconds() {
    struct timespec ts = {};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

// Watches the root window for top-level windows being mapped and unmapped.
class CMapWatch {
public:
    bool Open() {
        m_pDisplay = XOpenDisplay(nullptr);
        if (m_pDisplay == nullptr) {
            return false;
        }
        XSelectInput(m_pDisplay, DefaultRootWindow(m_pDisplay), SubstructureNotifyMask);
        XSync(m_pDisplay, False);
        return true;
    }
    ~CMapWatch() {
        if (m_pDisplay != nullptr) {
            XCloseDisplay(m_pDisplay);
        }
    }
    // Forgets whatever happened so far.
    void Drain() {
        XSync(m_pDisplay, False);
        while (XPending(m_pDisplay) > 0) {
            XEvent ev;
            XNextEvent(m_pDisplay, &ev);
        }
    }
    // Monotonic time at which the next event of that type for a managed (not override-redirect)
    // window arrived; 0 after the time-out.
    double WaitFor(int iType) {
        double dDeadline = MonotonicSeconds() + NY_BENCH_MAP_TIMEOUT_MS / 1000.0;
        int fd = ConnectionNumber(m_pDisplay);
        while (MonotonicSeconds() < dDeadline) {
            while (XPending(m_pDisplay) > 0) {
                XEvent ev;
                XNextEvent(m_pDisplay, &ev);
                if (ev.type == iType && IsManaged(ev)) {
                    return MonotonicSeconds();
                }
            }
            struct pollfd pfd = {fd, POLLIN, 0};
            poll(&pfd, 1, 5);
        }
        return 0;
    }

private:
    static bool IsManaged(const XEvent& ev) {
        return ev.type != MapNotify || ev.xmap.override_redirect == False;
    }
    Display* m_pDisplay = nullptr;
};

// One private display for the whole program.
CNyTestDisplay& Display() {
    static CNyTestDisplay s_display;
    if (s_display.Name().empty()) {
        s_display.Start(false, false);
    }
    return s_display;
}

// A verify request as the benchmarks send it: asynchronous, so that its answer comes at once.
tagBlkUiParam VerifyRequest() {
    tagBlkUiParam req;
    memset(&req, 0, sizeof(req));
    req.enUiCmdType = UI_CMD_VERIFY_PIN;
    req.u4Mode = UI_MODE_ASYNC;
    NyUiParamSetU4(&req, UI_OFS_VERIFY_MIN_LEN, 6);
    NyUiParamSetU4(&req, UI_OFS_VERIFY_MAX_LEN, 16);
    return req;
}

void BM_UiServerVerifyRequestToMap(benchmark::State& state) {
    Display();
    CMapWatch watch;
    CNyUiClient client;
    if (!watch.Open() ||
        client.StartServer(NyUiServerPathBesideSelf().c_str(), NyUiFreshMainName().c_str()) != 0 ||
        client.OpenSession(1) != 0) {
        state.SkipWithError("no display or no server");
        return;
    }
    usleep(NY_BENCH_SETTLE_US);
    tagBlkUiParam req = VerifyRequest();
    for (auto _ : state) {
        watch.Drain();
        tagBlkUiParam resp;
        double dStart = MonotonicSeconds();
        uint32_t u4Result = client.Exchange(&req, &resp);
        double dMapped = watch.WaitFor(MapNotify);
        if (u4Result != 0 || resp.enRes != UI_RESULT_PENDING || dMapped == 0) {
            state.SkipWithError("the dialog did not appear");
            break;
        }
        state.SetIterationTime(dMapped - dStart);
        client.SendCommand(UI_CMD_TERMINATE, &resp);
        watch.WaitFor(UnmapNotify);
    }
    client.CloseSession();
}

// A main-session request of type u4Type for interaction u4Id; the session's name into pstrName.
uint32_t MainRequest(CNyStrictClient* pMain, uint32_t u4Type, uint32_t u4Id,
                     std::string* pstrName) {
    BlkMainSessionRequestTag blkReq = {};
    blkReq.u4ReqType = u4Type;
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

// What a token library's user waits for: the main session's start request, the connect to the
// new session, the verify request, and the dialog on screen. The steps' own medians are
// reported as counters (milliseconds from the start).
void BM_StrictClientStartToMap(benchmark::State& state) {
    Display();
    CMapWatch watch;
    CNyStrictServer server;
    if (!watch.Open() || !server.Start(NyUiServerPathBesideSelf(), NY_BENCH_CONNECT_MS)) {
        state.SkipWithError("no display or no server");
        return;
    }
    // A server that has been running a moment, as a token library finds it after its first use.
    usleep(NY_BENCH_SETTLE_US);
    tagBlkUiParam req = VerifyRequest();
    uint32_t u4Id = 1;
    for (auto _ : state) {
        watch.Drain();
        std::string strSession;
        CNyStrictClient session;
        tagBlkUiParam resp;
        double dStart = MonotonicSeconds();
        bool bOk = MainRequest(&server.main, MAIN_REQ_START_SESSION, u4Id, &strSession) == NY_OK;
        double dStarted = MonotonicSeconds();
        bOk = bOk && session.Open(strSession) == NY_OK &&
              session.Connect(NY_BENCH_CONNECT_MS) == NY_OK;
        double dConnected = MonotonicSeconds();
        bOk = bOk && session.Request(&req, sizeof(req), &resp, sizeof(resp)) == NY_OK &&
              resp.enRes == UI_RESULT_PENDING;
        double dAnswered = MonotonicSeconds();
        double dMapped = bOk ? watch.WaitFor(MapNotify) : 0;
        if (dMapped == 0) {
            state.SkipWithError("the dialog did not appear");
            break;
        }
        state.SetIterationTime(dMapped - dStart);
        state.counters["start_answered_ms"] = (dStarted - dStart) * 1e3;
        state.counters["connected_ms"] = (dConnected - dStart) * 1e3;
        state.counters["verify_answered_ms"] = (dAnswered - dStart) * 1e3;
        tagBlkUiParam term;
        memset(&term, 0, sizeof(term));
        term.enUiCmdType = UI_CMD_TERMINATE;
        session.Request(&term, sizeof(term), &resp, sizeof(resp));
        watch.WaitFor(UnmapNotify);
        session.Close();
        MainRequest(&server.main, MAIN_REQ_FINISH_SESSION, u4Id++, &strSession);
    }
}

// pinentry-gtk-2 with its standard input and output on pipes.
struct BlkPinentryTag {
    pid_t pid = -1;
    int fdIn = -1;   // we write commands here
    int fdOut = -1;  // and read its answers here
};

bool SpawnPinentry(BlkPinentryTag* pBlk) {
    int aiIn[2];
    int aiOut[2];
    if (pipe(aiIn) != 0 || pipe(aiOut) != 0) {
        return false;
    }
    pBlk->pid = fork();
    if (pBlk->pid == 0) {
        dup2(aiIn[0], STDIN_FILENO);
        dup2(aiOut[1], STDOUT_FILENO);
        int fdNull = open("/dev/null", O_WRONLY);
        dup2(fdNull, STDERR_FILENO);
        close(aiIn[1]);
        close(aiOut[0]);
        execlp("pinentry-gtk-2", "pinentry-gtk-2", static_cast<char*>(nullptr));
        _exit(127);
    }
    close(aiIn[0]);
    close(aiOut[1]);
    pBlk->fdIn = aiIn[1];
    pBlk->fdOut = aiOut[0];
    return pBlk->pid > 0;
}

// Reads up to the end of the first answer line ("OK ..." greeting).
bool ReadLine(int fd) {
    char ch = 0;
    struct pollfd pfd = {fd, POLLIN, 0};
    while (poll(&pfd, 1, NY_BENCH_MAP_TIMEOUT_MS) > 0 && read(fd, &ch, 1) == 1) {
        if (ch == '\n') {
            return true;
        }
    }
    return false;
}

void EndPinentry(BlkPinentryTag* pBlk) {
    close(pBlk->fdIn);
    close(pBlk->fdOut);
    kill(pBlk->pid, SIGKILL);
    waitpid(pBlk->pid, nullptr, 0);
}

// bFromSpawn: time from the spawn, else from the GETPIN command.
void MeasurePinentry(benchmark::State& state, bool bFromSpawn) {
    Display();
    CMapWatch watch;
    if (!watch.Open()) {
        state.SkipWithError("no display");
        return;
    }
    for (auto _ : state) {
        watch.Drain();
        BlkPinentryTag blk;
        double dSpawn = MonotonicSeconds();
        if (!SpawnPinentry(&blk) || !ReadLine(blk.fdOut)) {
            state.SkipWithError("pinentry-gtk-2 did not start");
            break;
        }
        double dGetPin = MonotonicSeconds();
        const char szCommand[] = "GETPIN\n";
        bool bSent = write(blk.fdIn, szCommand, sizeof(szCommand) - 1) ==
                     static_cast<ssize_t>(sizeof(szCommand) - 1);
        double dMapped = watch.WaitFor(MapNotify);
        EndPinentry(&blk);
        if (!bSent || dMapped == 0) {
            state.SkipWithError("pinentry-gtk-2 showed no window");
            break;
        }
        state.SetIterationTime(dMapped - (bFromSpawn ? dSpawn : dGetPin));
        watch.WaitFor(UnmapNotify);
    }
}

void BM_PinentryGetpinToMap(benchmark::State& state) {
    MeasurePinentry(state, false);
}
void BM_PinentrySpawnToMap(benchmark::State& state) {
    MeasurePinentry(state, true);
}

}  // namespace

BENCHMARK(BM_UiServerVerifyRequestToMap)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(NY_BENCH_RUNS)
    ->ReportAggregatesOnly(true)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StrictClientStartToMap)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(NY_BENCH_RUNS)
    ->ReportAggregatesOnly(true)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PinentryGetpinToMap)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(NY_BENCH_RUNS)
    ->ReportAggregatesOnly(true)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PinentrySpawnToMap)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(NY_BENCH_RUNS)
    ->ReportAggregatesOnly(true)
    ->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
