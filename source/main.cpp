// ukey-uiserver MAIN_SESSION_NAME: the UI server process.
#include <X11/Xlib.h>
#include <gtk/gtk.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>

#include <cstdio>
#include <thread>

#include "GUIService.h"
#include "MainServer.h"
#include "NyVersion.h"
#include "SessionManager.h"
#include "SessionRegistry.h"
#include "log/NyLog.h"
#include "os/NyCommonLib.h"
#include "os/NyThread.h"
#include "runtime/NyResult.h"

namespace {

// How long the server waits, at the end, for its sessions to close their channels.
constexpr uint32_t SESSION_END_WAIT_MS = 3000;

void OnStopSignal(int /*iSignal*/) {
    m_bStopServer.store(1);
}

// SIGTERM and SIGINT end the server in order: sessions stopped, channels closed.
void InstallStopSignals() {
    struct sigaction sa = {};
    sa.sa_handler = OnStopSignal;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGTERM, &sa, nullptr);
    sigaction(SIGINT, &sa, nullptr);
}

// X, GLib and GDK are made thread-safe before anything else: dialogs are built and run on
// session threads and dialog threads. Without a display the server still serves sessions,
// but every dialog command answers as a dialog that could not be run. True with a display.
bool InitGui(int* piArgc, char*** pppArgv) {
    XInitThreads();
    g_thread_init(nullptr);
    gdk_threads_init();
    if (!gtk_init_check(piArgc, pppArgv)) {
        GUIService::SetDialogsAvailable(false);
        return false;
    }
    return true;
}

// Exit code of a server that found its main channel served by another live server.
constexpr int EXIT_CHANNEL_BUSY = 3;

uint32_t Serve(char (&szName)[MAIN_SESSION_NAME_BUFFER]) {
    uint32_t u4Result = CreateMainSession(szName);
    if (u4Result != NY_OK) {
        NY_LOG_RESULT(u4Result);
        return u4Result;
    }
    NY_THREAD_HANDLE hKeepAlive = nullptr;
    u4Result = NyThreadBegin(ThreadKeepAlive, szName, &hKeepAlive);
    if (u4Result != NY_OK) {
        NY_LOG_RESULT(u4Result);
        CloseMainSession();
        return u4Result;
    }
    u4Result = ServerThreadEntry();
    // The keep-alive thread is never waited for: it ends with the process.
    NyThreadCloseHandle(hKeepAlive);
    StopAllSessions();
    WaitForSessionsToEnd(SESSION_END_WAIT_MS);
    CloseMainSession();
    return u4Result;
}

// "--help" and "--version" are answered here (no client names its main session that way).
bool AnswerInfoOption(int argc, char** argv) {
    if (argc == 2 && strcmp(argv[1], "--version") == 0) {
        printf("ukey-uiserver %s\n", NY_VERSION_STRING);
        return true;
    }
    if (argc == 2 && strcmp(argv[1], "--help") == 0) {
        printf(
            "Usage: ukey-uiserver MAIN_SESSION_NAME\n"
            "The UI server: shows PIN and message dialogs for the clients of the main\n"
            "session MAIN_SESSION_NAME. Its clients start it; SIGTERM or SIGINT ends it.\n"
            "  --help     print this help and exit\n"
            "  --version  print the version and exit\n");
        return true;
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    if (AnswerInfoOption(argc, argv)) {
        return 0;
    }
    NY_LOG(LOG_INFO, "start UI server!");
    bool bDisplay = InitGui(&argc, &argv);
    NyCommonLibInit();
    InstallStopSignals();
    // Session channels that a killed server of this executable left, and nobody holds, go.
    SessionRegistryClearDead();
    static char szName[MAIN_SESSION_NAME_BUFFER];
    CopyMainSessionName(argc > 1 ? argv[1] : nullptr, szName);
    // Two servers on one channel would each answer some of its requests: a live one keeps it.
    if (szName[0] != '\0' && IsMainSessionServedElsewhere(szName) == NY_TRUE) {
        fprintf(stderr,
                "ukey-uiserver: main session channel \"%s\" is served by a running server\n",
                szName);
        NyCommonLibRelease();
        return EXIT_CHANNEL_BUSY;
    }
    if (bDisplay) {
        // Off the main thread: the main session is served meanwhile.
        std::thread(GUIService::PrepareVerifyDialog).detach();
    }
    Serve(szName);
    return static_cast<int>(NyCommonLibRelease());
}
