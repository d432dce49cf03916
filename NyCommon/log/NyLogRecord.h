// The log record and the logger configuration. Both cross process boundaries (the shared
// memory queue, the file back end): packed, little-endian, layout fixed.
#pragma once

#include <cstddef>
#include <cstdint>

typedef uint32_t LOG_TYPE;
constexpr LOG_TYPE LOG_TRACE = 1;
constexpr LOG_TYPE LOG_INFO = 2;
constexpr LOG_TYPE LOG_ERROR = 3;

constexpr uint32_t NY_LOG_ITEM_SIZE = 5120;
constexpr uint32_t NY_LOG_SOURCE_SIZE = 128;
constexpr uint32_t NY_LOG_MESSAGE_SIZE = 4104;
constexpr uint32_t NY_LOG_MESSAGE_MAX = 4096;  // longer messages are cut

#pragma pack(push, 1)
struct tagBlkLogItem {
    uint32_t u4Level;
    char szSource[NY_LOG_SOURCE_SIZE];
    uint64_t u8Time;  // 100-ns intervals since 1601-01-01 UTC
    uint32_t u4Pid;
    uint32_t u4Tid;
    uint32_t u4Line;
    char szMessage[NY_LOG_MESSAGE_SIZE];
    uint64_t u8TimeCopy;
    uint8_t au1Reserved[856];
};

constexpr uint32_t NY_LOG_MODE_OFF = 0;
constexpr uint32_t NY_LOG_MODE_SHM = 1;
constexpr uint32_t NY_LOG_MODE_FILE = 2;

struct tagBlkLogParam {
    uint32_t u4Mode;
    char szPath[2048];
};
#pragma pack(pop)

static_assert(sizeof(tagBlkLogItem) == 5120, "log record size");
static_assert(offsetof(tagBlkLogItem, szSource) == 4, "source offset");
static_assert(offsetof(tagBlkLogItem, u8Time) == 132, "time offset");
static_assert(offsetof(tagBlkLogItem, u4Pid) == 140, "pid offset");
static_assert(offsetof(tagBlkLogItem, u4Tid) == 144, "tid offset");
static_assert(offsetof(tagBlkLogItem, u4Line) == 148, "line offset");
static_assert(offsetof(tagBlkLogItem, szMessage) == 152, "message offset");
static_assert(offsetof(tagBlkLogItem, u8TimeCopy) == 4256, "time copy offset");
static_assert(sizeof(tagBlkLogParam) == 2052, "log parameter size");
