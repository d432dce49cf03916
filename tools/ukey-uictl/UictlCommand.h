// The subcommands of ukey-uictl. Each one is a table entry (UictlCommands.cpp) naming the
// command type it sends, its own options and a handler for them; the common part (the option
// parser, finding or starting the server, the session, waiting or polling, printing) is shared.
//
// To add a subcommand: write UictlFoo.cpp with its option handler, declare the handler here,
// and add its options and one line to the table in UictlCommands.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "NyToolArgs.h"
#include "uiblock/NyUiParam.h"

// How an option handler's error begins when the option is not one of its own.
constexpr char NY_UICTL_UNKNOWN_OPTION[] = "unknown option ";

// Applies one option of the subcommand ("--name", its value) to the request block. False with a
// sentence in *pstrError for an unknown option or a bad value. A flag comes with an empty value.
typedef bool (*PFN_UICTL_OPTION)(const std::string& strName, const std::string& strValue,
                                 tagBlkUiParam* pReq, std::string* pstrError);

struct BlkUictlCommandTag {
    const char* szName;
    const char* szSummary;
    const BlkToolOptionTag* aOptions;  // the subcommand's own options
    size_t cOptions;
    uint32_t u4CmdType;  // command type preset in the request block
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

bool UictlChangePinOption(const std::string& strName, const std::string& strValue,
                          tagBlkUiParam* pReq, std::string* pstrError);
bool UictlNewPinOption(const std::string& strName, const std::string& strValue, tagBlkUiParam* pReq,
                       std::string* pstrError);
bool UictlUnblockOption(const std::string& strName, const std::string& strValue,
                        tagBlkUiParam* pReq, std::string* pstrError);
bool UictlLabelOption(const std::string& strName, const std::string& strValue, tagBlkUiParam* pReq,
                      std::string* pstrError);
bool UictlConfirmOption(const std::string& strName, const std::string& strValue,
                        tagBlkUiParam* pReq, std::string* pstrError);
bool UictlMessageOption(const std::string& strName, const std::string& strValue,
                        tagBlkUiParam* pReq, std::string* pstrError);
bool UictlFingerprintOption(const std::string& strName, const std::string& strValue,
                            tagBlkUiParam* pReq, std::string* pstrError);

// Defaults of a subcommand, written into the request block before its options.
typedef void (*PFN_UICTL_PRESET)(tagBlkUiParam* pReq);
void UictlConfirmPreset(tagBlkUiParam* pReq);
void UictlFingerprintPreset(tagBlkUiParam* pReq);
// Applies the defaults of pCommand, if it has any (a subcommand that has adds a line to the
// preset table in UictlCommands.cpp).
void UictlPresetRequest(const BlkUictlCommandTag* pCommand, tagBlkUiParam* pReq);

// A numeric option that sets one u32 field of the request block.
struct BlkUictlFieldOptionTag {
    const char* szName;  // "--min"
    uint32_t u4Offset;
};
// Applies strName when it is one of the cFields options of aFields. False with a sentence in
// *pstrError for another option or a value that is not a number.
bool UictlApplyFieldOption(const BlkUictlFieldOptionTag* aFields, size_t cFields,
                           const std::string& strName, const std::string& strValue,
                           tagBlkUiParam* pReq, std::string* pstrError);

// Helpers for option handlers: numbers in decimal or 0x-hex, and OFFSET=VALUE pairs.
bool UictlParseU32(const std::string& strText, uint32_t* pu4Value);
bool UictlParseOffsetValue(const std::string& strText, uint32_t* pu4Offset, uint32_t* pu4Value);
// A 32-bit number in hexadecimal, with or without "0x" ("EE", "0xE06163CF").
bool UictlParseHex32(const std::string& strText, uint32_t* pu4Value);
