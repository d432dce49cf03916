// The verify dialog through the server: a client's request, a person's typing, the answer;
// several sessions and clients that go away: one dialog on screen at a time, nothing left
// behind, and a server that keeps serving.
#include <gtest/gtest.h>
#include <unistd.h>

#include <future>

#include "NyE2eEnv.h"
#include "NyUiServerProcess.h"
#include "os/NyOs.h"
#include "support/NyTestProcess.h"

namespace {

class E2eDialogTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_server.Started());
        m_pClient = m_server.Connect();
        ASSERT_NE(nullptr, m_pClient);
    }
    // A client in a process of its own (ukey-uictl) that starts an asynchronous verify dialog.
    pid_t SpawnVerifyClient() const {
        return m_server.SpawnUictl({"verify", "--async", "--min", "1", "--max", "16"});
    }

    CE2eServer m_server;
    std::unique_ptr<CNyUiClient> m_pClient;
    tagBlkUiParam m_req = NyE2eVerifyRequest(4, 16, UI_MODE_ASYNC);
    tagBlkUiParam m_resp;
};

}  // namespace

TEST_F(E2eDialogTest, SynchronousRequestAnswersWithTheTypedPin) {
    m_req.u4Mode = 0;
    std::future<uint32_t> result =
        std::async(std::launch::async, [&] { return m_pClient->Exchange(&m_req, &m_resp); });
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    NyE2eEnterPin(m_server.Pid(), "secret42");
    ASSERT_EQ(std::future_status::ready, result.wait_for(std::chrono::seconds(30)));
    EXPECT_EQ(NY_OK, result.get());
    EXPECT_EQ(UI_RESULT_OK, m_resp.enRes);
    EXPECT_EQ("secret42", NyE2ePin(m_resp));
    EXPECT_EQ(8u, NyUiParamGetU4(&m_resp, UI_OFS_VERIFY_PIN_LEN));
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
}

// Pending while shown, an update answered as accepted (the dialog takes none), the PIN in the
// final poll, then a terminate after which a poll comes back as it was sent.
TEST_F(E2eDialogTest, AsynchronousDialogIsPolledUpdatedAnsweredAndTerminated) {
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&m_req, &m_resp));
    EXPECT_EQ(UI_RESULT_PENDING, m_resp.enRes);
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_GET_STATUS, &m_resp));
    EXPECT_EQ(UI_RESULT_PENDING, m_resp.enRes);
    m_req.enUiCmdType = UI_CMD_UPDATE;
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&m_req, &m_resp));
    EXPECT_EQ(UI_RESULT_OK, m_resp.enRes);
    EXPECT_EQ(1u, NyE2eVerifyWindows());

    NyE2eEnterPin(m_server.Pid(), "abcd1234");
    ASSERT_EQ(NY_OK, m_pClient->PollUntilDone(&m_resp, 20, NY_E2E_WAIT_MS));
    EXPECT_EQ(UI_RESULT_OK, m_resp.enRes);
    EXPECT_EQ("abcd1234", NyE2ePin(m_resp));
    EXPECT_EQ(8u, NyUiParamGetU4(&m_resp, UI_OFS_VERIFY_PIN_LEN));
    ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_TERMINATE, &m_resp));
    EXPECT_EQ(UI_RESULT_OK, m_resp.enRes);
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
    m_req.enUiCmdType = UI_CMD_GET_STATUS;
    m_req.enRes = 0x77;
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&m_req, &m_resp));
    EXPECT_EQ(0x77u, m_resp.enRes);
}

TEST_F(E2eDialogTest, TerminateRightAfterTheStartAnswersPromptlyAndLeavesNoWindow) {
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(NY_OK, m_pClient->Exchange(&m_req, &m_resp));
        ASSERT_EQ(UI_RESULT_PENDING, m_resp.enRes);
        uint64_t u8Start = NyOsGetTickCount64();
        ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_TERMINATE, &m_resp));
        EXPECT_EQ(UI_RESULT_OK, m_resp.enRes);
        EXPECT_LT(NyOsGetTickCount64() - u8Start, 3000u);
    }
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
    usleep(500 * 1000);  // a window that came up late would show now
    EXPECT_EQ(0u, NyE2eVerifyWindows());
    EXPECT_EQ("x1", m_server.AnswerVerify(m_pClient.get(), "x1"));  // the session still works
}

TEST_F(E2eDialogTest, SecondSessionsDialogWaitsUntilTheFirstIsClosed) {
    std::unique_ptr<CNyUiClient> pSecond = m_server.Connect(2);
    ASSERT_NE(nullptr, pSecond);
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&m_req, &m_resp));
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    ASSERT_EQ(NY_OK, pSecond->Exchange(&m_req, &m_resp));
    EXPECT_EQ(UI_RESULT_PENDING, m_resp.enRes);
    usleep(700 * 1000);
    EXPECT_EQ(1u, NyE2eVerifyWindows()) << "two dialogs on screen";
    ASSERT_EQ(NY_OK, pSecond->SendCommand(UI_CMD_GET_STATUS, &m_resp));
    EXPECT_EQ(UI_RESULT_PENDING, m_resp.enRes);

    NyE2eEnterPin(m_server.Pid(), "first");
    ASSERT_EQ(NY_OK, m_pClient->PollUntilDone(&m_resp, 20, NY_E2E_WAIT_MS));
    EXPECT_EQ("first", NyE2ePin(m_resp));
    // Now the second one comes up. (The first session's terminate comes last: the service
    // takes the dialog lock to destroy a dialog, and the second dialog now holds it.)
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    NyE2eEnterPin(m_server.Pid(), "second");
    ASSERT_EQ(NY_OK, pSecond->PollUntilDone(&m_resp, 20, NY_E2E_WAIT_MS));
    EXPECT_EQ("second", NyE2ePin(m_resp));
    pSecond->SendCommand(UI_CMD_TERMINATE, &m_resp);
    m_pClient->SendCommand(UI_CMD_TERMINATE, &m_resp);
}

TEST_F(E2eDialogTest, ClientKilledRightAfterItsStartLeavesNoWindow) {
    pid_t pidClient = SpawnVerifyClient();
    usleep(100 * 1000);
    NyTestKillChild(pidClient);
    usleep(1000 * 1000);
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
    EXPECT_EQ("after", m_server.AnswerVerify(m_pClient.get(), "after"));
}

// Fifty rounds of start, poll and terminate, then fifty clients killed with their dialog on
// screen: each dialog goes with its client, no window stays, the server's descriptors and
// threads do not pile up, and it serves the next client as before.
TEST_F(E2eDialogTest, ManyCyclesOfStartTerminateAndKilledClientsLeaveNothingBehind) {
    // One round first, so that what GTK sets up once is in the baseline.
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&m_req, &m_resp));
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_TERMINATE, &m_resp));
    ASSERT_TRUE(NyE2eWaitNoVerifyWindow());
    usleep(300 * 1000);
    int nFds = m_server.OpenFds();
    int nThreads = m_server.Threads();
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(NY_OK, m_pClient->Exchange(&m_req, &m_resp)) << "round " << i;
        ASSERT_EQ(UI_RESULT_PENDING, m_resp.enRes) << "round " << i;
        ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_GET_STATUS, &m_resp)) << "round " << i;
        ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_TERMINATE, &m_resp)) << "round " << i;
        ASSERT_EQ(UI_RESULT_OK, m_resp.enRes) << "round " << i;
    }
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
    for (int i = 0; i < 50; ++i) {
        pid_t pidClient = SpawnVerifyClient();
        ASSERT_FALSE(NyE2eWaitVerifyWindow().empty()) << "round " << i;
        NyTestKillChild(pidClient);
        ASSERT_TRUE(NyE2eWaitNoVerifyWindow()) << "round " << i;
    }
    EXPECT_TRUE(NyUiServerChildRunning(m_server.Pid()));
    // Sessions of killed clients end on their own; give the last ones a moment.
    EXPECT_TRUE(NyTestWaitUntil(
        [&] { return m_server.Threads() <= nThreads && m_server.OpenFds() <= nFds; }, 20000))
        << "threads " << m_server.Threads() << " (were " << nThreads << "), descriptors "
        << m_server.OpenFds() << " (were " << nFds << ")";
    EXPECT_EQ("next", m_server.AnswerVerify(m_pClient.get(), "next"));
}
