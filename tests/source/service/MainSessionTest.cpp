// The main session of a running server: its records, seen by a client process.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "CNyUiClient.h"
#include "NyTestServer.h"
#include "session/NySessionChannel.h"
#include "support/NyTestChannelObjects.h"
#include "support/NyTestNames.h"

namespace {

constexpr uint8_t SENTINEL = 0xA5;

bool IsGuidText(const char* sz) {
    if (strlen(sz) != 36) {
        return false;
    }
    for (int i = 0; i < 36; ++i) {
        bool bDash = (i == 8 || i == 13 || i == 18 || i == 23);
        bool bHex = (sz[i] >= '0' && sz[i] <= '9') || (sz[i] >= 'A' && sz[i] <= 'F');
        if (bDash ? sz[i] != '-' : !bHex) {
            return false;
        }
    }
    return true;
}

class MainSessionTest : public ::testing::Test {
protected:
    // Every test ends with the server leaving in order: exit code 0, nothing reported.
    void TearDown() override { EXPECT_TRUE(m_server.Stop()); }

    void SetUp() override {
        ASSERT_TRUE(m_server.Started());
        ASSERT_EQ(NY_OK, m_client.JoinServer(m_server.MainName().c_str()));
    }

    // Sends raw bytes on the main session into a 4096-byte answer buffer prefilled with a
    // sentinel, so that the answer's length shows.
    std::vector<uint8_t> Commit(const void* pvReq, uint32_t u4Len) {
        std::vector<uint8_t> vAnswer(COMM_DEFAULT_DATA_SIZE, SENTINEL);
        BlkCommInitParamTag blkInit = {};
        NY_COMM_HANDLE hMain = nullptr;
        NySessionFillInitParam(m_server.MainName().c_str(), &blkInit);
        EXPECT_EQ(NY_OK, NyCommConnect(&blkInit, 500, &hMain));
        EXPECT_EQ(NY_OK, NyCommCommit(hMain, pvReq, u4Len, vAnswer.data(),
                                      static_cast<uint32_t>(vAnswer.size())));
        return vAnswer;
    }

    CNyTestServer m_server;
    CNyUiClient m_client;
};

TEST_F(MainSessionTest, UnknownTypesAreAnsweredWithStatusZeroInA1044ByteRecord) {
    for (uint32_t u4Type : {0u, 3u, 7u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(u4Type);
        BlkMainSessionRequestTag blkReq = {};
        blkReq.u4ReqType = u4Type;
        blkReq.uInteractionID = 0x12345678;
        blkReq.uClientPid = 4242;
        std::vector<uint8_t> vAnswer = Commit(&blkReq, sizeof(blkReq));

        BlkMainSessionResponseTag blkResp;
        memcpy(&blkResp, vAnswer.data(), sizeof(blkResp));
        EXPECT_EQ(u4Type, blkResp.u4ReqType);
        EXPECT_EQ(MAIN_STATUS_UNKNOWN_REQUEST, blkResp.u4Status);
        EXPECT_EQ(0x12345678u, blkResp.uInteractionID);
        EXPECT_EQ(static_cast<uint32_t>(m_server.Pid()), blkResp.uServerPid);
        EXPECT_EQ('\0', blkResp.szSessionName[0]);
        EXPECT_EQ(0u, blkResp.u4Reserved) << "the client pid is not echoed at 1040";
        for (size_t i = MAIN_SESSION_RECORD_SIZE; i < vAnswer.size(); ++i) {
            ASSERT_EQ(SENTINEL, vAnswer[i]) << "answer longer than 1044 bytes at " << i;
        }
    }
}

TEST_F(MainSessionTest, ShortRequestReadsZerosNotTheEarlierRequest) {
    BlkMainSessionRequestTag blkReq = {};
    blkReq.u4ReqType = 7;
    blkReq.uInteractionID = 0xCAFEF00D;
    Commit(&blkReq, sizeof(blkReq));

    uint32_t u4Type = 7;
    std::vector<uint8_t> vAnswer = Commit(&u4Type, sizeof(u4Type));
    BlkMainSessionResponseTag blkResp;
    memcpy(&blkResp, vAnswer.data(), sizeof(blkResp));
    EXPECT_EQ(7u, blkResp.u4ReqType);
    EXPECT_EQ(0u, blkResp.uInteractionID);
}

TEST_F(MainSessionTest, FinishIsAnsweredDoneAndLeavesTheSessionRunning) {
    ASSERT_EQ(NY_OK, m_client.OpenSession(5));
    BlkMainSessionResponseTag blkResp;
    ASSERT_EQ(NY_OK, m_client.MainRequest(MAIN_REQ_FINISH_SESSION, 5, getpid(), &blkResp));
    EXPECT_EQ(MAIN_REQ_FINISH_SESSION, blkResp.u4ReqType);
    EXPECT_EQ(MAIN_STATUS_DONE, blkResp.u4Status);
    EXPECT_EQ(5u, blkResp.uInteractionID);

    tagBlkUiParam blkAnswer;
    EXPECT_EQ(NY_OK, m_client.SendCommand(UI_CMD_TERMINATE, &blkAnswer));
    EXPECT_EQ(UI_RESULT_OK, blkAnswer.enRes);
}

TEST_F(MainSessionTest, StartGivesAFreshGuidChannelEvenForTheSameId) {
    BlkMainSessionResponseTag blkFirst;
    BlkMainSessionResponseTag blkSecond;
    ASSERT_EQ(NY_OK, m_client.MainRequest(MAIN_REQ_START_SESSION, 9, getpid(), &blkFirst));
    ASSERT_EQ(NY_OK, m_client.MainRequest(MAIN_REQ_START_SESSION, 9, getpid(), &blkSecond));
    for (const BlkMainSessionResponseTag* p : {&blkFirst, &blkSecond}) {
        EXPECT_EQ(MAIN_REQ_START_SESSION, p->u4ReqType);
        EXPECT_EQ(MAIN_STATUS_DONE, p->u4Status);
        EXPECT_EQ(9u, p->uInteractionID);
        EXPECT_TRUE(IsGuidText(p->szSessionName)) << p->szSessionName;
    }
    EXPECT_STRNE(blkFirst.szSessionName, blkSecond.szSessionName);

    // Both sessions answer, each on its own channel.
    for (const BlkMainSessionResponseTag* p : {&blkFirst, &blkSecond}) {
        BlkCommInitParamTag blkInit;
        NySessionFillInitParam(p->szSessionName, &blkInit);
        NY_COMM_HANDLE hSession = nullptr;
        ASSERT_EQ(NY_OK, NyCommConnect(&blkInit, 1000, &hSession));
        tagBlkUiParam blkReq = {};
        blkReq.enUiCmdType = UI_CMD_TERMINATE;
        tagBlkUiParam blkAnswer = {};
        EXPECT_EQ(NY_OK,
                  NyCommCommit(hSession, &blkReq, sizeof(blkReq), &blkAnswer, sizeof(blkAnswer)));
        EXPECT_EQ(UI_RESULT_OK, blkAnswer.enRes);
        NyCommDisconnect(hSession);
    }
}

TEST(MainSessionNameTest, NameLongerThan127CharactersIsCutBeforeUse) {
    std::string strLong = NyTestUniqueName("uisrv-long");
    strLong.append(200 - strLong.size(), 'x');
    std::string strCut = strLong.substr(0, 127);
    CNyTestServer server(strLong, strCut);
    ASSERT_TRUE(server.Started()) << "nothing serves the first 127 characters";

    CNyUiClient client;
    EXPECT_NE(NY_OK, client.JoinServer(strLong.c_str()));
    EXPECT_TRUE(server.Stop());
    EXPECT_FALSE(NyTestChannelObjectsExist(strCut));
}

}  // namespace
