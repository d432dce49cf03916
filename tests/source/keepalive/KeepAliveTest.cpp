// The main session's keep-alive: a main channel pulled out from under a running server.
#include <gtest/gtest.h>

#include "CNyUiClient.h"
#include "MainServer.h"
#include "NyTestServer.h"
#include "support/NyTestChannelObjects.h"
#include "support/NyTestProcess.h"

namespace {

// One keep-alive period and some slack for the probe and the re-creation.
constexpr unsigned int RECOVERY_MS = KEEP_ALIVE_PERIOD_S * 1000 + 10000;

TEST(KeepAliveTest, LostMainChannelStopsTheSessionsAndComesBack) {
    CNyTestServer server;
    ASSERT_TRUE(server.Started());
    CNyUiClient client;
    ASSERT_EQ(NY_OK, client.JoinServer(server.MainName().c_str()));
    ASSERT_EQ(NY_OK, client.OpenSession(21));

    NyTestRemoveChannelObjects(server.MainName());
    CNyUiClient probe;
    ASSERT_NE(NY_OK, probe.JoinServer(server.MainName().c_str())) << "channel still there";

    EXPECT_TRUE(NyTestWaitUntil(
        [&]() {
            EnBool enConnected = NY_TRUE;
            NyCommIsConnected(client.SessionHandle(), &enConnected);
            return enConnected == NY_FALSE;
        },
        RECOVERY_MS))
        << "the open session was not stopped";
    EXPECT_TRUE(NyTestWaitUntil(
        [&]() { return probe.JoinServer(server.MainName().c_str(), 100) == NY_OK; }, 5000))
        << "the main channel did not come back";

    CNyUiClient fresh;
    ASSERT_EQ(NY_OK, fresh.JoinServer(server.MainName().c_str()));
    ASSERT_EQ(NY_OK, fresh.OpenSession(22));
    tagBlkUiParam blkAnswer;
    EXPECT_EQ(NY_OK, fresh.SendCommand(UI_CMD_TERMINATE, &blkAnswer));
    EXPECT_EQ(UI_RESULT_OK, blkAnswer.enRes);
}

}  // namespace
