#include "runtime/NyResult.h"
#include "runtime/NySafe.h"
#include "uiblock/NyUiParam.h"

uint32_t NyGetReturnData(const void* pvSrc, uint32_t u4SrcLen, void* pvOut, uint32_t* pu4Len) {
    if (pu4Len == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (pvSrc == nullptr && u4SrcLen != 0) {
        return NY_ERR_BAD_ARGUMENT;
    }
    const uint32_t u4Capacity = *pu4Len;
    *pu4Len = u4SrcLen;
    if (pvOut == nullptr) {
        return NY_OK;
    }
    if (u4Capacity < u4SrcLen) {
        return NY_ERR_BUFFER_TOO_SMALL;
    }
    if (u4SrcLen != 0) {
        NyMemCopy(pvOut, u4Capacity, pvSrc, u4SrcLen);
    }
    return NY_OK;
}
