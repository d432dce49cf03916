// Command line of ukey-cfg.
#pragma once

#include <cstdint>
#include <string>

#include "NyToolArgs.h"

enum EnUkeyCfgCommand : uint32_t { UKEY_CFG_GET = 1, UKEY_CFG_LIST = 2, UKEY_CFG_INFO = 3 };

struct BlkUkeyCfgArgsTag {
    EnUkeyCfgCommand enCommand = UKEY_CFG_INFO;
    uint32_t u4Id = 0;
    uint32_t u4Language = 0;  // product language code: 0 zh-CN, 1 en, 2 zh-TW
    bool bRaw = false;
};

// The help text.
std::string UkeyCfgUsage();

// Fills *pArgs from argv (which may be reordered); NY_TOOL_BAD with a one-line reason in
// *pstrError when they are malformed.
EnToolParse UkeyCfgParseArgs(int argc, char** argv, BlkUkeyCfgArgsTag* pArgs,
                             std::string* pstrError);
// "0x00020010" or "00020010": one to eight hexadecimal digits.
bool UkeyCfgParseId(const std::string& strText, uint32_t* pu4Id);
