// The subcommands of ukey-uictl. Each one is a table entry (UictlCommands.cpp) naming the
// command type it sends and a handler for its own options; the common part (finding or
// starting the server, the session, waiting or polling, printing) is shared.
//
// To add a subcommand: write UictlFoo.cpp with its option handler, declare the handler here,
// and add one line to the table in UictlCommands.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "uiblock/NyUiParam.h"

// Applies one option of the subcommand ("--name VALUE") to the request block. False with a
// sentence in *pstrError for an unknown option or a bad value.
typedef bool (*PFN_UICTL_OPTION)(const std::string& strName, const std::string& strValue,
                                 tagBlkUiParam* pReq, std::string* pstrError);

struct BlkUictlCommandTag {
    const char* szName;
    const char* szSummary;
    const char* szOptions;  // usage text of the subcommand's own options
    uint32_t u4CmdType;     // command type preset in the request block
    PFN_UICTL_OPTION pfnOption;
    bool bPrintBlock;  // the answer also shows the whole block in hex
};

// The table, and its length.
extern const BlkUictlCommandTag g_aUictlCommands[];
extern const size_t g_cUictlCommands;

const BlkUictlCommandTag* UictlFindCommand(const std::string& strName);

// Option handlers of the subcommands.
bool UictlRawOption(const std::string& strName, const std::string& strValue, tagBlkUiParam* pReq,
                    std::string* pstrError);

// Helpers for option handlers: numbers in decimal or 0x-hex, and OFFSET=VALUE pairs.
bool UictlParseU32(const std::string& strText, uint32_t* pu4Value);
bool UictlParseOffsetValue(const std::string& strText, uint32_t* pu4Offset, uint32_t* pu4Value);
