#include "UictlInterrupt.h"

#include <signal.h>
#include <unistd.h>

namespace {

volatile sig_atomic_t s_bInterrupted = 0;
volatile sig_atomic_t s_bSyncWait = 0;
volatile pid_t s_pidOwnServer = -1;

void OnInterrupt(int /*iSignal*/) {
    if (s_bSyncWait != 0) {
        if (s_pidOwnServer > 0) {
            kill(s_pidOwnServer, SIGTERM);
        }
        _exit(UICTL_EXIT_INTERRUPTED);
    }
    s_bInterrupted = 1;
}

}  // namespace

void UictlCatchInterrupt() {
    struct sigaction sa = {};
    sa.sa_handler = OnInterrupt;
    sa.sa_flags = SA_RESTART;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);
}

bool UictlInterrupted() {
    return s_bInterrupted != 0;
}

void UictlEnterSyncWait(pid_t pidOwnServer) {
    s_pidOwnServer = pidOwnServer;
    s_bSyncWait = 1;
    // A signal that came before the request went out ends the program here.
    if (s_bInterrupted != 0) {
        raise(SIGINT);
    }
}

void UictlLeaveSyncWait() {
    s_bSyncWait = 0;
}
