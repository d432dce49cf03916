// A running server (started without a display) seen by its clients: main-session records and
// session blocks, and sessions against dying clients, a dying server and many clients at once.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/sem.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "CNyUiClient.h"
#include "ClientLiveness.h"
#include "NyTestServer.h"
#include "comm/BlkShmCommHeader.h"
#include "ipc/NyEvent.h"
#include "ipc/NyIpcName.h"
#include "ipc/NyMutex.h"
#include "ipc/NyShareMem.h"
#include "os/NyOs.h"
#include "session/NySessionChannel.h"
#include "support/NyTestChannelObjects.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"

namespace {

size_t ThreadCount(pid_t pid) {
    std::filesystem::directory_iterator it("/proc/" + std::to_string(pid) + "/task");
    return static_cast<size_t>(std::distance(it, std::filesystem::directory_iterator()));
}

// The count once it has held for 300 ms: what the server starts beside its request loop is
// running.
size_t SettledThreadCount(pid_t pid) {
    size_t cLast = 0;
    for (size_t cNow = ThreadCount(pid); cNow != cLast; cNow = ThreadCount(pid)) {
        cLast = cNow;
        NyOsSleep(300);
    }
    return cLast;
}

// Child body: opens u4Count sessions for one id (each replaces the last in the server's table),
// hands their names to the parent through the pipe, closes them if bClose, then waits.
int OpenSessionsAndWait(const std::string& strMainName, int fdWrite, uint32_t u4Count,
                        bool bClose) {
    std::vector<std::unique_ptr<CNyUiClient>> vClients;
    for (uint32_t i = 0; i < u4Count; ++i) {
        vClients.push_back(std::make_unique<CNyUiClient>());
        char szName[MAIN_SESSION_NAME_SIZE] = {};
        if (vClients.back()->JoinServer(strMainName.c_str()) != NY_OK ||
            vClients.back()->OpenSession(77) != NY_OK) {
            return 1;
        }
        strncpy(szName, vClients.back()->SessionName().c_str(), sizeof(szName) - 1);
        if (write(fdWrite, szName, sizeof(szName)) != static_cast<ssize_t>(sizeof(szName))) {
            return 2;
        }
    }
    if (bClose) {
        vClients.clear();  // the process lives on, so its sessions are still served
    }
    pause();
    return 0;
}

// Child body: connects with a token library's 500 ms, starts a session for u4Id and checks that
// the answer is its own, then exchanges u4Rounds blocks stamped with its id, each checked.
int OwnSessionRounds(const std::string& strMainName, uint32_t u4Id, uint32_t u4Rounds) {
    CNyUiClient client;
    BlkMainSessionResponseTag blkResp = {};
    // Exit 1: no connect; 4: no answer; 5: another client's answer; 6: refused.
    if (uint32_t u4Join = client.JoinServer(strMainName.c_str(), 500); u4Join != NY_OK) {
        fprintf(stderr, "client %d: connect failed, %08x\n", static_cast<int>(getpid()), u4Join);
        return 1;
    }
    if (client.MainRequest(MAIN_REQ_START_SESSION, u4Id, getpid(), &blkResp) != NY_OK) {
        return 4;
    }
    if (blkResp.uInteractionID != u4Id || blkResp.u4Status != MAIN_STATUS_DONE) {
        return blkResp.uInteractionID != u4Id ? 5 : 6;
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
    for (auto [strFile, enKind] : {std::pair{strMain, NY_FILE_KIND_SHM},
                                   {strMain + "_Mutex_Communication", NY_FILE_KIND_MUTEX}}) {
        char szPath[NY_IPC_PATH_SIZE];
        ASSERT_TRUE(FileName2Path(strFile.c_str(), enKind, szPath, sizeof(szPath)));
        EXPECT_EQ(0, unlink(szPath)) << szPath;
    }
}

void RemoveSemaphoreSets(const std::string& strMain) {
    for (const char* szSuffix : {"_Event_Request", "_Event_Response", "_Event_Connected"}) {
        std::string strEvent = strMain + szSuffix;
        key_t key = static_cast<key_t>(UnixName2Key(NY_KEY_KIND_EVENT, strEvent.c_str()));
        EXPECT_EQ(0, semctl(semget(key, 2, 0), 0, IPC_RMID)) << strEvent;
    }
}

constexpr uint8_t SENTINEL = 0xA5;

// Upper-case hexadecimal digits in the 8-4-4-4-12 shape.
bool IsGuidText(std::string str) {
    for (char& c : str) {
        c = c == '-' ? '-' : (isxdigit(c) && !islower(c) ? 'h' : '?');
    }
    return str == "hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh";
}

// A request with a recognisable pattern in every byte behind the header.
tagBlkUiParam PatternBlock(uint32_t u4CmdType, uint32_t u4Mode, uint8_t u1Salt) {
    tagBlkUiParam blk;
    for (uint32_t i = 0; i < NY_UI_PARAM_SIZE; ++i) {
        NyUiParamBytes(&blk, 0)[i] = static_cast<uint8_t>(i * 7 + u1Salt);
    }
    blk.enRes = 0x77;
    blk.enUiCmdType = u4CmdType;
    blk.u4Mode = u4Mode;
    blk.u4Protected = UI_PARAM_CLEAR;
    return blk;
}

class ServedSessionTest : public ::testing::Test {
protected:
    // Every test ends with the server leaving in order: exit code 0, nothing reported.
    void TearDown() override { EXPECT_TRUE(m_server.Stop()); }
    void SetUp() override {
        ASSERT_TRUE(m_server.Started());
        ASSERT_EQ(NY_OK, m_client.JoinServer(m_server.MainName().c_str()));
    }
    // Raw bytes on a channel into a 4096-byte answer buffer prefilled with a sentinel, so that
    // the answer's length shows.
    std::vector<uint8_t> Commit(const std::string& strName, const void* pvReq, uint32_t u4Len) {
        std::vector<uint8_t> vAnswer(COMM_DEFAULT_DATA_SIZE, SENTINEL);
        BlkCommInitParamTag blkInit = {};
        NY_COMM_HANDLE hChannel = nullptr;
        NySessionFillInitParam(strName.c_str(), &blkInit);
        EXPECT_EQ(NY_OK, NyCommConnect(&blkInit, 1000, &hChannel));
        EXPECT_EQ(NY_OK, NyCommCommit(hChannel, pvReq, u4Len, vAnswer.data(),
                                      static_cast<uint32_t>(vAnswer.size())));
        return vAnswer;
    }

    CNyTestServer m_server;
    CNyUiClient m_client;
};

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

// A session's channels go when its client dies under a live server, when the server stops (with
// the main channel), and, when the server was killed, at the start of the next server of this
// executable, within a second; that one takes over the channel a second server refused while live.
TEST(SessionLifecycleTest, SessionChannelsGoWithTheirClientTheirServerOrAtTheNextServersStart) {
    enum EnEnd { KILL_CLIENT, STOP_SERVER, KILL_SERVER };
    for (auto [enEnd, u4Sessions] :
         {std::pair{KILL_CLIENT, 1u}, {STOP_SERVER, 2u}, {KILL_SERVER, 5u}}) {
        SCOPED_TRACE(enEnd);
        CNyTestServer server;
        ASSERT_TRUE(server.Started());
        int afd[2];
        ASSERT_EQ(0, pipe(afd));
        pid_t pidClient = NyTestForkChild([&server, &afd, u4Sessions, enEnd]() {
            return OpenSessionsAndWait(server.MainName(), afd[1], u4Sessions, enEnd == STOP_SERVER);
        });
        std::vector<std::string> vSessions;
        for (uint32_t i = 0; i < u4Sessions; ++i) {
            char szName[MAIN_SESSION_NAME_SIZE] = {};
            ASSERT_EQ(static_cast<ssize_t>(sizeof(szName)), read(afd[0], szName, sizeof(szName)));
            // A fresh GUID-named channel for every start, although the id is the same.
            EXPECT_TRUE(IsGuidText(szName)) << szName;
            EXPECT_EQ(vSessions.end(), std::find(vSessions.begin(), vSessions.end(), szName));
            vSessions.push_back(szName);
            ASSERT_TRUE(NyTestChannelObjectsExist(szName));
        }
        close(afd[0]);
        close(afd[1]);
        std::unique_ptr<CNyTestServer> pNext;
        if (enEnd == STOP_SERVER) {
            NyOsSleep(100);  // the client has closed its sessions: only the server holds them
            ASSERT_TRUE(NyTestChannelObjectsExist(vSessions[0]));
            EXPECT_TRUE(server.Stop());
            vSessions.push_back(server.MainName());
            for (const std::string& strName : vSessions) {
                EXPECT_FALSE(NyTestChannelObjectsExist(strName)) << strName;
            }
        }
        if (enEnd == KILL_SERVER) {
            // A second server refuses the live channel (one line naming it).
            std::string strOut = "/tmp/" + NyTestUniqueName("second-server") + ".txt";
            pid_t pidSecond =
                NyTestSpawn({NyTestBinPath("ukey-uiserver"), server.MainName()}, strOut);
            EXPECT_EQ(3, NyTestWaitChild(pidSecond, 10000));
            std::ifstream out(strOut);
            std::string strLine;
            std::getline(out, strLine);
            unlink(strOut.c_str());
            EXPECT_NE(std::string::npos, strLine.find("\"" + server.MainName() + "\""));
            server.Kill();
        }
        NyTestKillChild(pidClient);
        if (enEnd == KILL_SERVER) {
            // Any server of this executable that starts now clears the leftovers, so a test
            // running beside this one may already have done it: no check that they are there.
            // The next server takes the killed one's channel over.
            pNext = std::make_unique<CNyTestServer>(server.MainName());
            ASSERT_TRUE(pNext->Started());
            CNyUiClient client;
            BlkMainSessionResponseTag blkResp;
            ASSERT_EQ(NY_OK, client.JoinServer(server.MainName().c_str()));
            ASSERT_EQ(NY_OK, client.MainRequest(7, 1, getpid(), &blkResp));
            EXPECT_EQ(static_cast<uint32_t>(pNext->Pid()), blkResp.uServerPid);
        }
        for (const std::string& strSession : vSessions) {
            EXPECT_TRUE(
                NyTestWaitUntil([&]() { return !NyTestChannelObjectsExist(strSession); }, 1000))
                << strSession << " outlived its end";
        }
        if (enEnd != STOP_SERVER) {
            EXPECT_TRUE(pNext != nullptr ? pNext->Stop() : server.Stop());
        }
    }
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
    size_t cIdleThreads = SettledThreadCount(server.Pid());
    std::vector<pid_t> vClients;
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
        vClients.insert(vClients.end(), {pidKilled, pidNext});
        for (int fd : afd) {
            close(fd);
        }
    }
    // Every session ends with its client, but for those whose client id is still part of a live
    // process's id (ids wrap round quickly on a busy machine): each of those keeps its session
    // thread.
    size_t cKept = 0;
    EXPECT_TRUE(NyTestWaitUntil(
        [&]() {
            cKept = std::count_if(vClients.begin(), vClients.end(),
                                  [](pid_t pid) { return IsClientProcessAlive(pid); });
            return ThreadCount(server.Pid()) == cIdleThreads + cKept;
        },
        5000))
        << ThreadCount(server.Pid()) << " threads, " << cIdleThreads << " when idle, " << cKept
        << " sessions kept by a live id";
    EXPECT_TRUE(server.Stop());
}

TEST_F(ServedSessionTest, StartForPidZeroIsRefusedAndFinishLeavesTheSessionRunning) {
    BlkMainSessionResponseTag blkResp;
    // A start for client pid 0 is refused: no process has that id, the session would never end.
    ASSERT_EQ(NY_OK, m_client.MainRequest(MAIN_REQ_START_SESSION, 6, 0, &blkResp));
    EXPECT_EQ(MAIN_STATUS_START_FAILED, blkResp.u4Status);
    EXPECT_EQ('\0', blkResp.szSessionName[0]);
    // A finish is answered done and leaves the session running.
    ASSERT_EQ(NY_OK, m_client.OpenSession(5));
    ASSERT_EQ(NY_OK, m_client.MainRequest(MAIN_REQ_FINISH_SESSION, 5, getpid(), &blkResp));
    EXPECT_EQ(MAIN_REQ_FINISH_SESSION, blkResp.u4ReqType);
    EXPECT_EQ(MAIN_STATUS_DONE, blkResp.u4Status);
    EXPECT_EQ(5u, blkResp.uInteractionID);
    tagBlkUiParam blkAnswer;
    EXPECT_EQ(NY_OK, m_client.SendCommand(UI_CMD_TERMINATE, &blkAnswer));
    EXPECT_EQ(UI_RESULT_OK, blkAnswer.enRes);
}

// With no dialog held and no display every command ends in one of these answers; every other
// byte of the answer is the request's own (a protection flag of 2 included: answered in clear).
TEST_F(ServedSessionTest, EveryBlockIsAnsweredAsTheRequestsOwnCopy) {
    struct {
        uint32_t u4CmdType;
        uint32_t u4Mode;
        uint32_t u4ExpectedRes;
        uint32_t u4Protected;
    } aCases[] = {
        {0x20000, 0, UI_RESULT_NOT_PROCESSED, 0},  // unknown command
        {0, 0, UI_RESULT_NOT_PROCESSED, 0},
        {0x20000, UI_MODE_ASYNC, UI_RESULT_NOT_PROCESSED, 0},
        {UI_CMD_GET_STATUS, 0, 0x77, 0},  // no dialog: the request unchanged
        {UI_CMD_TERMINATE, 0, UI_RESULT_OK, 0},
        {UI_CMD_UPDATE, 0, UI_RESULT_OK, 0},
        {UI_CMD_VERIFY_PIN, 0, UI_RESULT_NOT_PROCESSED, 0},  // the dialog cannot run
        {UI_CMD_VERIFY_PIN, UI_MODE_ASYNC, UI_RESULT_START_FAILED, 0},
        {UI_CMD_NO_DIALOG_1, 0, UI_RESULT_NOT_PROCESSED, 0},  // nothing held to run again
        {0x20000, 0, UI_RESULT_NOT_PROCESSED, 2},             // protection flag 2
    };
    ASSERT_EQ(NY_OK, m_client.OpenSession(0x51));
    uint8_t u1Salt = 0;
    for (const auto& c : aCases) {
        SCOPED_TRACE(u1Salt);
        tagBlkUiParam blkReq = PatternBlock(c.u4CmdType, c.u4Mode, ++u1Salt);
        blkReq.u4Protected = c.u4Protected;
        tagBlkUiParam blkAnswer;
        ASSERT_EQ(NY_OK, m_client.Exchange(&blkReq, &blkAnswer));
        EXPECT_EQ(c.u4ExpectedRes, blkAnswer.enRes);
        EXPECT_EQ(0, memcmp(NyUiParamBytes(&blkReq, 4), NyUiParamBytes(&blkAnswer, 4),
                            NY_UI_PARAM_SIZE - 4));
    }
    // A short request reads zeros, not the earlier request's bytes.
    uint32_t au4Short[2] = {0x77, 0x20001};
    std::vector<uint8_t> vAnswer = Commit(m_client.SessionName(), au4Short, sizeof(au4Short));
    tagBlkUiParam blkExpected = {};
    blkExpected.enUiCmdType = 0x20001;
    EXPECT_EQ(0, memcmp(&blkExpected, vAnswer.data(), sizeof(blkExpected)));
}
