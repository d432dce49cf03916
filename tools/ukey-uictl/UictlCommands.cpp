#include <cerrno>
#include <cstdlib>

#include "UictlCommand.h"

const BlkUictlCommandTag g_aUictlCommands[] = {
    {"raw", "send a block given field by field; the answer includes the whole block",
     "--cmd TYPE  --mode MODE  --u32 OFFSET=VALUE (repeatable)", 0, UictlRawOption, true},
};
const size_t g_cUictlCommands = sizeof(g_aUictlCommands) / sizeof(g_aUictlCommands[0]);

const BlkUictlCommandTag* UictlFindCommand(const std::string& strName) {
    for (size_t i = 0; i < g_cUictlCommands; ++i) {
        if (strName == g_aUictlCommands[i].szName) {
            return &g_aUictlCommands[i];
        }
    }
    return nullptr;
}

bool UictlParseU32(const std::string& strText, uint32_t* pu4Value) {
    if (strText.empty() || strText[0] == '-' || strText[0] == '+') {
        return false;
    }
    char* pEnd = nullptr;
    errno = 0;
    unsigned long long u8Value = strtoull(strText.c_str(), &pEnd, 0);
    if (errno != 0 || *pEnd != '\0' || u8Value > 0xFFFFFFFFull) {
        return false;
    }
    *pu4Value = static_cast<uint32_t>(u8Value);
    return true;
}

bool UictlParseOffsetValue(const std::string& strText, uint32_t* pu4Offset, uint32_t* pu4Value) {
    size_t nEq = strText.find('=');
    return nEq != std::string::npos && UictlParseU32(strText.substr(0, nEq), pu4Offset) &&
           UictlParseU32(strText.substr(nEq + 1), pu4Value);
}
