// The two 1044-byte records exchanged on a UI server's main session channel: a client asks for
// an interaction session (type 1) or says it is done (type 2); the server answers with a status,
// the new session channel's name and its own process id. Client libraries outside this project
// build and read these records, so the layout is fixed, little-endian. The server's pid sits at
// offset 1036 of the answer while the client's pid sits at 1040 of the request: both sides keep
// that asymmetry.
#pragma once

#include <cstddef>
#include <cstdint>

constexpr uint32_t MAIN_SESSION_RECORD_SIZE = 1044;
constexpr uint32_t MAIN_SESSION_NAME_SIZE = 256;

// u4ReqType
constexpr uint32_t MAIN_REQ_START_SESSION = 1;
constexpr uint32_t MAIN_REQ_FINISH_SESSION = 2;

// u4Status of an answer
constexpr uint32_t MAIN_STATUS_UNKNOWN_REQUEST = 0;
constexpr uint32_t MAIN_STATUS_START_FAILED = 1;
constexpr uint32_t MAIN_STATUS_DONE = 2;

#pragma pack(push, 1)
struct BlkMainSessionRequestTag {
    uint32_t u4ReqType;
    uint32_t u4Reserved;
    uint32_t uInteractionID;
    uint8_t u1Reserved[1028];
    uint32_t uClientPid;
};

struct BlkMainSessionResponseTag {
    uint32_t u4ReqType;
    uint32_t u4Status;
    uint32_t uInteractionID;
    char szSessionName[MAIN_SESSION_NAME_SIZE];
    uint8_t u1Reserved[768];
    uint32_t uServerPid;
    uint32_t u4Reserved;
};
#pragma pack(pop)

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "main-session records are little-endian");
static_assert(sizeof(BlkMainSessionRequestTag) == MAIN_SESSION_RECORD_SIZE, "request size");
static_assert(offsetof(BlkMainSessionRequestTag, uInteractionID) == 8, "interaction id offset");
static_assert(offsetof(BlkMainSessionRequestTag, uClientPid) == 1040, "client pid offset");
static_assert(sizeof(BlkMainSessionResponseTag) == MAIN_SESSION_RECORD_SIZE, "response size");
static_assert(offsetof(BlkMainSessionResponseTag, u4Status) == 4, "status offset");
static_assert(offsetof(BlkMainSessionResponseTag, uInteractionID) == 8, "interaction id offset");
static_assert(offsetof(BlkMainSessionResponseTag, szSessionName) == 12, "session name offset");
static_assert(offsetof(BlkMainSessionResponseTag, uServerPid) == 1036, "server pid offset");
