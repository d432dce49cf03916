// Command line of ukey-cfg.
#pragma once

#include <cstdint>
#include <string>

enum EnUkeyCfgCommand : uint32_t { UKEY_CFG_GET = 1, UKEY_CFG_LIST = 2, UKEY_CFG_INFO = 3 };

struct BlkUkeyCfgArgsTag {
    EnUkeyCfgCommand enCommand = UKEY_CFG_INFO;
    uint32_t u4Id = 0;
    uint32_t u4Language = 0;  // product language code: 0 zh-CN, 1 en, 2 zh-TW
    bool bRaw = false;
};

extern const char g_szUkeyCfgUsage[];

// Fills *pArgs from argv; false with a one-line reason in *pstrError when they are malformed.
bool UkeyCfgParseArgs(int argc, const char* const* argv, BlkUkeyCfgArgsTag* pArgs,
                      std::string* pstrError);
// "0x00020010" or "00020010": one to eight hexadecimal digits.
bool UkeyCfgParseId(const std::string& strText, uint32_t* pu4Id);
