#include "os/NyOsCommonLib.h"

#include "ipc/NyIpcAnchor.h"
#include "ipc/NyShareMem.h"
#include "log/NyLog.h"
#include "runtime/NyResult.h"

namespace {
// Opened by every process that runs the library, for as long as it runs.
constexpr const char* NY_LIB_MARKER_NAME = "{8A2004A0-F603-4236-A2AB-66-MxProject}";
constexpr uint32_t NY_LIB_MARKER_SIZE = 1;
NY_SHM_HANDLE m_hMarker = nullptr;
}  // namespace

// Start order: the per-process file table, the library marker region, then logging (logging
// rests on the other two). Stop runs the same steps in reverse.
uint32_t NyOsCommonLibInit() {
    uint32_t u4Result = UnixIpcInit();
    if (u4Result != NY_OK) {
        return u4Result;
    }
    u4Result = NyShareMemOpen(NY_LIB_MARKER_NAME, NY_LIB_MARKER_SIZE, &m_hMarker);
    if (u4Result != NY_OK) {
        m_hMarker = nullptr;
        UnixIpcDeinit();
        return u4Result;
    }
    NyLogInit();
    return NY_OK;
}

void NyOsCommonLibFinal() {
    NyLogFinal();
    if (m_hMarker != nullptr && NyShareMemClose(m_hMarker) == NY_OK) {
        m_hMarker = nullptr;
    }
    UnixIpcDeinit();
}
