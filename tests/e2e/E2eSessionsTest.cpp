// Several sessions and clients that go away: one dialog on screen at a time, nothing left
// behind, and a server that keeps serving.
#include <gtest/gtest.h>
#include <unistd.h>

#include "NyE2eEnv.h"
#include "NyUiServerProcess.h"
#include "support/NyTestProcess.h"

namespace {

// A client in a process of its own (ukey-uictl) that starts an asynchronous verify dialog.
pid_t SpawnVerifyClient(const CE2eServer& server) {
    return server.SpawnUictl({"verify", "--async", "--min", "1", "--max", "16"});
}

class E2eSessionsTest : public testing::Test {
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

TEST_F(E2eSessionsTest, SecondSessionsDialogWaitsUntilTheFirstIsClosed) {
    std::unique_ptr<CNyUiClient> pSecond = m_server.Connect(2);
    ASSERT_NE(nullptr, pSecond);
    tagBlkUiParam req = NyE2eVerifyRequest(1, 16, UI_MODE_ASYNC);
    tagBlkUiParam resp;
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&req, &resp));
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    ASSERT_EQ(NY_OK, pSecond->Exchange(&req, &resp));
    EXPECT_EQ(UI_RESULT_PENDING, resp.enRes);
    usleep(700 * 1000);
    EXPECT_EQ(1u, NyE2eVerifyWindows()) << "two dialogs on screen";
    ASSERT_EQ(NY_OK, pSecond->SendCommand(UI_CMD_GET_STATUS, &resp));
    EXPECT_EQ(UI_RESULT_PENDING, resp.enRes);

    NyE2eEnterPin(m_server.Pid(), "first");
    ASSERT_EQ(NY_OK, m_pClient->PollUntilDone(&resp, 20, NY_E2E_WAIT_MS));
    EXPECT_EQ("first", NyE2ePin(resp));
    // Now the second one comes up. (The first session's terminate comes last: the service
    // takes the dialog lock to destroy a dialog, and the second dialog now holds it.)
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    NyE2eEnterPin(m_server.Pid(), "second");
    ASSERT_EQ(NY_OK, pSecond->PollUntilDone(&resp, 20, NY_E2E_WAIT_MS));
    EXPECT_EQ("second", NyE2ePin(resp));
    pSecond->SendCommand(UI_CMD_TERMINATE, &resp);
    m_pClient->SendCommand(UI_CMD_TERMINATE, &resp);
}

TEST_F(E2eSessionsTest, ClientKilledRightAfterItsStartLeavesNoWindow) {
    pid_t pidClient = SpawnVerifyClient(m_server);
    usleep(100 * 1000);
    NyTestKillChild(pidClient);
    usleep(1000 * 1000);
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
    EXPECT_EQ("after", m_server.AnswerVerify(m_pClient.get(), "after"));
}

// Fifty rounds of start, poll and terminate, then fifty clients killed with their dialog on
// screen: each dialog goes with its client, no window stays, the server's descriptors and
// threads do not pile up, and it serves the next client as before.
TEST_F(E2eSessionsTest, ManyCyclesOfStartTerminateAndKilledClientsLeaveNothingBehind) {
    tagBlkUiParam req = NyE2eVerifyRequest(6, 16, UI_MODE_ASYNC);
    tagBlkUiParam resp;
    // One round first, so that what GTK sets up once is in the baseline.
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&req, &resp));
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_TERMINATE, &resp));
    ASSERT_TRUE(NyE2eWaitNoVerifyWindow());
    usleep(300 * 1000);
    int nFds = m_server.OpenFds();
    int nThreads = m_server.Threads();

    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(NY_OK, m_pClient->Exchange(&req, &resp)) << "round " << i;
        ASSERT_EQ(UI_RESULT_PENDING, resp.enRes) << "round " << i;
        ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_GET_STATUS, &resp)) << "round " << i;
        ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_TERMINATE, &resp)) << "round " << i;
        ASSERT_EQ(UI_RESULT_OK, resp.enRes) << "round " << i;
    }
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
    for (int i = 0; i < 50; ++i) {
        pid_t pidClient = SpawnVerifyClient(m_server);
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
