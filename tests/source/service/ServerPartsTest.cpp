// The server's parts called in-process: GUIService request handling, the main-session record
// and name, and the liveness rule of a session's client process (over stand-ins for /proc).
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "ClientLiveness.h"
#include "GUIService.h"
#include "MainServer.h"
#include "session/NyMainSessionRecord.h"
#include "support/NyTestLogCapture.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"
#include "uiblock/NyUiParam.h"

namespace {

const uint8_t s_au1Seed[NY_UI_KEY_SEED_SIZE] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

class ServiceRequestTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { GUIService::SetDialogsAvailable(false); }

    ServiceRequestTest() : m_service(BlkUiServiceParamTag{}) {}

    uint32_t Process(const tagBlkUiParam& blkReq, uint32_t u4ReqSize, tagBlkUiParam* pAnswer) {
        tagBlkUiParam blkCopy = blkReq;
        memset(pAnswer, 0xEE, sizeof(*pAnswer));
        uint32_t u4Size = NY_UI_PARAM_SIZE;
        uint32_t u4Result = m_service.ProcessRequestSvc(NyUiParamBytes(&blkCopy, 0), u4ReqSize,
                                                        NyUiParamBytes(pAnswer, 0), &u4Size);
        EXPECT_EQ(NY_UI_PARAM_SIZE, u4Size);
        return u4Result;
    }

    GUIService m_service;
};

TEST_F(ServiceRequestTest, FailedDialogsAreAnsweredInClearOtherCommandsUnderTheirSeed) {
    struct {
        uint32_t u4CmdType;
        uint32_t u4Mode;
        uint32_t u4ExpectedRes;
        uint32_t u4Protected;  // of the answer
    } aCases[] = {
        {UI_CMD_MESSAGE, 0, UI_RESULT_NOT_PROCESSED, UI_PARAM_CLEAR},
        {UI_CMD_CHANGE_LABEL, UI_MODE_ASYNC, UI_RESULT_START_FAILED, UI_PARAM_CLEAR},
        {UI_CMD_NO_DIALOG_2, 0, UI_RESULT_NOT_PROCESSED, UI_PARAM_CLEAR},
        {UI_CMD_NO_DIALOG_1, UI_MODE_ASYNC, UI_RESULT_NOT_PROCESSED, UI_PARAM_CLEAR},
        // Not a dialog: answered under the request's own seed.
        {0x20000, 0, UI_RESULT_NOT_PROCESSED, UI_PARAM_PROTECTED},
    };
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.u4CmdType);
        tagBlkUiParam blkReq = {};
        blkReq.enUiCmdType = c.u4CmdType;
        blkReq.u4Mode = c.u4Mode;
        NyUiParamSetU4(&blkReq, 400, 0xABCD1234);
        memcpy(blkReq.au1KeySeed, s_au1Seed, sizeof(s_au1Seed));
        ASSERT_EQ(NY_OK, UiParamEnc(&blkReq));

        tagBlkUiParam blkAnswer;
        // A failed dialog reports its failure; a command that is no dialog succeeds.
        EXPECT_EQ(c.u4Protected == UI_PARAM_CLEAR,
                  Process(blkReq, sizeof(blkReq), &blkAnswer) != NY_OK);
        EXPECT_EQ(c.u4ExpectedRes, blkAnswer.enRes);
        ASSERT_EQ(c.u4Protected, blkAnswer.u4Protected);
        if (c.u4Protected == UI_PARAM_PROTECTED) {
            EXPECT_EQ(0, memcmp(s_au1Seed, blkAnswer.au1KeySeed, sizeof(s_au1Seed)));
            EXPECT_EQ(
                0, memcmp(NyUiParamBytes(&blkReq, NY_UI_PROTECTED_OFFSET),
                          NyUiParamBytes(&blkAnswer, NY_UI_PROTECTED_OFFSET), NY_UI_PROTECTED_SIZE))
                << "an unchanged payload enciphers to the request's own cipher text";
            ASSERT_EQ(NY_OK, UiParamDec(&blkAnswer));
        }
        EXPECT_EQ(0xABCD1234u, NyUiParamGetU4(&blkAnswer, 400));
    }
}

TEST_F(ServiceRequestTest, DialogThatCannotRunLeavesItsTrailInTheLog) {
    CNyTestLogCapture capture;
    tagBlkUiParam blkReq = {};
    blkReq.enUiCmdType = UI_CMD_CONFIRM;
    NyUiParamSetU4(&blkReq, UI_OFS_CONFIRM_CTT, 15);
    tagBlkUiParam blkAnswer;
    uint32_t u4Result = Process(blkReq, sizeof(blkReq), &blkAnswer);
    ASSERT_NE(NY_OK, u4Result);

    std::vector<std::string> vExpected = {
        "CUiService::RunUi() enter", "enUiCmdType:00010004,enCTT:0000000f",
        "CUiService::RunUi() leave", "pblkResp->enRes = UI_RESULT_NOT_PROCESSED"};
    EXPECT_EQ(vExpected, capture.MessagesAt(LOG_TRACE));
    char szResult[32];
    snprintf(szResult, sizeof(szResult), "u4Result = %08X", u4Result);
    EXPECT_EQ(std::vector<std::string>{szResult}, capture.MessagesAt(LOG_INFO));
}

TEST_F(ServiceRequestTest, ShortAnswerBuffersOrNoChannelAreRefused) {
    tagBlkUiParam blkReq = {};
    std::vector<uint8_t> vSmall(NY_UI_PARAM_SIZE - 1);
    uint32_t u4Size = static_cast<uint32_t>(vSmall.size());
    EXPECT_EQ(NY_ERR_BUFFER_TOO_SMALL,
              m_service.ProcessRequestSvc(NyUiParamBytes(&blkReq, 0), sizeof(blkReq), vSmall.data(),
                                          &u4Size));
    EXPECT_EQ(NY_UI_PARAM_SIZE, u4Size);
    EXPECT_EQ(NY_ERR_BAD_ARGUMENT, m_service.run());
}

// Requests of no known type, full-size or short (the rest reads zeros), are answered in one
// record that echoes type and id and names this process; a short answer buffer is refused.
TEST(MainRequestTest, UnknownTypesAreAnsweredInOneRecord) {
    for (uint32_t u4Size : {uint32_t{sizeof(BlkMainSessionRequestTag)}, 4u}) {
        for (uint32_t u4Type : {0u, 3u, 7u, 0xFFFFFFFFu}) {
            SCOPED_TRACE(u4Type);
            BlkMainSessionRequestTag blkReq = {u4Type, 0, 0x12345678, {}, 4242};
            std::vector<uint8_t> vAnswer(MAIN_SESSION_RECORD_SIZE + 1, 0);
            uint32_t u4RespSize = static_cast<uint32_t>(vAnswer.size());
            EXPECT_EQ(NY_OK, ProcessRequestSer(reinterpret_cast<uint8_t*>(&blkReq), u4Size,
                                               vAnswer.data(), &u4RespSize));
            EXPECT_EQ(MAIN_SESSION_RECORD_SIZE, u4RespSize);
            BlkMainSessionResponseTag blkResp;
            memcpy(&blkResp, vAnswer.data(), sizeof(blkResp));
            EXPECT_EQ(u4Type, blkResp.u4ReqType);
            EXPECT_EQ(MAIN_STATUS_UNKNOWN_REQUEST, blkResp.u4Status);
            EXPECT_EQ(u4Size == 4 ? 0u : 0x12345678u, blkResp.uInteractionID);
            EXPECT_EQ(static_cast<uint32_t>(getpid()), blkResp.uServerPid);
            EXPECT_EQ('\0', blkResp.szSessionName[0]);
            EXPECT_EQ(0u, blkResp.u4Reserved) << "the client pid is not echoed at 1040";
        }
    }
    uint8_t au1Small[MAIN_SESSION_RECORD_SIZE] = {};
    uint32_t u4Size = MAIN_SESSION_RECORD_SIZE - 1;
    EXPECT_EQ(NY_ERR_BUFFER_TOO_SMALL, ProcessRequestSer(au1Small, 4, au1Small, &u4Size));
    EXPECT_EQ(MAIN_SESSION_RECORD_SIZE, u4Size);
}

TEST(MainRequestTest, NamesThatDoNotFitAreCutAndEmptyNamesRefused) {
    std::string strLong(300, 'n');
    char szName[MAIN_SESSION_NAME_BUFFER];
    CopyMainSessionName(strLong.c_str(), szName);
    EXPECT_EQ(std::string(127, 'n'), szName);
    CopyMainSessionName(nullptr, szName);
    EXPECT_STREQ("", szName);
    EXPECT_EQ(NY_ERR_BAD_ARGUMENT, CreateMainSession(szName));
    EXPECT_EQ(NY_ERR_BAD_ARGUMENT, CreateMainSession(nullptr));
}

TEST(ClientLivenessTest, GoneProcessLivesOnlyThroughIdsThatContainItsId) {
    pid_t pidDead = NyTestForkChild([]() { return 0; });
    NyTestWaitChild(pidDead, 5000);
    uint32_t u4Self = static_cast<uint32_t>(getpid());
    uint32_t u4Dead = static_cast<uint32_t>(pidDead);
    std::string strDead = std::to_string(u4Dead);
    struct {
        const char* szName;
        std::vector<std::string> vEntries;  // none: the directory cannot be read
        uint32_t u4Pid;
        bool bAlive;
    } aCases[] = {
        {"a live process, whatever the directory says", {"1"}, u4Self, true},
        {"no process contains the id", {"1", "self", "net"}, u4Dead, false},
        {"a longer id contains it", {"1", "9" + strDead + "1"}, u4Dead, true},
        {"a non-numeric entry containing it does not count", {"x" + strDead}, u4Dead, false},
        {"an id prefix does not count", {strDead.substr(0, strDead.size() - 1)}, u4Dead, false},
        {"a check that cannot run counts as alive", {}, u4Dead, true},
    };
    EXPECT_TRUE(IsClientProcessAlive(u4Self));
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.szName);
        std::filesystem::path dir = "/tmp/" + NyTestUniqueName("nyproc");
        for (const std::string& strEntry : c.vEntries) {
            std::filesystem::create_directories(dir / strEntry);
        }
        EXPECT_EQ(c.bAlive, IsClientProcessAliveIn(dir.c_str(), c.u4Pid));
        std::filesystem::remove_all(dir);
    }
}

}  // namespace
