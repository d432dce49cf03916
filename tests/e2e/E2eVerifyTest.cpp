// The verify dialog through the server: a client's request, a person's typing, the answer.
#include <gtest/gtest.h>

#include <unistd.h>

#include <future>

#include "NyE2eEnv.h"
#include "os/NyOs.h"

namespace {

class E2eVerifyTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_server.Started());
        m_pClient = m_server.Connect();
        ASSERT_NE(nullptr, m_pClient);
    }

    CE2eServer m_server;
    std::unique_ptr<CNyUiClient> m_pClient;
};

}  // namespace

TEST_F(E2eVerifyTest, SynchronousRequestAnswersWithTheTypedPin) {
    tagBlkUiParam req = NyE2eVerifyRequest(6, 16);
    tagBlkUiParam resp;
    std::future<uint32_t> result =
        std::async(std::launch::async, [&] { return m_pClient->Exchange(&req, &resp); });
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    NyE2eEnterPin(m_server.Pid(), "secret42");
    ASSERT_EQ(std::future_status::ready, result.wait_for(std::chrono::seconds(30)));
    EXPECT_EQ(NY_OK, result.get());
    EXPECT_EQ(UI_RESULT_OK, resp.enRes);
    EXPECT_EQ("secret42", NyE2ePin(resp));
    EXPECT_EQ(8u, NyUiParamGetU4(&resp, UI_OFS_VERIFY_PIN_LEN));
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
}

// Pending while shown, an update answered as accepted (the dialog takes none), the PIN in the
// final poll, then a terminate after which a poll comes back as it was sent.
TEST_F(E2eVerifyTest, AsynchronousDialogIsPolledUpdatedAnsweredAndTerminated) {
    tagBlkUiParam req = NyE2eVerifyRequest(4, 16, UI_MODE_ASYNC);
    tagBlkUiParam resp;
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&req, &resp));
    EXPECT_EQ(UI_RESULT_PENDING, resp.enRes);
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_GET_STATUS, &resp));
    EXPECT_EQ(UI_RESULT_PENDING, resp.enRes);
    req.enUiCmdType = UI_CMD_UPDATE;
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&req, &resp));
    EXPECT_EQ(UI_RESULT_OK, resp.enRes);
    EXPECT_EQ(1u, NyE2eVerifyWindows());

    NyE2eEnterPin(m_server.Pid(), "abcd1234");
    ASSERT_EQ(NY_OK, m_pClient->PollUntilDone(&resp, 20, NY_E2E_WAIT_MS));
    EXPECT_EQ(UI_RESULT_OK, resp.enRes);
    EXPECT_EQ("abcd1234", NyE2ePin(resp));
    EXPECT_EQ(8u, NyUiParamGetU4(&resp, UI_OFS_VERIFY_PIN_LEN));
    ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_TERMINATE, &resp));
    EXPECT_EQ(UI_RESULT_OK, resp.enRes);
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
    tagBlkUiParam poll = NyE2eVerifyRequest(0, 0);
    poll.enUiCmdType = UI_CMD_GET_STATUS;
    poll.enRes = 0x77;
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&poll, &resp));
    EXPECT_EQ(0x77u, resp.enRes);
}

TEST_F(E2eVerifyTest, TerminateRightAfterTheStartAnswersPromptlyAndLeavesNoWindow) {
    for (int i = 0; i < 5; ++i) {
        tagBlkUiParam req = NyE2eVerifyRequest(6, 16, UI_MODE_ASYNC);
        tagBlkUiParam resp;
        ASSERT_EQ(NY_OK, m_pClient->Exchange(&req, &resp));
        ASSERT_EQ(UI_RESULT_PENDING, resp.enRes);
        uint64_t u8Start = NyOsGetTickCount64();
        ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_TERMINATE, &resp));
        EXPECT_EQ(UI_RESULT_OK, resp.enRes);
        EXPECT_LT(NyOsGetTickCount64() - u8Start, 3000u);
    }
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
    usleep(500 * 1000);  // a window that came up late would show now
    EXPECT_EQ(0u, NyE2eVerifyWindows());
    EXPECT_EQ("x1", m_server.AnswerVerify(m_pClient.get(), "x1"));  // the session still works
}
