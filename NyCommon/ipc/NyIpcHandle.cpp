#include "ipc/NyIpcHandle.h"

#include <cstring>

#include "ipc/NyIpcResult.h"
#include "runtime/NyResult.h"

uint32_t NyIpcCheckHandle(const void* h, uint32_t u4Tag) {
    if (h == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    uint32_t u4Found = 0;
    memcpy(&u4Found, h, sizeof(u4Found));
    return u4Found == u4Tag ? NY_OK : NY_ERR_WRONG_HANDLE;
}
