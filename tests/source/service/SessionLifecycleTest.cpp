// Sessions against dying clients, a dying server and many clients at once.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include "CNyUiClient.h"
#include "NyTestServer.h"
#include "comm/BlkShmCommHeader.h"
#include "ipc/NyEvent.h"
#include "ipc/NyIpcName.h"
#include "ipc/NyMutex.h"
#include "ipc/NyShareMem.h"
#include "os/NyOs.h"
#include "support/NyTestChannelObjects.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"

namespace {

size_t ThreadCount(pid_t pid) {
    std::filesystem::directory_iterator it("/proc/" + std::to_string(pid) + "/task");
    return static_cast<size_t>(std::distance(it, std::filesystem::directory_iterator()));
}

// Child body: opens u4Count sessions, hands their names to the parent through the pipe, then
// waits.
int OpenSessionsAndWait(const std::string& strMainName, int fdWrite, uint32_t u4Count) {
    std::vector<std::unique_ptr<CNyUiClient>> vClients;
    for (uint32_t i = 0; i < u4Count; ++i) {
        vClients.push_back(std::make_unique<CNyUiClient>());
        char szName[MAIN_SESSION_NAME_SIZE] = {};
        if (vClients.back()->JoinServer(strMainName.c_str()) != NY_OK ||
            vClients.back()->OpenSession(77 + i) != NY_OK) {
            return 1;
        }
        strncpy(szName, vClients.back()->SessionName().c_str(), sizeof(szName) - 1);
        if (write(fdWrite, szName, sizeof(szName)) != static_cast<ssize_t>(sizeof(szName))) {
            return 2;
        }
    }
    pause();
    return 0;
}

// Child body: connects with a token library's 500 ms, starts a session for u4Id and checks that
// the answer is its own, then exchanges u4Rounds blocks stamped with its id, each checked.
int OwnSessionRounds(const std::string& strMainName, uint32_t u4Id, uint32_t u4Rounds) {
    CNyUiClient client;
    BlkMainSessionResponseTag blkResp = {};
    if (client.JoinServer(strMainName.c_str(), 500) != NY_OK ||
        client.MainRequest(MAIN_REQ_START_SESSION, u4Id, getpid(), &blkResp) != NY_OK ||
        blkResp.uInteractionID != u4Id || blkResp.u4Status != MAIN_STATUS_DONE) {
        return 1;
    }
    if (u4Rounds > 0 && client.OpenSession(u4Id) != NY_OK) {
        return 2;
    }
    for (uint32_t u4Round = 0; u4Round < u4Rounds; ++u4Round) {
        tagBlkUiParam blkReq = {};
        blkReq.enUiCmdType = 0x30000 + u4Id;
        for (uint32_t u4Off = NY_UI_PAYLOAD_OFFSET; u4Off + 4 <= NY_UI_PARAM_SIZE; u4Off += 4) {
            NyUiParamSetU4(&blkReq, u4Off, u4Id << 24 | u4Round << 12 | u4Off);
        }
        tagBlkUiParam blkAnswer;
        if (client.Exchange(&blkReq, &blkAnswer) != NY_OK ||
            memcmp(NyUiParamBytes(&blkReq, 4), NyUiParamBytes(&blkAnswer, 4),
                   NY_UI_PARAM_SIZE - 4) != 0) {
            return 3;
        }
    }
    return 0;
}

// Child body: a client that takes the channel, says so, and when told writes a start request,
// wakes the server and dies at once, before the answer.
int SendStartAndDie(const std::string& strMain, int fdReady, int fdGo) {
    NY_MUTEX_HANDLE hMutex = nullptr;
    NY_SHM_HANDLE hShm = nullptr;
    NY_EVENT_HANDLE hRequest = nullptr;
    char c = 0;
    if (NyMutexCreate((strMain + "_Mutex_Communication").c_str(), &hMutex) != NY_OK ||
        NyShareMemOpen(strMain.c_str(), 0, &hShm) != NY_OK ||
        NyEventCreate((strMain + "_Event_Request").c_str(), &hRequest) != NY_OK ||
        NyMutexWait(hMutex, NY_WAIT_INFINITE) != NY_OK || write(fdReady, "r", 1) != 1 ||
        read(fdGo, &c, 1) != 1) {
        return 1;
    }
    BlkShmCommHeaderTag blkHeader = {};
    blkHeader.u4Command = COMM_COMMAND_REQUEST;
    blkHeader.u4DataLen = MAIN_SESSION_RECORD_SIZE;
    blkHeader.u4DataOffset = COMM_DATA_OFFSET;
    BlkMainSessionRequestTag blkReq = {
        MAIN_REQ_START_SESSION, 0, 0xDEAD, {}, static_cast<uint32_t>(getpid())};
    NyShareMemWrite(hShm, 0, &blkHeader, sizeof(blkHeader));
    NyShareMemWrite(hShm, COMM_DATA_OFFSET, &blkReq, sizeof(blkReq));
    NyEventSet(hRequest);
    NyMutexRelease(hMutex);  // what its death does, without the time the kernel takes for it
    raise(SIGKILL);
    return 2;
}

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
        key_t key = static_cast<key_t>(UnixName2Key(NY_KEY_KIND_EVENT, strEvent.c_str()));
        EXPECT_EQ(0, semctl(semget(key, 2, 0), 0, IPC_RMID)) << strEvent;
    }
}

}  // namespace

// A main channel pulled out from under a running server (its two files, or its three semaphore
// sets) is re-created within a second, its open sessions stopped.
TEST(SessionLifecycleTest, RemovedMainChannelIsRecreatedWithinASecondAndItsSessionsStopped) {
    for (auto pfnRemove : {RemoveFiles, RemoveSemaphoreSets}) {
        CNyTestServer server;
        ASSERT_TRUE(server.Started());
        CNyUiClient client;
        ASSERT_EQ(NY_OK, client.JoinServer(server.MainName().c_str()));
        ASSERT_EQ(NY_OK, client.OpenSession(21));
        pfnRemove(server.MainName());
        // A fresh client process each try: this one keeps the lost channel's record.
        EXPECT_TRUE(NyTestWaitUntil(
            [&]() {
                return NyTestWaitChild(NyTestForkChild([&]() {
                                           return OwnSessionRounds(server.MainName(), 1, 1);
                                       }),
                                       5000) == 0;
            },
            1000))
            << "the main channel did not come back";
        EXPECT_TRUE(NyTestWaitUntil(
            [&]() {
                EnBool enConnected = NY_TRUE;
                NyCommIsConnected(client.SessionHandle(), &enConnected);
                return enConnected == NY_FALSE;
            },
            1000))
            << "the open session was not stopped";
        EXPECT_TRUE(server.Stop());
    }
}

// A session's channel goes when its client dies under a live server; when the server was killed
// first, the next server of this executable removes what was left within a second of its start.
TEST(SessionLifecycleTest, SessionChannelsGoWhenTheClientDiesOrAtTheNextServersStart) {
    for (uint32_t u4Sessions : {1u, 5u}) {
        bool bKillServer = u4Sessions > 1;
        CNyTestServer server;
        ASSERT_TRUE(server.Started());
        int afd[2];
        ASSERT_EQ(0, pipe(afd));
        pid_t pidClient = NyTestForkChild([&server, &afd, u4Sessions]() {
            return OpenSessionsAndWait(server.MainName(), afd[1], u4Sessions);
        });
        std::vector<std::string> vSessions;
        for (uint32_t i = 0; i < u4Sessions; ++i) {
            char szName[MAIN_SESSION_NAME_SIZE] = {};
            ASSERT_EQ(static_cast<ssize_t>(sizeof(szName)), read(afd[0], szName, sizeof(szName)));
            vSessions.push_back(szName);
            ASSERT_TRUE(NyTestChannelObjectsExist(szName));
        }
        close(afd[0]);
        close(afd[1]);
        if (bKillServer) {
            server.Kill();
        }
        NyTestKillChild(pidClient);
        std::unique_ptr<CNyTestServer> pNext;
        if (bKillServer) {
            NyOsSleep(100);  // the killed sessions' leftovers are there to be found
            ASSERT_TRUE(NyTestChannelObjectsExist(vSessions[0]));
            pNext = std::make_unique<CNyTestServer>();
            ASSERT_TRUE(pNext->Started());
        }
        for (const std::string& strSession : vSessions) {
            EXPECT_TRUE(
                NyTestWaitUntil([&]() { return !NyTestChannelObjectsExist(strSession); }, 1000))
                << strSession << (bKillServer ? " outlived its server" : " outlived its client");
        }
        EXPECT_TRUE(pNext != nullptr ? pNext->Stop() : server.Stop());
    }
}

TEST(SessionLifecycleTest, WaitingClientLearnsPromptlyThatTheServerWasKilled) {
    CNyTestServer server;
    ASSERT_TRUE(server.Started());
    std::string strSession;
    {
        CNyUiClient client;
        ASSERT_EQ(NY_OK, client.JoinServer(server.MainName().c_str()));
        ASSERT_EQ(NY_OK, client.OpenSession(3));
        strSession = client.SessionName();
        // Frozen, the server cannot answer: the request waits until the server is gone.
        ASSERT_EQ(0, kill(server.Pid(), SIGSTOP));
        int iStatus = 0;
        ASSERT_EQ(server.Pid(), waitpid(server.Pid(), &iStatus, WUNTRACED));
        std::atomic<uint32_t> u4Result{NY_OK};
        std::atomic<uint64_t> u8Returned{0};
        std::thread waiter([&]() {
            tagBlkUiParam blkReq = {};
            tagBlkUiParam blkAnswer;
            u4Result = client.Exchange(&blkReq, &blkAnswer);
            u8Returned = NyOsGetTickCount64();
        });
        NyOsSleep(300);
        EXPECT_EQ(0u, u8Returned.load()) << "answered by a stopped server";
        uint64_t u8Killed = NyOsGetTickCount64();
        server.Kill();
        waiter.join();
        EXPECT_EQ(NY_ERR_COMM_NOT_CONNECTED, u4Result.load());
        // The client notices within its 500 ms heartbeat wait; the rest is scheduling slack.
        EXPECT_LT(u8Returned.load() - u8Killed, 1000u);
    }
    // The killed server could not remove its channels; their last user, the client, did.
    EXPECT_FALSE(NyTestChannelObjectsExist(strSession));
    EXPECT_FALSE(NyTestChannelObjectsExist(server.MainName()));
}

// A second server refuses a live channel (one line naming it); a killed server's is taken over.
TEST(SessionLifecycleTest, SecondServerRefusesALiveChannelAndTakesOverADeadOne) {
    std::string strMain;
    {
        CNyTestServer first;
        ASSERT_TRUE(first.Started());
        strMain = first.MainName();
        std::string strOut = "/tmp/" + NyTestUniqueName("second-server") + ".txt";
        pid_t pidSecond = NyTestSpawn({NyTestBinPath("ukey-uiserver"), strMain}, strOut);
        EXPECT_EQ(3, NyTestWaitChild(pidSecond, 10000));
        std::ifstream out(strOut);
        std::string strLine;
        std::getline(out, strLine);
        unlink(strOut.c_str());
        EXPECT_NE(std::string::npos, strLine.find("\"" + strMain + "\""));
        first.Kill();
    }
    CNyTestServer second(strMain);
    ASSERT_TRUE(second.Started());
    CNyUiClient client;
    ASSERT_EQ(NY_OK, client.JoinServer(strMain.c_str()));
    BlkMainSessionResponseTag blkResp;
    ASSERT_EQ(NY_OK, client.MainRequest(7, 1, getpid(), &blkResp));
    EXPECT_EQ(static_cast<uint32_t>(second.Pid()), blkResp.uServerPid);
}

// A connect storm: every client connects, starts its session and is served.
TEST(SessionLifecycleTest, HundredClientsAtOnceEachGetTheirOwnAnswers) {
    CNyTestServer server;
    ASSERT_TRUE(server.Started());
    std::vector<pid_t> vClients;
    for (uint32_t i = 0; i < 100; ++i) {
        vClients.push_back(
            NyTestForkChild([&server, i]() { return OwnSessionRounds(server.MainName(), i, 5); }));
    }
    for (size_t i = 0; i < vClients.size(); ++i) {
        EXPECT_EQ(0, NyTestWaitChild(vClients[i], 60000)) << "client " << i;
    }
    EXPECT_TRUE(server.Stop());
}

// A client killed while its start request is under way lets the next client in: that client
// gets its own answer, and no session is left that nobody can end.
TEST(SessionLifecycleTest, ClientKilledMidRequestLeavesNoAnswerToOthersAndNoOrphan) {
    CNyTestServer server;
    ASSERT_TRUE(server.Started());
    size_t cIdleThreads = ThreadCount(server.Pid());
    for (uint32_t u4Trial = 0; u4Trial < 20; ++u4Trial) {
        int afd[4];
        ASSERT_EQ(0, pipe(afd));
        ASSERT_EQ(0, pipe(afd + 2));
        pid_t pidKilled =
            NyTestForkChild([&]() { return SendStartAndDie(server.MainName(), afd[1], afd[2]); });
        char c = 0;
        ASSERT_EQ(1, read(afd[0], &c, 1));
        pid_t pidNext = NyTestForkChild(
            [&]() { return OwnSessionRounds(server.MainName(), 2000 + u4Trial, 0); });
        NyOsSleep(200);  // the next client waits for the channel
        ASSERT_EQ(1, write(afd[3], "g", 1));
        EXPECT_EQ(128 + SIGKILL, NyTestWaitChild(pidKilled, 10000));
        EXPECT_EQ(0, NyTestWaitChild(pidNext, 10000)) << "trial " << u4Trial;
        for (int fd : afd) {
            close(fd);
        }
    }
    EXPECT_TRUE(NyTestWaitUntil([&]() { return ThreadCount(server.Pid()) == cIdleThreads; }, 5000))
        << ThreadCount(server.Pid()) << " threads, " << cIdleThreads << " when idle";
    EXPECT_TRUE(server.Stop());
}

TEST(SessionLifecycleTest, StoppedServerLeavesNoChannelBehind) {
    std::vector<std::string> vNames;
    {
        CNyTestServer server;
        ASSERT_TRUE(server.Started());
        vNames.push_back(server.MainName());
        {
            // Two sessions for one id: the table keeps the second, the first runs on.
            CNyUiClient client;
            ASSERT_EQ(NY_OK, client.JoinServer(server.MainName().c_str()));
            for (int i = 0; i < 2; ++i) {
                ASSERT_EQ(NY_OK, client.OpenSession(8));
                vNames.push_back(client.SessionName());
            }
        }
        // The client process lives on, so both sessions are still served.
        EXPECT_TRUE(NyTestChannelObjectsExist(vNames[1]));
        EXPECT_TRUE(NyTestChannelObjectsExist(vNames[2]));
        EXPECT_TRUE(server.Stop());
    }
    for (const std::string& strName : vNames) {
        EXPECT_FALSE(NyTestChannelObjectsExist(strName)) << strName;
    }
}
