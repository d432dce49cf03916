#include "log/CNyLogger.h"

#include <string.h>

#include "ipc/NyMutex.h"
#include "log/NyLogSink.h"
#include "log/NyLogTime.h"
#include "os/NyOs.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"

namespace {

constexpr unsigned int NY_FILE_LOG_MAX_SIZE = 20480;

// Long source paths keep their last characters: the file name matters more than the root.
const char* NyLogSourceTail(const char* szSource) {
    size_t cchSource = strlen(szSource);
    size_t cchKeep = NY_LOG_SOURCE_SIZE - 1;
    return cchSource <= cchKeep ? szSource : szSource + (cchSource - cchKeep);
}

void NyLogBuildItem(LOG_TYPE enLevel, const char* szSource, unsigned int u4Line,
                    const char* szMessage, tagBlkLogItem* pItem) {
    memset(pItem, 0, sizeof(*pItem));
    pItem->u4Level = enLevel;
    pItem->u4Pid = NyOsGetCurrentPid();
    pItem->u4Tid = NyOsGetCurrentTid();
    pItem->u4Line = u4Line;
    pItem->u8Time = NyLogTimeNow();
    pItem->u8TimeCopy = pItem->u8Time;
    if (szSource != nullptr) {
        NyStrCopy(pItem->szSource, sizeof(pItem->szSource), NyLogSourceTail(szSource));
    }
    if (szMessage != nullptr) {
        NyStrCopy(pItem->szMessage, sizeof(pItem->szMessage), szMessage);
    }
}

}  // namespace

CNyLogger::CNyLogger() : m_blkParam(), m_hMutex(nullptr) {
    if (NyMutexCreate(nullptr, &m_hMutex) != NY_OK) {
        m_hMutex = nullptr;  // SetParam then reports the failed wait
    }
}

CNyLogger::~CNyLogger() {
    m_shmLogger.Disconnect();
    m_fileLogger.Deinit();
    if (m_hMutex != nullptr) {
        NyMutexDestroy(m_hMutex);
    }
}

uint32_t CNyLogger::Lock(bool& bLocked) {
    if (m_hMutex == nullptr) {
        return NY_ERR_NOT_INITIALISED;
    }
    uint32_t u4Result = NyMutexWait(m_hMutex, NY_WAIT_INFINITE);
    bLocked = u4Result == NY_OK;
    return u4Result;
}

void CNyLogger::Unlock(bool& bLocked) {
    if (bLocked && NyMutexRelease(m_hMutex) == NY_OK) {
        bLocked = false;
    }
}

uint32_t CNyLogger::SetParam(const tagBlkLogParam& blkParam) {
    bool bLocked = false;
    uint32_t u4Result = Lock(bLocked);
    if (u4Result == NY_OK) {
        u4Result = ApplyParam(blkParam);
    }
    Unlock(bLocked);
    return u4Result;
}

uint32_t CNyLogger::ApplyParam(const tagBlkLogParam& blkParam) {
    if (memcmp(&blkParam, &m_blkParam, sizeof(blkParam)) == 0) {
        return NY_OK;
    }
    bool bStarted = true;
    if (blkParam.u4Mode == NY_LOG_MODE_SHM) {
        m_fileLogger.Deinit();
        bStarted = m_shmLogger.Connect(false);
    } else if (blkParam.u4Mode == NY_LOG_MODE_FILE) {
        m_shmLogger.Disconnect();
        bStarted = m_fileLogger.Init(blkParam.szPath, NY_FILE_LOG_MAX_SIZE);
    } else {
        m_fileLogger.Deinit();
        m_shmLogger.Disconnect();
    }
    if (!bStarted) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    memcpy(&m_blkParam, &blkParam, sizeof(m_blkParam));
    return NY_OK;
}

uint32_t CNyLogger::Log(LOG_TYPE enLevel, const char* szSource, unsigned int u4Line,
                        const char* szMessage) {
    tagBlkLogItem blkItem;
    NyLogBuildItem(enLevel, szSource, u4Line, szMessage, &blkItem);
    NyLogSinkDeliver(blkItem);
    bool bHandedOn = true;
    if (m_blkParam.u4Mode == NY_LOG_MODE_SHM) {
        bHandedOn = m_shmLogger.SetLogItem(blkItem);
    } else if (m_blkParam.u4Mode == NY_LOG_MODE_FILE) {
        bHandedOn = m_fileLogger.Push(blkItem);
    }
    return bHandedOn ? NY_OK : NY_ERR_UNEXPECTED;
}
