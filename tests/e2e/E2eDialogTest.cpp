// The verify dialog through the server: a client's request, a person's typing, the answer
// (the synchronous request: ukey-uictl's verify in E2eUictlTest);
// several sessions and clients that go away: one dialog on screen at a time, nothing left
// behind, and a server that keeps serving.
#include <gtest/gtest.h>
#include <unistd.h>

#include "NyE2eEnv.h"
#include "NyUiServerProcess.h"
#include "os/NyOs.h"
#include "support/NyTestProcess.h"

// A client in a process of its own (ukey-uictl) that starts an asynchronous verify dialog.
const std::vector<std::string> NY_VERIFY_CLIENT = {"verify", "--async", "--min",
                                                   "1",      "--max",   "16"};

// Pending while shown, an update answered as accepted (the dialog takes none), the PIN in the
// final poll, then a terminate after which a poll comes back as it was sent.
TEST_F(E2eTest, AsynchronousDialogIsPolledUpdatedAnsweredAndTerminated) {
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&m_req, &m_resp));
    EXPECT_EQ(UI_RESULT_PENDING, m_resp.enRes);
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_GET_STATUS, &m_resp));
    EXPECT_EQ(UI_RESULT_PENDING, m_resp.enRes);
    m_req.enUiCmdType = UI_CMD_UPDATE;
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&m_req, &m_resp));
    EXPECT_EQ(UI_RESULT_OK, m_resp.enRes);
    EXPECT_EQ(1u, NyE2eVerifyWindows());

    NyE2eEnterPin(ServerPid(), "abcd1234");
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

TEST_F(E2eTest, SecondSessionsDialogWaitsUntilTheFirstIsClosed) {
    std::unique_ptr<CNyUiClient> pSecond = Connect(2);
    ASSERT_NE(nullptr, pSecond);
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&m_req, &m_resp));
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    ASSERT_EQ(NY_OK, pSecond->Exchange(&m_req, &m_resp));
    EXPECT_EQ(UI_RESULT_PENDING, m_resp.enRes);
    usleep(700 * 1000);
    EXPECT_EQ(1u, NyE2eVerifyWindows()) << "two dialogs on screen";
    ASSERT_EQ(NY_OK, pSecond->SendCommand(UI_CMD_GET_STATUS, &m_resp));
    EXPECT_EQ(UI_RESULT_PENDING, m_resp.enRes);

    NyE2eEnterPin(ServerPid(), "first");
    ASSERT_EQ(NY_OK, m_pClient->PollUntilDone(&m_resp, 20, NY_E2E_WAIT_MS));
    EXPECT_EQ("first", NyE2ePin(m_resp));
    // Now the second one comes up. (The first session's terminate comes last: the service
    // takes the dialog lock to destroy a dialog, and the second dialog now holds it.)
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    NyE2eEnterPin(ServerPid(), "second");
    ASSERT_EQ(NY_OK, pSecond->PollUntilDone(&m_resp, 20, NY_E2E_WAIT_MS));
    EXPECT_EQ("second", NyE2ePin(m_resp));
    pSecond->SendCommand(UI_CMD_TERMINATE, &m_resp);
    m_pClient->SendCommand(UI_CMD_TERMINATE, &m_resp);
}

// Fifty rounds of start, poll and terminate at once (answered promptly, no window comes up
// late), a client killed right after its start (no window comes up for it), then fifty clients
// killed with their dialog on screen: each dialog goes with its
// client, the server's descriptors and threads do not pile up, and it serves the next client.
TEST_F(E2eTest, ManyCyclesOfStartTerminateAndKilledClientsLeaveNothingBehind) {
    // One round first, so that what GTK sets up once is in the baseline.
    ASSERT_EQ(NY_OK, m_pClient->Exchange(&m_req, &m_resp));
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_TERMINATE, &m_resp));
    ASSERT_TRUE(NyE2eWaitNoVerifyWindow());
    usleep(300 * 1000);
    int nFds = ServerEntries("fd");
    int nThreads = ServerEntries("task");
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(NY_OK, m_pClient->Exchange(&m_req, &m_resp)) << "round " << i;
        ASSERT_EQ(UI_RESULT_PENDING, m_resp.enRes) << "round " << i;
        ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_GET_STATUS, &m_resp)) << "round " << i;
        uint64_t u8Start = NyOsGetTickCount64();
        ASSERT_EQ(NY_OK, m_pClient->SendCommand(UI_CMD_TERMINATE, &m_resp)) << "round " << i;
        ASSERT_EQ(UI_RESULT_OK, m_resp.enRes) << "round " << i;
        EXPECT_LT(NyOsGetTickCount64() - u8Start, 3000u) << "round " << i;
    }
    pid_t pidEarly = SpawnUictl(NY_VERIFY_CLIENT);
    usleep(100 * 1000);
    NyTestKillChild(pidEarly);
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
    usleep(1000 * 1000);
    EXPECT_EQ(0u, NyE2eVerifyWindows());
    for (int i = 0; i < 50; ++i) {
        pid_t pidClient = SpawnUictl(NY_VERIFY_CLIENT);
        ASSERT_FALSE(NyE2eWaitVerifyWindow().empty()) << "round " << i;
        NyTestKillChild(pidClient);
        ASSERT_TRUE(NyE2eWaitNoVerifyWindow()) << "round " << i;
    }
    EXPECT_TRUE(NyUiServerChildRunning(ServerPid()));
    // Sessions of killed clients end on their own; give the last ones a moment.
    EXPECT_TRUE(NyTestWaitUntil(
        [&] { return ServerEntries("task") <= nThreads && ServerEntries("fd") <= nFds; }, 20000))
        << "threads " << ServerEntries("task") << " (were " << nThreads << "), descriptors "
        << ServerEntries("fd") << " (were " << nFds << ")";
    EXPECT_EQ("next", AnswerVerify(m_pClient.get(), "next"));
}
