// A main-session record as the server decodes and answers it. The session table is a stand-in
// (this file's StartSession, FinishSession and StopAllSessions are linked in place of the real
// ones): a real start opens a channel and a thread for every record. Input: byte 0 picks the
// answer's capacity (bit 0: one byte short of a record) and whether the stand-in's start fails
// (bit 1); the rest is the request as the listen delivered it (at most 4096 bytes).
// The answer is 1044 bytes that echo the type and id, carry this process's id and the status
// of the type, hold the new session's name only after a start, and leave every other byte of
// the caller's buffer as it was.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "MainServer.h"
#include "NyFuzzCheck.h"
#include "SessionManager.h"
#include "session/NyMainSessionRecord.h"

namespace {

constexpr uint8_t NY_FUZZ_FILL = 0xA5;
constexpr uint32_t NY_FUZZ_START_FAILED = NY_ERR_OUT_OF_MEMORY;

struct BlkStartsTag {
    bool bFail;
    uint32_t cStarts;
    BlkMainSessionRequestTag blkSeen;  // the id and pid the last start was given
};
BlkStartsTag s_starts;

// Bytes [cbFrom, cbTo) of the answer buffer still hold the fill.
bool Untouched(const std::vector<uint8_t>& vResp, size_t cbFrom, size_t cbTo) {
    return std::count(&vResp[cbFrom], vResp.data() + cbTo, NY_FUZZ_FILL) == long(cbTo - cbFrom);
}

}  // namespace

// Fills the whole name buffer, so that a buffer smaller than the answer's field shows.
uint32_t StartSession(uint32_t u4InteractionId, uint32_t u4ClientPid, char* szName,
                      uint32_t u4NameSize) {
    ++s_starts.cStarts;
    s_starts.blkSeen.uInteractionID = u4InteractionId;
    s_starts.blkSeen.uClientPid = u4ClientPid;
    NyFuzzCheck(u4NameSize == MAIN_SESSION_NAME_SIZE);
    if (s_starts.bFail) {
        return NY_FUZZ_START_FAILED;
    }
    memset(szName, 'g', u4NameSize - 1);
    szName[u4NameSize - 1] = '\0';
    return NY_OK;
}
void FinishSession(uint32_t /*u4InteractionId*/) {}
void StopAllSessions() {}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pu1Data, size_t cbData) {
    if (cbData == 0 || cbData - 1 > 4096) {
        return 0;
    }
    s_starts = BlkStartsTag{(pu1Data[0] & 2) != 0, 0, {}};
    // The request after byte 0, in a buffer of its own exact size.
    std::vector<uint8_t> vInput(pu1Data, pu1Data + cbData);
    const uint8_t* pu1Req = vInput.data() + 1;
    const uint32_t cbReq = static_cast<uint32_t>(cbData - 1);
    BlkMainSessionRequestTag blkReq = {};
    memcpy(&blkReq, pu1Req, cbReq < sizeof(blkReq) ? cbReq : sizeof(blkReq));
    std::vector<uint8_t> vResp(4096, NY_FUZZ_FILL);
    uint32_t u4Size = (pu1Data[0] & 1) != 0 ? MAIN_SESSION_RECORD_SIZE - 1 : 4096;

    uint32_t u4Result = ProcessRequestSer(pu1Req, cbReq, vResp.data(), &u4Size);
    NyFuzzCheck(u4Size == MAIN_SESSION_RECORD_SIZE);
    if ((pu1Data[0] & 1) != 0) {
        NyFuzzCheck(u4Result == NY_ERR_BUFFER_TOO_SMALL && Untouched(vResp, 0, vResp.size()));
        return 0;
    }
    const bool bStart = blkReq.u4ReqType == MAIN_REQ_START_SESSION;
    const bool bStarted = bStart && !s_starts.bFail;
    NyFuzzCheck(s_starts.cStarts == (bStart ? 1u : 0u));
    NyFuzzCheck(!bStart || (s_starts.blkSeen.uInteractionID == blkReq.uInteractionID &&
                            s_starts.blkSeen.uClientPid == blkReq.uClientPid));
    NyFuzzCheck(u4Result == (bStart && !bStarted ? NY_FUZZ_START_FAILED : NY_OK));

    const uint32_t u4Status = bStart ? (bStarted ? MAIN_STATUS_DONE : MAIN_STATUS_START_FAILED)
                              : blkReq.u4ReqType == MAIN_REQ_FINISH_SESSION
                                  ? MAIN_STATUS_DONE
                                  : MAIN_STATUS_UNKNOWN_REQUEST;
    BlkMainSessionResponseTag blkResp;
    memcpy(&blkResp, vResp.data(), sizeof(blkResp));
    NyFuzzCheck(blkResp.u4ReqType == blkReq.u4ReqType && blkResp.u4Status == u4Status);
    NyFuzzCheck(blkResp.uInteractionID == blkReq.uInteractionID);
    NyFuzzCheck(blkResp.uServerPid == static_cast<uint32_t>(getpid()));
    const size_t cbName = offsetof(BlkMainSessionResponseTag, szSessionName);
    if (bStarted) {
        NyFuzzCheck(strnlen(blkResp.szSessionName, MAIN_SESSION_NAME_SIZE) ==
                    MAIN_SESSION_NAME_SIZE - 1);
    } else {
        NyFuzzCheck(Untouched(vResp, cbName, cbName + MAIN_SESSION_NAME_SIZE));
    }
    NyFuzzCheck(Untouched(vResp, cbName + MAIN_SESSION_NAME_SIZE, 1036));
    NyFuzzCheck(Untouched(vResp, 1040, vResp.size()));
    return 0;
}
