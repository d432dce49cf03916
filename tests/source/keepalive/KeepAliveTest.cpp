// The main session's keep-alive: a main channel pulled out from under a running server.
#include <gtest/gtest.h>
#include <stdlib.h>

#include "CNyUiClient.h"
#include "MainServer.h"
#include "NyTestServer.h"
#include "support/NyTestChannelObjects.h"
#include "support/NyTestProcess.h"

namespace {

// One keep-alive period and some slack for the probe and the re-creation.
constexpr unsigned int RECOVERY_MS = KEEP_ALIVE_PERIOD_S * 1000 + 10000;

// A fresh client process (this one keeps the lost channel's record under its name): true when
// it started a session on the server of strMain and had a command carried out.
bool FreshClientIsServed(const std::string& strMain) {
    unsetenv("DISPLAY");
    pid_t pid = NyTestSpawn({NyTestBinPath("ukey-uictl"), "raw", "--cmd", "2", "--main", strMain},
                            "/dev/null");
    return NyTestWaitChild(pid, 10000) == 0;
}

TEST(KeepAliveTest, LostMainChannelStopsTheSessionsAndComesBack) {
    CNyTestServer server;
    ASSERT_TRUE(server.Started());
    CNyUiClient client;
    ASSERT_EQ(NY_OK, client.JoinServer(server.MainName().c_str()));
    ASSERT_EQ(NY_OK, client.OpenSession(21));

    NyTestRemoveChannelObjects(server.MainName());
    ASSERT_FALSE(FreshClientIsServed(server.MainName())) << "the channel is still there";

    EXPECT_TRUE(NyTestWaitUntil(
        [&]() {
            EnBool enConnected = NY_TRUE;
            NyCommIsConnected(client.SessionHandle(), &enConnected);
            return enConnected == NY_FALSE;
        },
        RECOVERY_MS))
        << "the open session was not stopped";
    EXPECT_TRUE(FreshClientIsServed(server.MainName())) << "the main channel did not come back";
    EXPECT_TRUE(server.Stop());
}

}  // namespace
