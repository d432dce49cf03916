#include "os/NyOsCommonLib.h"

#include "log/NyLog.h"
#include "runtime/NyResult.h"

// Start order: the per-process file table, the library marker region, then logging (logging
// rests on the other two). Stop runs the same steps in reverse.
uint32_t NyOsCommonLibInit() {
    // The file table and the marker region join here, before logging starts.
    NyLogInit();
    return NY_OK;
}

void NyOsCommonLibFinal() {
    NyLogFinal();
    // The marker region is closed and the file table torn down here, after logging stops.
}
