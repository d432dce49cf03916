// The 256-byte header at the start of every channel region. Client libraries outside this
// project read and write it, so its layout is fixed: little-endian 32-bit words, reserved words
// zero, always written whole. The data area follows at COMM_DATA_OFFSET.
#pragma once

#include <cstddef>
#include <cstdint>

constexpr uint32_t COMM_HEADER_SIZE = 256;
constexpr uint32_t COMM_DATA_OFFSET = COMM_HEADER_SIZE;

// u4Direction
constexpr uint32_t COMM_DIRECTION_REQUEST = 0;  // client to server
constexpr uint32_t COMM_DIRECTION_ANSWER = 1;   // server to client
// u4Command
constexpr uint32_t COMM_COMMAND_NONE = 0;
constexpr uint32_t COMM_COMMAND_ACK = 1;
constexpr uint32_t COMM_COMMAND_REQUEST = 2;

struct BlkShmCommHeaderTag {
    uint32_t u4Direction;
    uint32_t u4Signal;  // EN_COMMUNICATION_SIGNAL of an answer; 0 in a request
    uint32_t u4Command;
    uint32_t u4Reserved;
    uint32_t u4DataLen;
    uint32_t u4DataOffset;  // COMM_DATA_OFFSET, or 0 for an answer without data
    uint32_t u4Reserved2[58];
};

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the channel header is little-endian");
static_assert(sizeof(BlkShmCommHeaderTag) == COMM_HEADER_SIZE, "channel header size");
static_assert(offsetof(BlkShmCommHeaderTag, u4Signal) == 4, "signal offset");
static_assert(offsetof(BlkShmCommHeaderTag, u4Command) == 8, "command offset");
static_assert(offsetof(BlkShmCommHeaderTag, u4DataLen) == 16, "data length offset");
static_assert(offsetof(BlkShmCommHeaderTag, u4DataOffset) == 20, "data offset offset");
