// How ukey-logview renders a record: a text line for people, a JSON line for machines.
#pragma once

#include <cstdint>
#include <string>

#include "log/NyLogRecord.h"

// "TRACE", "INFO", "ERROR"; null for any other level.
const char* NyLogViewLevelName(uint32_t u4Level);
// Level from its name (any case); false for an unknown name.
bool NyLogViewLevelFromName(const char* szName, uint32_t& u4Level);
// Local time of a record time stamp (100-ns units since 1601-01-01 UTC), with milliseconds:
// "2026-11-23 08:36:18.123", or with bIso "2026-11-23T08:36:18.123+01:00"; "-" for 0 (no time).
std::string NyLogViewFormatTime(uint64_t u8Time, bool bIso);
// "<time> <LEVEL> [<pid>:<tid>] <source>:<line> <message>", no newline (the message's own line
// breaks escaped).
std::string NyLogViewFormatText(const tagBlkLogItem& item);
// One JSON object, no newline.
std::string NyLogViewFormatJson(const tagBlkLogItem& item);
