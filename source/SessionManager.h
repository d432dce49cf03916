// The session table: one entry per interaction session started over the main session, each
// served by a GUIService on a thread of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

#include "os/NyThread.h"

class GUIService;

// One entry of the session table.
struct BlkSessionInfoTag {
    uint32_t u4Reserved;
    char szGuid[256];
    std::shared_ptr<GUIService> pService;  // shared with the session thread
    NY_THREAD_HANDLE hThread;
    uint32_t u4Reserved2;
    uint32_t u4Reserved3;
};

// Opens a channel under a fresh GUID name, starts its GUIService on a new thread, records it
// under u4InteractionId (replacing, not stopping, an older entry for that id) and copies the
// name into szName. 0 or a result code; on failure nothing is left behind.
uint32_t StartSession(uint32_t u4InteractionId, uint32_t u4ClientPid, char* szName,
                      uint32_t u4NameSize);
// Finishing is a no-op: a session ends when its client process dies or its service is stopped.
void FinishSession(uint32_t u4InteractionId);
// Thread body of a session: runs the service's loop, then drops the session's table entry.
void* SessionThreadEntry(void* pvSession);

// Empties the table, smallest interaction id first, telling each service to stop; sessions
// replaced in the table by a newer one for their id are stopped too.
void StopAllSessions();
// Number of entries in the table.
size_t GetSessionCount();
// Waits until every session thread has ended (at most u4TimeoutMs); true when they all have.
bool WaitForSessionsToEnd(uint32_t u4TimeoutMs);
