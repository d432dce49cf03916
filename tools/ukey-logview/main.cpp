// ukey-logview: shows the records of the shared-memory log queue.
#include <signal.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "CNyLogViewer.h"
#include "NyLogViewOptions.h"
#include "NyToolArgs.h"
#include "log/NyLog.h"
#include "os/NyCommonLib.h"
#include "runtime/NyResult.h"

namespace {

constexpr int NY_EXIT_OK = 0;
constexpr int NY_EXIT_NOT_ATTACHED = 1;

volatile sig_atomic_t m_bStop = 0;
// The viewer's own library logging stays off: it reads the queue, it does not feed it.
const tagBlkLogParam cg_blkViewerLogOff = {NY_LOG_MODE_OFF, {0}};

void OnStopSignal(int) {
    m_bStop = 1;
}

// Ctrl-C and SIGTERM end the loop so that the viewer detaches; a closed pipe shows up as an
// output error instead of killing the process.
void InstallSignals() {
    struct sigaction sa = {};
    sa.sa_handler = OnStopSignal;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);
    signal(SIGPIPE, SIG_IGN);
}

int RunViewer(const BlkLogViewOptionsTag& opts) {
    CNyLogViewer viewer(opts);
    std::string strError;
    if (!viewer.Attach(&strError)) {
        fprintf(stderr, "ukey-logview: %s\n", strError.c_str());
        return NY_EXIT_NOT_ATTACHED;
    }
    viewer.Run(stdout, &m_bStop);
    viewer.Detach();
    return NY_EXIT_OK;
}

}  // namespace

int main(int argc, char** argv) {
    BlkLogViewOptionsTag opts;
    std::string strError;
    if (NyLogViewParseOptions(argc, argv, opts, strError) != NY_OK) {
        return NyToolUsageError("ukey-logview", strError);
    }
    if (opts.bHelp || opts.bVersion) {
        fputs(opts.bHelp ? NyLogViewHelpText().c_str() : NyToolVersionLine("ukey-logview").c_str(),
              stdout);
        return NY_EXIT_OK;
    }
    InstallSignals();
    NyLogSetInitParam(&cg_blkViewerLogOff);
    NyCommonLibInit();
    int iExit = RunViewer(opts);
    NyCommonLibRelease();
    return iExit;
}
