// An interaction session of a running server (started without a display), driven by a client.
#include <gtest/gtest.h>

#include <cstring>

#include "CNyUiClient.h"
#include "NyTestServer.h"

namespace {

const uint8_t s_au1Seed[NY_UI_KEY_SEED_SIZE] = {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE,
                                                0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};

// A request with a recognisable pattern in every byte behind the header.
tagBlkUiParam PatternBlock(uint32_t u4CmdType, uint32_t u4Mode, uint8_t u1Salt) {
    tagBlkUiParam blk;
    uint8_t* pu1 = NyUiParamBytes(&blk, 0);
    for (uint32_t i = 0; i < NY_UI_PARAM_SIZE; ++i) {
        pu1[i] = static_cast<uint8_t>(i * 7 + u1Salt);
    }
    blk.enRes = 0x77;
    blk.enUiCmdType = u4CmdType;
    blk.u4Mode = u4Mode;
    blk.u4Protected = UI_PARAM_CLEAR;
    return blk;
}

class SessionServiceTest : public ::testing::Test {
protected:
    // Every test ends with the server leaving in order: exit code 0, nothing reported.
    void TearDown() override { EXPECT_TRUE(m_server.Stop()); }

    void SetUp() override {
        ASSERT_TRUE(m_server.Started());
        ASSERT_EQ(NY_OK, m_client.JoinServer(m_server.MainName().c_str()));
        ASSERT_EQ(NY_OK, m_client.OpenSession(0x51));
    }

    CNyTestServer m_server;
    CNyUiClient m_client;
};

struct BlkRouteCaseTag {
    const char* szName;
    uint32_t u4CmdType;
    uint32_t u4Mode;
    uint32_t u4ExpectedRes;
};

// With no dialog held and no display every command ends in one of these answers; every other
// byte of the answer is the request's own.
const BlkRouteCaseTag s_aRouteCases[] = {
    {"unknown command", 0x20000, 0, UI_RESULT_NOT_PROCESSED},
    {"command 0", 0, 0, UI_RESULT_NOT_PROCESSED},
    {"unknown command, async mode", 0x20000, UI_MODE_ASYNC, UI_RESULT_NOT_PROCESSED},
    {"status poll, no dialog: request unchanged", UI_CMD_GET_STATUS, 0, 0x77},
    {"terminate, no dialog", UI_CMD_TERMINATE, 0, UI_RESULT_OK},
    {"update, no dialog", UI_CMD_UPDATE, 0, UI_RESULT_OK},
    {"verify, sync, dialog cannot run", UI_CMD_VERIFY_PIN, 0, UI_RESULT_NOT_PROCESSED},
    {"verify, async, dialog cannot start", UI_CMD_VERIFY_PIN, UI_MODE_ASYNC,
     UI_RESULT_START_FAILED},
    {"confirm, async, dialog cannot start", UI_CMD_CONFIRM, UI_MODE_ASYNC, UI_RESULT_START_FAILED},
    {"re-run with nothing held, sync", UI_CMD_NO_DIALOG_1, 0, UI_RESULT_NOT_PROCESSED},
    {"re-run with nothing held, async", UI_CMD_NO_DIALOG_2, UI_MODE_ASYNC, UI_RESULT_NOT_PROCESSED},
};

TEST_F(SessionServiceTest, EveryCommandIsAnsweredAsTheRequestsOwnCopy) {
    uint8_t u1Salt = 0;
    for (const BlkRouteCaseTag& c : s_aRouteCases) {
        SCOPED_TRACE(c.szName);
        tagBlkUiParam blkReq = PatternBlock(c.u4CmdType, c.u4Mode, ++u1Salt);
        tagBlkUiParam blkAnswer;
        ASSERT_EQ(NY_OK, m_client.Exchange(&blkReq, &blkAnswer));
        EXPECT_EQ(c.u4ExpectedRes, blkAnswer.enRes);
        EXPECT_EQ(0, memcmp(NyUiParamBytes(&blkReq, 4), NyUiParamBytes(&blkAnswer, 4),
                            NY_UI_PARAM_SIZE - 4));
    }
}

TEST_F(SessionServiceTest, ProtectedRequestIsAnsweredUnderTheSameSeed) {
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
    tagBlkUiParam blkExpected = blkPlain;
    memcpy(blkExpected.au1KeySeed, s_au1Seed, sizeof(s_au1Seed));
    blkExpected.enRes = UI_RESULT_NOT_PROCESSED;
    EXPECT_EQ(0, memcmp(&blkExpected, &blkAnswer, sizeof(blkAnswer)));
}

TEST_F(SessionServiceTest, ProtectedCommandIsCarriedOutAndAnsweredProtected) {
    tagBlkUiParam blkReq = PatternBlock(UI_CMD_TERMINATE, 0, 4);
    tagBlkUiParam blkAnswer;
    ASSERT_EQ(NY_OK, m_client.ExchangeProtected(&blkReq, s_au1Seed, &blkAnswer));
    EXPECT_EQ(UI_RESULT_OK, blkAnswer.enRes);
    EXPECT_EQ(UI_PARAM_CLEAR, blkAnswer.u4Protected) << "decrypted by the client";
    EXPECT_EQ(0, memcmp(NyUiParamBytes(&blkReq, NY_UI_PAYLOAD_OFFSET),
                        NyUiParamBytes(&blkAnswer, NY_UI_PAYLOAD_OFFSET), NY_UI_PAYLOAD_SIZE));
}

TEST_F(SessionServiceTest, FlagTwoIsAnsweredInClearWithTheFlagKept) {
    tagBlkUiParam blkReq = PatternBlock(0x20000, 0, 5);
    blkReq.u4Protected = 2;
    tagBlkUiParam blkAnswer;
    ASSERT_EQ(NY_OK, m_client.Exchange(&blkReq, &blkAnswer));
    EXPECT_EQ(2u, blkAnswer.u4Protected);
    EXPECT_EQ(UI_RESULT_NOT_PROCESSED, blkAnswer.enRes);
    EXPECT_EQ(
        0, memcmp(NyUiParamBytes(&blkReq, 4), NyUiParamBytes(&blkAnswer, 4), NY_UI_PARAM_SIZE - 4));
}

TEST_F(SessionServiceTest, ShortRequestReadsZerosNotTheEarlierRequest) {
    tagBlkUiParam blkFull = PatternBlock(0x20000, 0, 6);
    tagBlkUiParam blkAnswer;
    ASSERT_EQ(NY_OK, m_client.Exchange(&blkFull, &blkAnswer));

    uint32_t au4Short[2] = {0x77, 0x20001};
    memset(&blkAnswer, 0xEE, sizeof(blkAnswer));
    ASSERT_EQ(NY_OK, NyCommCommit(m_client.SessionHandle(), au4Short, sizeof(au4Short), &blkAnswer,
                                  sizeof(blkAnswer)));
    tagBlkUiParam blkExpected = {};
    blkExpected.enUiCmdType = 0x20001;
    EXPECT_EQ(0, memcmp(&blkExpected, &blkAnswer, sizeof(blkAnswer)));
}

}  // namespace
