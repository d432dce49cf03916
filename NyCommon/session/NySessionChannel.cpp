#include "session/NySessionChannel.h"

#include <cstring>

bool NySessionFillInitParam(const char* szName, BlkCommInitParamTag* pParam) {
    if (pParam == nullptr) {
        return false;
    }
    memset(pParam, 0, sizeof(*pParam));
    pParam->u4Type = COMM_INIT_TYPE_PLAIN;
    pParam->blkShm.u4Flags = 0;
    pParam->blkShm.u4DataSize = COMM_DEFAULT_DATA_SIZE;
    if (szName == nullptr) {
        return false;
    }
    size_t cchName = strnlen(szName, COMM_NAME_SIZE);
    size_t cchCopy = cchName < COMM_NAME_SIZE ? cchName : COMM_NAME_SIZE - 1;
    memcpy(pParam->blkShm.szName, szName, cchCopy);
    pParam->blkShm.szName[cchCopy] = '\0';
    return cchCopy == cchName;
}
