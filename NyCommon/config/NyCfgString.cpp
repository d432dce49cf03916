#include <cstring>

#include "config/CNyCfgExpander.h"
#include "config/NyCfg.h"
#include "config/NyCfgId.h"
#include "log/NyLog.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"

namespace {

constexpr unsigned int NY_CFG_RAW_TEXT_SIZE = 2048;

uint32_t CfgLogged(uint32_t u4Result) {
    NY_LOG_RESULT(u4Result);
    return u4Result;
}

// Hands the expanded text out under the size contract; the size counts the NUL.
uint32_t CfgCopyText(const char* szText, char* szOut, unsigned int* pu4Length) {
    size_t cbNeeded = strlen(szText) + 1;
    unsigned int u4Capacity = *pu4Length;
    *pu4Length = static_cast<unsigned int>(cbNeeded);
    if (szOut == nullptr) {
        return NY_OK;
    }
    if (u4Capacity < cbNeeded) {
        return CfgLogged(NY_ERR_BUFFER_TOO_SMALL);
    }
    NyMemCpy(szOut, u4Capacity, szText, cbNeeded);
    return NY_OK;
}

}  // namespace

uint32_t NyCfgGetString(BlkCfgHandleTag* hCfg, unsigned int u4Id, char* szOut,
                        unsigned int* pu4Length) {
    if (NyCfgIdType(u4Id) != NY_CFG_TYPE_TEXT) {
        return CfgLogged(NY_ERR_INVALID_ARGUMENT);
    }
    unsigned char au1Raw[NY_CFG_RAW_TEXT_SIZE] = {};
    unsigned int u4RawLength = NY_CFG_RAW_TEXT_SIZE - 1;
    uint32_t u4Result = NyCfgGetValue(hCfg, u4Id, au1Raw, &u4RawLength);
    if (u4Result != NY_OK) {
        return CfgLogged(u4Result);
    }
    if (hCfg == nullptr || pu4Length == nullptr) {
        return CfgLogged(NY_ERR_INVALID_ARGUMENT);
    }
    au1Raw[u4RawLength] = 0;
    CNyCfgExpander expander(hCfg);
    u4Result = expander.Expand(reinterpret_cast<const char*>(au1Raw));
    if (u4Result != NY_OK) {
        return u4Result;
    }
    return CfgCopyText(expander.Text(), szOut, pu4Length);
}
