// Time until a PIN dialog is on screen: from the verify request sent to the UI server to the
// dialog window being mapped, and the same for pinentry-gtk-2 (from its GETPIN, and from its
// spawn), side by side on one private Xvfb without a window manager. The moment of mapping is
// the MapNotify that an X client watching the root window receives, not a polling loop.
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

#include "CNyUiClient.h"
#include "NyUiServerProcess.h"
#include "support/NyTestDisplay.h"
#include "uiblock/NyUiParam.h"

// Last: its macros (None, Bool, Status) clash with names in the headers above.
#include <X11/Xlib.h>

namespace {

constexpr int NY_BENCH_RUNS = 20;
constexpr int NY_BENCH_MAP_TIMEOUT_MS = 10000;

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
    static bool s_bStarted = (s_display.Start(false, false), true);
    (void)s_bStarted;
    return s_display;
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
    tagBlkUiParam req;
    memset(&req, 0, sizeof(req));
    req.enUiCmdType = UI_CMD_VERIFY_PIN;
    req.u4Mode = UI_MODE_ASYNC;
    NyUiParamSetU4(&req, UI_OFS_VERIFY_MIN_LEN, 6);
    NyUiParamSetU4(&req, UI_OFS_VERIFY_MAX_LEN, 16);
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
