// Several sessions and clients that go away: one dialog on screen at a time, nothing left
// behind, and a server that keeps serving.
#include <gtest/gtest.h>
#include <unistd.h>

#include "NyE2eEnv.h"
#include "NyUiServerProcess.h"
#include "os/NyOs.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"

namespace {

// A client in a process of its own (ukey-uictl) that starts an asynchronous verify dialog on
// the server and polls it.
pid_t SpawnVerifyClient(const CE2eServer& server) {
    return NyTestSpawn({NyTestBinPath("ukey-uictl"), "verify", "--main", server.MainName(),
                        "--async", "--min", "1", "--max", "16"},
                       "/dev/null");
}

}  // namespace

TEST(E2eSessionsTest, SecondSessionsDialogWaitsUntilTheFirstIsClosed) {
    CE2eServer server;
    ASSERT_TRUE(server.Started());
    std::unique_ptr<CNyUiClient> pFirst = server.Connect(1);
    std::unique_ptr<CNyUiClient> pSecond = server.Connect(2);
    ASSERT_NE(nullptr, pFirst);
    ASSERT_NE(nullptr, pSecond);
    tagBlkUiParam req = NyE2eVerifyRequest(1, 16, UI_MODE_ASYNC);
    tagBlkUiParam resp;
    ASSERT_EQ(NY_OK, pFirst->Exchange(&req, &resp));
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    ASSERT_EQ(NY_OK, pSecond->Exchange(&req, &resp));
    EXPECT_EQ(UI_RESULT_PENDING, resp.enRes);
    usleep(700 * 1000);
    EXPECT_EQ(1u, NyE2eVerifyWindows()) << "two dialogs on screen";
    ASSERT_EQ(NY_OK, pSecond->SendCommand(UI_CMD_GET_STATUS, &resp));
    EXPECT_EQ(UI_RESULT_PENDING, resp.enRes);

    NyE2eEnterPin(server.Pid(), "first");
    ASSERT_EQ(NY_OK, pFirst->PollUntilDone(&resp, 20, NY_E2E_WAIT_MS));
    EXPECT_EQ("first", NyE2ePin(resp));

    // Now the second one comes up. (The first session's terminate comes last: the service
    // takes the dialog lock to destroy a dialog, and the second dialog now holds it.)
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    NyE2eEnterPin(server.Pid(), "second");
    ASSERT_EQ(NY_OK, pSecond->PollUntilDone(&resp, 20, NY_E2E_WAIT_MS));
    EXPECT_EQ("second", NyE2ePin(resp));
    pSecond->SendCommand(UI_CMD_TERMINATE, &resp);
    pFirst->SendCommand(UI_CMD_TERMINATE, &resp);
}

TEST(E2eSessionsTest, ClientKilledWhileItsDialogIsShownTakesTheDialogWithIt) {
    CE2eServer server;
    ASSERT_TRUE(server.Started());
    pid_t pidClient = SpawnVerifyClient(server);
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    NyTestKillChild(pidClient);
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
    // The server serves the next client as before.
    std::unique_ptr<CNyUiClient> pClient = server.Connect();
    ASSERT_NE(nullptr, pClient);
    tagBlkUiParam req = NyE2eVerifyRequest(1, 16, UI_MODE_ASYNC);
    tagBlkUiParam resp;
    ASSERT_EQ(NY_OK, pClient->Exchange(&req, &resp));
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    NyE2eEnterPin(server.Pid(), "after");
    ASSERT_EQ(NY_OK, pClient->PollUntilDone(&resp, 20, NY_E2E_WAIT_MS));
    EXPECT_EQ("after", NyE2ePin(resp));
    pClient->SendCommand(UI_CMD_TERMINATE, &resp);
}

TEST(E2eSessionsTest, ClientKilledRightAfterItsStartLeavesNoWindow) {
    CE2eServer server;
    ASSERT_TRUE(server.Started());
    std::unique_ptr<CNyUiClient> pProbe = server.Connect(9);
    ASSERT_NE(nullptr, pProbe);
    pid_t pidClient = SpawnVerifyClient(server);
    usleep(100 * 1000);
    NyTestKillChild(pidClient);
    usleep(1000 * 1000);
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
    tagBlkUiParam resp;
    EXPECT_EQ(NY_OK, pProbe->SendCommand(UI_CMD_GET_STATUS, &resp));
}

// Fifty rounds of start, poll and terminate, then fifty clients killed with their dialog on
// screen: the server survives, no window stays, its descriptors and threads do not pile up.
TEST(E2eSessionsTest, ManyCyclesOfStartTerminateAndKilledClientsLeaveNothingBehind) {
    CE2eServer server;
    ASSERT_TRUE(server.Started());
    std::unique_ptr<CNyUiClient> pClient = server.Connect();
    ASSERT_NE(nullptr, pClient);
    tagBlkUiParam req = NyE2eVerifyRequest(6, 16, UI_MODE_ASYNC);
    tagBlkUiParam resp;
    // One round first, so that what GTK sets up once is in the baseline.
    ASSERT_EQ(NY_OK, pClient->Exchange(&req, &resp));
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    ASSERT_EQ(NY_OK, pClient->SendCommand(UI_CMD_TERMINATE, &resp));
    ASSERT_TRUE(NyE2eWaitNoVerifyWindow());
    usleep(300 * 1000);
    int nFds = server.OpenFds();
    int nThreads = server.Threads();

    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(NY_OK, pClient->Exchange(&req, &resp)) << "round " << i;
        ASSERT_EQ(UI_RESULT_PENDING, resp.enRes) << "round " << i;
        ASSERT_EQ(NY_OK, pClient->SendCommand(UI_CMD_GET_STATUS, &resp)) << "round " << i;
        ASSERT_EQ(NY_OK, pClient->SendCommand(UI_CMD_TERMINATE, &resp)) << "round " << i;
        ASSERT_EQ(UI_RESULT_OK, resp.enRes) << "round " << i;
    }
    EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
    for (int i = 0; i < 50; ++i) {
        pid_t pidClient = SpawnVerifyClient(server);
        ASSERT_FALSE(NyE2eWaitVerifyWindow().empty()) << "round " << i;
        NyTestKillChild(pidClient);
        ASSERT_TRUE(NyE2eWaitNoVerifyWindow()) << "round " << i;
    }
    EXPECT_TRUE(NyUiServerChildRunning(server.Pid()));
    // Sessions of killed clients end on their own; give the last ones a moment.
    EXPECT_TRUE(NyTestWaitUntil(
        [&] { return server.Threads() <= nThreads && server.OpenFds() <= nFds; }, 20000))
        << "threads " << server.Threads() << " (were " << nThreads << "), descriptors "
        << server.OpenFds() << " (were " << nFds << ")";
    ASSERT_EQ(NY_OK, pClient->SendCommand(UI_CMD_GET_STATUS, &resp));
}
