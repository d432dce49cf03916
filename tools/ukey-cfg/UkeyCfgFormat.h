// Values of configuration entries as text, for ukey-cfg.
#pragma once

#include <cstdint>
#include <string>

#include "config/NyCfg.h"

// "raw", "text", "u8", "u16", "u32", or "type5" ... "type15".
std::string UkeyCfgTypeName(uint32_t u4Type);
// The value of u4Id in the handle's language: texts expanded (or as stored when bRaw),
// numbers in decimal, anything else as hexadecimal bytes. The configuration result code.
uint32_t UkeyCfgReadValue(BlkCfgHandleTag* hCfg, uint32_t u4Id, bool bRaw, std::string* pstrValue);
// One line per failure, naming the id.
std::string UkeyCfgDescribeFailure(uint32_t u4Id, uint32_t u4Result);
// Backslash, CR, LF and TAB as \\, \r, \n, \t, so that a value fits on one line.
std::string UkeyCfgEscape(const std::string& strText);
