// The main session's keep-alive: a main channel pulled out from under a running server (its two
// files, or its three semaphore sets) is re-created within a second, its sessions stopped.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/sem.h>
#include <unistd.h>

#include "CNyUiClient.h"
#include "NyTestServer.h"
#include "ipc/NyIpcName.h"
#include "support/NyTestProcess.h"

namespace {

constexpr unsigned int REPAIR_MS = 1000;

void RemoveFiles(const std::string& strMain) {
    char szPath[NY_IPC_PATH_SIZE];
    ASSERT_TRUE(FileName2Path(strMain.c_str(), NY_FILE_KIND_SHM, szPath, sizeof(szPath)));
    EXPECT_EQ(0, unlink(szPath));
    std::string strMutex = strMain + "_Mutex_Communication";
    ASSERT_TRUE(FileName2Path(strMutex.c_str(), NY_FILE_KIND_MUTEX, szPath, sizeof(szPath)));
    EXPECT_EQ(0, unlink(szPath));
}

void RemoveSemaphoreSets(const std::string& strMain) {
    for (const char* szSuffix : {"_Event_Request", "_Event_Response", "_Event_Connected"}) {
        std::string strEvent = strMain + szSuffix;
        int iSemId =
            semget(static_cast<key_t>(UnixName2Key(NY_KEY_KIND_EVENT, strEvent.c_str())), 2, 0);
        ASSERT_GE(iSemId, 0) << strEvent;
        EXPECT_EQ(0, semctl(iSemId, 0, IPC_RMID));
    }
}

// A fresh client process (this one keeps the lost channel's record under its name): true when
// it started a session on the server of strMain and had a command carried out.
bool FreshClientIsServed(const std::string& strMain) {
    unsetenv("DISPLAY");
    pid_t pid = NyTestSpawn({NyTestBinPath("ukey-uictl"), "raw", "--cmd", "2", "--main", strMain},
                            "/dev/null");
    return NyTestWaitChild(pid, 10000) == 0;
}

}  // namespace

TEST(KeepAliveTest, RemovedMainChannelIsRecreatedWithinASecondAndItsSessionsStopped) {
    for (auto pfnRemove : {RemoveFiles, RemoveSemaphoreSets}) {
        CNyTestServer server;
        ASSERT_TRUE(server.Started());
        CNyUiClient client;
        ASSERT_EQ(NY_OK, client.JoinServer(server.MainName().c_str()));
        ASSERT_EQ(NY_OK, client.OpenSession(21));
        pfnRemove(server.MainName());
        // Each try is a client process of its own, which takes a moment to start.
        EXPECT_TRUE(
            NyTestWaitUntil([&]() { return FreshClientIsServed(server.MainName()); }, REPAIR_MS))
            << "the main channel did not come back";
        EXPECT_TRUE(NyTestWaitUntil(
            [&]() {
                EnBool enConnected = NY_TRUE;
                NyCommIsConnected(client.SessionHandle(), &enConnected);
                return enConnected == NY_FALSE;
            },
            REPAIR_MS))
            << "the open session was not stopped";
        EXPECT_TRUE(server.Stop());
    }
}
