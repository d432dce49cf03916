// The main session and an interaction session of a running server (started without a display),
// driven by a client: the records and blocks as the client sees them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "CNyUiClient.h"
#include "NyTestServer.h"
#include "session/NySessionChannel.h"

namespace {

constexpr uint8_t SENTINEL = 0xA5;

const uint8_t s_au1Seed[NY_UI_KEY_SEED_SIZE] = {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE,
                                                0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};

// Upper-case hexadecimal digits in the 8-4-4-4-12 shape.
bool IsGuidText(std::string str) {
    for (char& c : str) {
        c = c == '-' ? '-' : (isxdigit(c) && !islower(c) ? 'h' : '?');
    }
    return str == "hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh";
}

// A request with a recognisable pattern in every byte behind the header.
tagBlkUiParam PatternBlock(uint32_t u4CmdType, uint32_t u4Mode, uint8_t u1Salt) {
    tagBlkUiParam blk;
    for (uint32_t i = 0; i < NY_UI_PARAM_SIZE; ++i) {
        NyUiParamBytes(&blk, 0)[i] = static_cast<uint8_t>(i * 7 + u1Salt);
    }
    blk.enRes = 0x77;
    blk.enUiCmdType = u4CmdType;
    blk.u4Mode = u4Mode;
    blk.u4Protected = UI_PARAM_CLEAR;
    return blk;
}

class ServedSessionTest : public ::testing::Test {
protected:
    // Every test ends with the server leaving in order: exit code 0, nothing reported.
    void TearDown() override { EXPECT_TRUE(m_server.Stop()); }
    void SetUp() override {
        ASSERT_TRUE(m_server.Started());
        ASSERT_EQ(NY_OK, m_client.JoinServer(m_server.MainName().c_str()));
    }
    // Raw bytes on a channel into a 4096-byte answer buffer prefilled with a sentinel, so that
    // the answer's length shows.
    std::vector<uint8_t> Commit(const std::string& strName, const void* pvReq, uint32_t u4Len) {
        std::vector<uint8_t> vAnswer(COMM_DEFAULT_DATA_SIZE, SENTINEL);
        BlkCommInitParamTag blkInit = {};
        NY_COMM_HANDLE hChannel = nullptr;
        NySessionFillInitParam(strName.c_str(), &blkInit);
        EXPECT_EQ(NY_OK, NyCommConnect(&blkInit, 1000, &hChannel));
        EXPECT_EQ(NY_OK, NyCommCommit(hChannel, pvReq, u4Len, vAnswer.data(),
                                      static_cast<uint32_t>(vAnswer.size())));
        return vAnswer;
    }
    BlkMainSessionResponseTag CommitMain(const void* pvReq, uint32_t u4Len) {
        std::vector<uint8_t> vAnswer = Commit(m_server.MainName(), pvReq, u4Len);
        for (size_t i = MAIN_SESSION_RECORD_SIZE; i < vAnswer.size(); ++i) {
            EXPECT_EQ(SENTINEL, vAnswer[i]) << "answer longer than 1044 bytes at " << i;
        }
        BlkMainSessionResponseTag blkResp;
        memcpy(&blkResp, vAnswer.data(), sizeof(blkResp));
        return blkResp;
    }

    CNyTestServer m_server;
    CNyUiClient m_client;
};

}  // namespace

TEST_F(ServedSessionTest, MainRequestsAreAnsweredIn1044BytesByType) {
    for (uint32_t u4Type : {0u, 3u, 7u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(u4Type);
        BlkMainSessionRequestTag blkReq = {};
        blkReq.u4ReqType = u4Type;
        blkReq.uInteractionID = 0x12345678;
        blkReq.uClientPid = 4242;
        BlkMainSessionResponseTag blkResp = CommitMain(&blkReq, sizeof(blkReq));
        EXPECT_EQ(u4Type, blkResp.u4ReqType);
        EXPECT_EQ(MAIN_STATUS_UNKNOWN_REQUEST, blkResp.u4Status);
        EXPECT_EQ(0x12345678u, blkResp.uInteractionID);
        EXPECT_EQ(static_cast<uint32_t>(m_server.Pid()), blkResp.uServerPid);
        EXPECT_EQ('\0', blkResp.szSessionName[0]);
        EXPECT_EQ(0u, blkResp.u4Reserved) << "the client pid is not echoed at 1040";
    }
    // A short request reads zeros, not the earlier request's bytes.
    uint32_t u4Type = 7;
    BlkMainSessionResponseTag blkResp = CommitMain(&u4Type, sizeof(u4Type));
    EXPECT_EQ(7u, blkResp.u4ReqType);
    EXPECT_EQ(0u, blkResp.uInteractionID);
    // A start for client pid 0 is refused: no process has that id, the session would never end.
    ASSERT_EQ(NY_OK, m_client.MainRequest(MAIN_REQ_START_SESSION, 6, 0, &blkResp));
    EXPECT_EQ(MAIN_STATUS_START_FAILED, blkResp.u4Status);
    EXPECT_EQ('\0', blkResp.szSessionName[0]);
    // A finish is answered done and leaves the session running.
    ASSERT_EQ(NY_OK, m_client.OpenSession(5));
    ASSERT_EQ(NY_OK, m_client.MainRequest(MAIN_REQ_FINISH_SESSION, 5, getpid(), &blkResp));
    EXPECT_EQ(MAIN_REQ_FINISH_SESSION, blkResp.u4ReqType);
    EXPECT_EQ(MAIN_STATUS_DONE, blkResp.u4Status);
    EXPECT_EQ(5u, blkResp.uInteractionID);
    tagBlkUiParam blkAnswer;
    EXPECT_EQ(NY_OK, m_client.SendCommand(UI_CMD_TERMINATE, &blkAnswer));
    EXPECT_EQ(UI_RESULT_OK, blkAnswer.enRes);
}

TEST_F(ServedSessionTest, StartGivesAFreshGuidChannelEvenForTheSameId) {
    BlkMainSessionResponseTag ablkResp[2];
    for (BlkMainSessionResponseTag& blkResp : ablkResp) {
        ASSERT_EQ(NY_OK, m_client.MainRequest(MAIN_REQ_START_SESSION, 9, getpid(), &blkResp));
        EXPECT_EQ(MAIN_REQ_START_SESSION, blkResp.u4ReqType);
        EXPECT_EQ(MAIN_STATUS_DONE, blkResp.u4Status);
        EXPECT_EQ(9u, blkResp.uInteractionID);
        EXPECT_TRUE(IsGuidText(blkResp.szSessionName)) << blkResp.szSessionName;
    }
    EXPECT_STRNE(ablkResp[0].szSessionName, ablkResp[1].szSessionName);
    // Both sessions answer, each on its own channel.
    for (BlkMainSessionResponseTag& blkResp : ablkResp) {
        tagBlkUiParam blkReq = {};
        blkReq.enUiCmdType = UI_CMD_TERMINATE;
        std::vector<uint8_t> vAnswer = Commit(blkResp.szSessionName, &blkReq, sizeof(blkReq));
        EXPECT_EQ(UI_RESULT_OK, reinterpret_cast<tagBlkUiParam*>(vAnswer.data())->enRes);
    }
}

// With no dialog held and no display every command ends in one of these answers; every other
// byte of the answer is the request's own (a protection flag of 2 included: answered in clear).
TEST_F(ServedSessionTest, EveryBlockIsAnsweredAsTheRequestsOwnCopy) {
    struct {
        uint32_t u4CmdType;
        uint32_t u4Mode;
        uint32_t u4ExpectedRes;
        uint32_t u4Protected;
    } aCases[] = {
        {0x20000, 0, UI_RESULT_NOT_PROCESSED, 0},  // unknown command
        {0, 0, UI_RESULT_NOT_PROCESSED, 0},
        {0x20000, UI_MODE_ASYNC, UI_RESULT_NOT_PROCESSED, 0},
        {UI_CMD_GET_STATUS, 0, 0x77, 0},  // no dialog: the request unchanged
        {UI_CMD_TERMINATE, 0, UI_RESULT_OK, 0},
        {UI_CMD_UPDATE, 0, UI_RESULT_OK, 0},
        {UI_CMD_VERIFY_PIN, 0, UI_RESULT_NOT_PROCESSED, 0},  // the dialog cannot run
        {UI_CMD_VERIFY_PIN, UI_MODE_ASYNC, UI_RESULT_START_FAILED, 0},
        {UI_CMD_CONFIRM, UI_MODE_ASYNC, UI_RESULT_START_FAILED, 0},
        {UI_CMD_NO_DIALOG_1, 0, UI_RESULT_NOT_PROCESSED, 0},  // nothing held to run again
        {UI_CMD_NO_DIALOG_2, UI_MODE_ASYNC, UI_RESULT_NOT_PROCESSED, 0},
        {0x20000, 0, UI_RESULT_NOT_PROCESSED, 2},  // protection flag 2
    };
    ASSERT_EQ(NY_OK, m_client.OpenSession(0x51));
    uint8_t u1Salt = 0;
    for (const auto& c : aCases) {
        SCOPED_TRACE(u1Salt);
        tagBlkUiParam blkReq = PatternBlock(c.u4CmdType, c.u4Mode, ++u1Salt);
        blkReq.u4Protected = c.u4Protected;
        tagBlkUiParam blkAnswer;
        ASSERT_EQ(NY_OK, m_client.Exchange(&blkReq, &blkAnswer));
        EXPECT_EQ(c.u4ExpectedRes, blkAnswer.enRes);
        EXPECT_EQ(0, memcmp(NyUiParamBytes(&blkReq, 4), NyUiParamBytes(&blkAnswer, 4),
                            NY_UI_PARAM_SIZE - 4));
    }
    // A short request reads zeros, not the earlier request's bytes.
    uint32_t au4Short[2] = {0x77, 0x20001};
    std::vector<uint8_t> vAnswer = Commit(m_client.SessionName(), au4Short, sizeof(au4Short));
    tagBlkUiParam blkExpected = {};
    blkExpected.enUiCmdType = 0x20001;
    EXPECT_EQ(0, memcmp(&blkExpected, vAnswer.data(), sizeof(blkExpected)));
    // A protected request is answered under the same seed.
    tagBlkUiParam blkPlain = PatternBlock(0x20000, 0, 3);
    tagBlkUiParam blkReq = blkPlain;
    memcpy(blkReq.au1KeySeed, s_au1Seed, sizeof(s_au1Seed));
    ASSERT_EQ(NY_OK, UiParamEnc(&blkReq));
    tagBlkUiParam blkAnswer;
    ASSERT_EQ(NY_OK, m_client.Exchange(&blkReq, &blkAnswer));
    EXPECT_EQ(UI_PARAM_PROTECTED, blkAnswer.u4Protected);
    EXPECT_EQ(0, memcmp(s_au1Seed, blkAnswer.au1KeySeed, sizeof(s_au1Seed)));
    EXPECT_EQ(0, memcmp(NyUiParamBytes(&blkReq, NY_UI_PROTECTED_OFFSET),
                        NyUiParamBytes(&blkAnswer, NY_UI_PROTECTED_OFFSET), NY_UI_PROTECTED_SIZE))
        << "an unchanged payload enciphers to the request's own cipher text";
    ASSERT_EQ(NY_OK, UiParamDec(&blkAnswer));
    blkExpected = blkPlain;
    memcpy(blkExpected.au1KeySeed, s_au1Seed, sizeof(s_au1Seed));
    blkExpected.enRes = UI_RESULT_NOT_PROCESSED;
    EXPECT_EQ(0, memcmp(&blkExpected, &blkAnswer, sizeof(blkAnswer)));
}
