#include "NyLogViewFormat.h"

#include <strings.h>
#include <time.h>

#include <cinttypes>
#include <cstdio>

#include "NyLogViewText.h"
#include "log/NyLogTime.h"

namespace {

struct BlkLevelNameTag {
    LOG_TYPE enLevel;
    const char* szName;
};
const BlkLevelNameTag cg_aLevelNames[] = {
    {LOG_TRACE, "TRACE"}, {LOG_INFO, "INFO"}, {LOG_ERROR, "ERROR"}};

constexpr uint64_t NY_TICKS_PER_SECOND = 10000000;
constexpr uint64_t NY_TICKS_PER_MILLISECOND = 10000;

// Level name, or the number for levels without one.
std::string LevelText(uint32_t u4Level) {
    const char* szName = NyLogViewLevelName(u4Level);
    return szName != nullptr ? szName : std::to_string(u4Level);
}

// "+hh:mm" from strftime's "+hhmm".
std::string IsoOffset(const struct tm& tmLocal) {
    char szZone[8] = {};
    strftime(szZone, sizeof(szZone), "%z", &tmLocal);
    std::string strZone = szZone;
    return strZone.size() == 5 ? strZone.substr(0, 3) + ":" + strZone.substr(3) : strZone;
}

// One record, one line: line breaks inside a message are shown as \n and \r.
std::string EscapeLineBreaks(const std::string& strText) {
    std::string strOut;
    for (char ch : strText) {
        strOut += ch == '\n' ? "\\n" : ch == '\r' ? "\\r" : std::string(1, ch);
    }
    return strOut;
}

}  // namespace

const char* NyLogViewLevelName(uint32_t u4Level) {
    for (const BlkLevelNameTag& name : cg_aLevelNames) {
        if (name.enLevel == u4Level) {
            return name.szName;
        }
    }
    return nullptr;
}

bool NyLogViewLevelFromName(const char* szName, uint32_t& u4Level) {
    for (const BlkLevelNameTag& name : cg_aLevelNames) {
        if (strcasecmp(szName, name.szName) == 0) {
            u4Level = name.enLevel;
            return true;
        }
    }
    return false;
}

std::string NyLogViewFormatTime(uint64_t u8Time, bool bIso) {
    if (u8Time == 0) {
        return "-";
    }
    // Other stamps before 1970 do not come from a real clock; show them as the epoch.
    uint64_t u8Since1970 = u8Time > NY_LOG_EPOCH_1601 ? u8Time - NY_LOG_EPOCH_1601 : 0;
    time_t tSeconds = static_cast<time_t>(u8Since1970 / NY_TICKS_PER_SECOND);
    unsigned uMillis =
        static_cast<unsigned>(u8Since1970 % NY_TICKS_PER_SECOND / NY_TICKS_PER_MILLISECOND);
    struct tm tmLocal = {};
    if (localtime_r(&tSeconds, &tmLocal) == nullptr) {
        return "?";
    }
    char szDate[64] = {};
    strftime(szDate, sizeof(szDate), bIso ? "%Y-%m-%dT%H:%M:%S" : "%Y-%m-%d %H:%M:%S", &tmLocal);
    char szMillis[8] = {};
    snprintf(szMillis, sizeof(szMillis), ".%03u", uMillis);
    return std::string(szDate) + szMillis + (bIso ? IsoOffset(tmLocal) : "");
}

std::string NyLogViewFormatText(const tagBlkLogItem& item) {
    char szIds[48] = {};
    snprintf(szIds, sizeof(szIds), " [%u:%u] ", item.u4Pid, item.u4Tid);
    return NyLogViewFormatTime(item.u8Time, false) + " " + LevelText(item.u4Level) + szIds +
           NyLogViewToUtf8(item.szSource, sizeof(item.szSource)) + ":" +
           std::to_string(item.u4Line) + " " +
           EscapeLineBreaks(NyLogViewToUtf8(item.szMessage, sizeof(item.szMessage)));
}

std::string NyLogViewFormatJson(const tagBlkLogItem& item) {
    char szTicks[32] = {};
    snprintf(szTicks, sizeof(szTicks), "%" PRIu64, static_cast<uint64_t>(item.u8Time));
    return "{\"time\":" + NyLogViewJsonString(NyLogViewFormatTime(item.u8Time, true)) +
           ",\"time100ns\":" + szTicks + ",\"level\":" + std::to_string(item.u4Level) +
           ",\"levelName\":" + NyLogViewJsonString(LevelText(item.u4Level)) +
           ",\"pid\":" + std::to_string(item.u4Pid) + ",\"tid\":" + std::to_string(item.u4Tid) +
           ",\"source\":" +
           NyLogViewJsonString(NyLogViewToUtf8(item.szSource, sizeof(item.szSource))) +
           ",\"line\":" + std::to_string(item.u4Line) + ",\"message\":" +
           NyLogViewJsonString(NyLogViewToUtf8(item.szMessage, sizeof(item.szMessage))) + "}";
}
