#include "log/NyLog.h"

#include <cstdarg>
#include <new>

#include "log/CNyLogger.h"
#include "runtime/NyConvert.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"

// The built-in configuration: the shared-memory queue. Nothing else selects the mode.
const tagBlkLogParam cg_blkLogParam = {NY_LOG_MODE_SHM, {0}};

namespace {

constexpr size_t NY_LOG_TEXT_SIZE = NY_LOG_MESSAGE_MAX + 1;
constexpr uint32_t NY_LOG_HEX_CHUNK = 2048;
constexpr uint32_t NY_LOG_WIDE_CODE_PAGE = NY_CP_GB18030;

CNyLogger* sg_pLogger = nullptr;
const tagBlkLogParam* m_pInitParam = &cg_blkLogParam;

}  // namespace

void NyLogSetInitParam(const tagBlkLogParam* pParam) {
    m_pInitParam = pParam != nullptr ? pParam : &cg_blkLogParam;
}

void NyLogInit() {
    try {
        CNyLogger* pLogger = new CNyLogger();
        sg_pLogger = pLogger;
        pLogger->SetParam(*m_pInitParam);
    } catch (const std::bad_alloc&) {
        sg_pLogger = nullptr;  // run without a logger: every log call is a no-op
    }
}

void NyLogFinal() {
    CNyLogger* pLogger = sg_pLogger;
    sg_pLogger = nullptr;
    delete pLogger;
}

uint32_t NyLogSetParam(const tagBlkLogParam* pParam) {
    if (pParam == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (sg_pLogger == nullptr) {
        return NY_ERR_NOT_INITIALISED;
    }
    return sg_pLogger->SetParam(*pParam);
}

void NyLogEx(LOG_TYPE enLevel, const char* szSource, unsigned int u4Line, const char* szFormat,
             ...) {
    if (szFormat == nullptr) {
        return;
    }
    char szMessage[NY_LOG_TEXT_SIZE] = {};
    va_list args;
    va_start(args, szFormat);
    NyStrVPrintf(szMessage, sizeof(szMessage), szFormat, args);
    va_end(args);
    if (sg_pLogger != nullptr) {
        sg_pLogger->Log(enLevel, szSource, u4Line, szMessage);
    }
}

void NyLogExW(LOG_TYPE enLevel, const char* szSource, unsigned int u4Line, const wchar_t* szFormat,
              ...) {
    if (szFormat == nullptr) {
        return;
    }
    wchar_t szWide[NY_LOG_TEXT_SIZE] = {};
    va_list args;
    va_start(args, szFormat);
    NyWcsVPrintf(szWide, NY_LOG_TEXT_SIZE, szFormat, args);
    va_end(args);
    char szMessage[NY_LOG_TEXT_SIZE] = {};
    uint32_t u4Len = sizeof(szMessage);
    uint32_t u4Result = NyWideCharToMultiByte(szWide, NY_LOG_WIDE_CODE_PAGE, szMessage, &u4Len);
    if (u4Result == NY_OK && sg_pLogger != nullptr) {
        sg_pLogger->Log(enLevel, szSource, u4Line, szMessage);
    }
}

void NyLogByteArrayEx(LOG_TYPE enLevel, const char* szSource, unsigned int u4Line,
                      const void* pvData, unsigned int u4Length) {
    if (pvData == nullptr) {
        return;
    }
    const uint8_t* pu1Data = static_cast<const uint8_t*>(pvData);
    uint32_t u4Left = u4Length;
    // Runs once even for length 0: an empty dump still leaves one (empty) record.
    do {
        uint32_t u4Chunk = u4Left < NY_LOG_HEX_CHUNK ? u4Left : NY_LOG_HEX_CHUNK;
        char szHex[NY_LOG_TEXT_SIZE] = {};
        NyHex2Asc(pu1Data, u4Chunk, szHex);
        if (sg_pLogger != nullptr) {
            sg_pLogger->Log(enLevel, szSource, u4Line, szHex);
        }
        pu1Data += u4Chunk;
        u4Left -= u4Chunk;
    } while (u4Left > 0);
}
