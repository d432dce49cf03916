// Ctrl-C (SIGINT) and SIGTERM while ukey-uictl waits for a dialog: the dialog it asked for is
// closed and the program exits with UICTL_EXIT_INTERRUPTED.
//
// While an asynchronous dialog is polled the signal only sets a flag: the poll loop sends the
// terminate and returns UICTL_ERR_INTERRUPTED. A synchronous request blocks until the dialog
// answers, so there the handler ends the program at once: it stops a server this program
// started, and a joined server closes the dialog of a client that has gone.
#pragma once

#include <sys/types.h>

#include <cstdint>

// Returned by the waiting steps when the wait was interrupted.
constexpr uint32_t UICTL_ERR_INTERRUPTED = 0xE06000FE;
constexpr int UICTL_EXIT_INTERRUPTED = 130;

void UictlCatchInterrupt();
bool UictlInterrupted();
// Marks a synchronous request in flight (pidOwnServer: the server to stop, or -1), or its end.
void UictlEnterSyncWait(pid_t pidOwnServer);
void UictlLeaveSyncWait();
