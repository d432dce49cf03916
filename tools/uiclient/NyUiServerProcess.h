// Starting and stopping a UI server process (build/bin/ukey-uiserver or an installed one).
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

// The server this program starts: "ukey-uiserver" beside the running executable (a build
// tree), else the installed one in libexec/ukey-uiserver/, found relative to the executable
// (installed tools), to the library holding this code (an installed client library), or at
// its absolute installed place. With none present, the path beside the executable; empty if
// the executable's directory cannot be read.
std::string NyUiServerPathBesideSelf();

// A fresh main session name (a GUID with a prefix) that no running server uses.
std::string NyUiFreshMainName();

// Starts szServerPath with szMainName as its one argument. Its output goes to /dev/null unless
// bInheritOutput. Returns the pid, or -1 with *pu4Error set.
pid_t NyUiServerSpawn(const char* szServerPath, const char* szMainName, bool bInheritOutput,
                      uint32_t* pu4Error);

// True while the child pid has not ended (reaps it when it has).
bool NyUiServerChildRunning(pid_t pid);

// Asks the server to end (SIGTERM) and reaps it; after u4TimeoutMs it is killed. True when it
// ended by itself. *piExitCode (optional) gets its exit code, 128 + the signal number when a
// signal ended it, or -1 when it was not our child.
bool NyUiServerStop(pid_t pid, uint32_t u4TimeoutMs, int* piExitCode = nullptr);
