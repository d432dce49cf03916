// The channel between real processes (a forked child plays the server or the client), and the
// server's side of one region: canned answers, what Listen refuses to serve, which answers are
// written, and the wipe of an answer once its client has taken it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <random>

#include "comm/BlkShmCommHeader.h"
#include "comm/CNyShmCommunication.h"
#include "ipc/NyEvent.h"
#include "ipc/NyMutex.h"
#include "ipc/NyShareMem.h"
#include "os/NyCommonLib.h"
#include "os/NyOs.h"
#include "session/NySessionChannel.h"
#include "support/NyTestChannelObjects.h"
#include "support/NyTestLogCapture.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"

namespace {

constexpr uint32_t EAGAIN_CODE = static_cast<uint32_t>(EAGAIN);
constexpr uint32_t CAPACITY = COMM_DEFAULT_DATA_SIZE;

BlkCommInitParamTag NyTestCommParam(const std::string& strName) {
    BlkCommInitParamTag blkParam;
    NySessionFillInitParam(strName.c_str(), &blkParam);
    return blkParam;
}

// NyCommConnect, retried while the server has not yet created the channel.
uint32_t NyTestCommConnect(const std::string& strName, NY_COMM_HANDLE* phSession) {
    BlkCommInitParamTag blkParam = NyTestCommParam(strName);
    uint64_t u8End = NyOsGetTickCount64() + 5000;
    uint32_t u4Result = NyCommConnect(&blkParam, 500, phSession);
    while (u4Result != 0 && NyOsGetTickCount64() < u8End) {
        NyOsSleep(5);
        u4Result = NyCommConnect(&blkParam, 500, phSession);
    }
    return u4Result;
}

// The test server's answer: the bytes reversed and flipped, so that an answer can neither be the
// request itself nor another client's answer.
std::vector<uint8_t> NyTestCommAnswerFor(const std::vector<uint8_t>& vRequest) {
    std::vector<uint8_t> vAnswer(vRequest.rbegin(), vRequest.rend());
    for (uint8_t& u1 : vAnswer) {
        u1 ^= 0xA5;
    }
    return vAnswer;
}

std::vector<uint8_t> Pattern(size_t cb, uint32_t u4Seed) {
    std::vector<uint8_t> v(cb);
    std::mt19937 rng(u4Seed);
    std::generate(v.begin(), v.end(), [&rng] { return static_cast<uint8_t>(rng()); });
    return v;
}

// Listens until a request arrives (or 20 s pass); returns the last listen result.
uint32_t ListenFor(NY_COMM_HANDLE hSession, std::vector<uint8_t>* pvBuffer, uint32_t* pu4Length) {
    uint64_t u8End = NyOsGetTickCount64() + 20000;
    uint32_t u4Capacity = *pu4Length;
    uint32_t u4Result = EAGAIN_CODE;
    while (u4Result == EAGAIN_CODE && NyOsGetTickCount64() < u8End) {
        *pu4Length = u4Capacity;
        u4Result = NyCommListen(hSession, pvBuffer->data(), pu4Length);
    }
    return u4Result;
}

uint32_t Answer(NY_COMM_HANDLE hSession, const std::vector<uint8_t>& vData) {
    BlkCommNotifyDataTag blkNotify = {COMM_SIGNAL_RESPONSE, vData.data(),
                                      static_cast<uint32_t>(vData.size())};
    return NyCommNotify(hSession, &blkNotify);
}

// Serves u4Requests requests with NyTestCommAnswerFor, then disconnects (a child's exit code: 0,
// or the step that failed).
int NyTestCommServe(const std::string& strName, uint32_t u4Requests) {
    BlkCommInitParamTag blkParam = NyTestCommParam(strName);
    NY_COMM_HANDLE hSession = nullptr;
    if (NyCommConnectAsServer(&blkParam, &hSession) != 0) {
        return 20;
    }
    int iResult = 0;
    for (uint32_t u4Served = 0; u4Served < u4Requests && iResult == 0; ++u4Served) {
        std::vector<uint8_t> vBuffer(CAPACITY);
        uint32_t u4Length = CAPACITY;
        iResult = ListenFor(hSession, &vBuffer, &u4Length) != 0 ? 21 : 0;
        vBuffer.resize(u4Length);
        iResult =
            iResult != 0 ? iResult : (Answer(hSession, NyTestCommAnswerFor(vBuffer)) ? 22 : 0);
    }
    return NyCommDisconnect(hSession) == 0 ? iResult : 23;
}

// Child body: one commit of vRequest on a channel (connected afresh unless hSession is given);
// 0 when the test server's answer came back.
int CommitOnce(const std::string& strName, const std::vector<uint8_t>& vRequest,
               NY_COMM_HANDLE hSession = nullptr) {
    if (hSession == nullptr && NyTestCommConnect(strName, &hSession) != 0) {
        return 1;
    }
    std::vector<uint8_t> vAnswer(vRequest.size());
    uint32_t u4Size = static_cast<uint32_t>(vRequest.size());
    if (NyCommCommit(hSession, vRequest.data(), u4Size, vAnswer.data(), u4Size) != 0) {
        return 2;
    }
    return vAnswer == NyTestCommAnswerFor(vRequest) ? 0 : 3;
}

class NyCommChannel : public ::testing::Test {
protected:
    void SetUp() override { NyCommonLibInit(); }
    void TearDown() override {
        for (pid_t pid : m_vChildren) {
            NyTestKillChild(pid);
        }
        EXPECT_FALSE(NyTestChannelObjectsExist(m_strName));
        NyCommonLibRelease();
    }
    pid_t Child(const std::function<int()>& pfnBody) {
        m_vChildren.push_back(NyTestForkChild(pfnBody));
        return m_vChildren.back();
    }
    // Exit code of a child; a child that has ended is no longer killed at the end.
    int Reap(pid_t pid) {
        int iStatus = NyTestWaitChild(pid, 20000);
        m_vChildren.erase(std::remove(m_vChildren.begin(), m_vChildren.end(), pid),
                          m_vChildren.end());
        return iStatus;
    }
    NY_COMM_HANDLE StartServer() {
        NY_COMM_HANDLE hSession = nullptr;
        EXPECT_EQ(NyCommConnectAsServer(&m_blkParam, &hSession), 0u);
        return hSession;
    }

    std::string m_strName = NyTestUniqueName("comm");
    BlkCommInitParamTag m_blkParam = NyTestCommParam(m_strName);
    std::vector<pid_t> m_vChildren;
};

BlkShmCommHeaderTag RequestHeader(uint32_t u4Direction, uint32_t u4Command, uint32_t u4Length) {
    BlkShmCommHeaderTag blkHeader = {};
    blkHeader.u4Direction = u4Direction;
    blkHeader.u4Command = u4Command;
    blkHeader.u4DataLen = u4Length;
    blkHeader.u4DataOffset = COMM_DATA_OFFSET;
    return blkHeader;
}

// The server's side of one region, in this process: a raw region handle plays a client that
// writes whatever it likes, a second channel object a client of this process.
class ServerFixture : public NyCommChannel {
protected:
    void SetUp() override {
        NyCommChannel::SetUp();
        ASSERT_EQ(server.StartAsServer(&m_blkParam, &hServer), 0u);
        ASSERT_EQ(NyShareMemOpen(m_strName.c_str(), 0, &hShm), 0u);
    }
    void TearDown() override {
        EXPECT_TRUE(hServer == nullptr || server.Disconnect(hServer) == 0u);
        NyShareMemClose(hShm);
        NyCommChannel::TearDown();
    }
    BlkShmCommHeaderTag Header() {
        BlkShmCommHeaderTag blkHeader = {};
        NyShareMemRead(hShm, 0, &blkHeader, sizeof(blkHeader));
        return blkHeader;
    }
    // Writes a header and 4 data bytes as a client would, and sets the request event.
    void Write(const BlkShmCommHeaderTag& blkHeader, uint32_t u4Data) {
        NyShareMemWrite(hShm, 0, &blkHeader, sizeof(blkHeader));
        NyShareMemWrite(hShm, COMM_DATA_OFFSET, &u4Data, sizeof(u4Data));
        NY_EVENT_HANDLE hRequest = nullptr;
        ASSERT_EQ(NyEventCreate((m_strName + "_Event_Request").c_str(), &hRequest), 0u);
        NyEventSet(hRequest);
        NyEventClose(hRequest);
    }
    // Sends 4 bytes of data as the server's answer.
    uint32_t Notify(uint32_t u4Data) {
        BlkCommNotifyDataTag blkNotify = {COMM_SIGNAL_RESPONSE, &u4Data, sizeof(u4Data)};
        return server.Notify(hServer, &blkNotify);
    }
    uint32_t DataInRegion() {
        uint32_t u4Data = 0;
        NyShareMemRead(hShm, COMM_DATA_OFFSET, &u4Data, sizeof(u4Data));
        return u4Data;
    }
    uint32_t Listen(uint32_t* pu4Data) {
        uint32_t u4Length = sizeof(*pu4Data);
        return server.Listen(hServer, pu4Data, &u4Length);
    }

    CNyShmCommunication server;
    NY_COMM_HANDLE hServer = nullptr;
    NY_SHM_HANDLE hShm = nullptr;
};

}  // namespace

TEST_F(NyCommChannel, RestartedServerServesOldClientsNewRequests) {
    pid_t pidFirst = Child([this] {
        int iResult = NyTestCommServe(m_strName, 1);
        pause();  // stays up until killed
        return iResult;
    });
    NY_COMM_HANDLE hSession = nullptr;
    NY_COMM_HANDLE hSecond = nullptr;
    ASSERT_EQ(NyTestCommConnect(m_strName, &hSession), 0u);
    ASSERT_EQ(NyCommConnect(&m_blkParam, 500, &hSecond), 0u);
    EXPECT_EQ(hSession, hSecond);
    // A request of exactly the capacity is served; one byte more, or none at all, is refused.
    std::vector<uint8_t> vAnswer(CAPACITY + 1);
    EXPECT_EQ(NyCommCommit(hSession, vAnswer.data(), CAPACITY + 1, vAnswer.data(), CAPACITY),
              NY_ERR_COMM_REQUEST_TOO_LARGE);
    EXPECT_EQ(NyCommCommit(hSession, nullptr, 0, vAnswer.data(), CAPACITY),
              NY_ERR_INVALID_ARGUMENT);
    ASSERT_EQ(CommitOnce(m_strName, Pattern(CAPACITY, 1), hSession), 0);
    NyTestKillChild(pidFirst);
    std::vector<uint8_t> vRequest = Pattern(64, 6);
    EnBool bConnected = NY_TRUE;
    EXPECT_NE(NyCommIsConnected(hSession, &bConnected), 0u);
    EXPECT_EQ(bConnected, NY_FALSE);
    EXPECT_EQ(CommitOnce(m_strName, vRequest, hSession), 2);
    // The second server first answers the request left pending by the failed commit.
    pid_t pidSecond = Child([this] { return NyTestCommServe(m_strName, 2); });
    vAnswer.resize(64);
    EXPECT_EQ(NyCommWaitForSignal(hSession, COMM_SIGNAL_NONE, NY_WAIT_INFINITE, vAnswer.data(), 64),
              0u);
    EXPECT_EQ(vAnswer, NyTestCommAnswerFor(vRequest));
    EXPECT_EQ(CommitOnce(m_strName, Pattern(64, 7), hSecond), 0);
    EXPECT_EQ(Reap(pidSecond), 0);
    EXPECT_EQ(NyCommDisconnect(hSession), 0u);
    EXPECT_EQ(NyCommDisconnect(hSecond), NY_ERR_COMM_NOT_CONNECTED);
}

// A client forked while this process serves opens the channel afresh and first takes a
// notification posted before it waited (then nothing more is pending); a request too large for the
// listen buffer stays in the region with its event consumed, an answer too large for the region
// arrives empty and is logged, and the child's disconnect closes only its own channel.
TEST_F(NyCommChannel, ForkedClientMeetsTheServersSizeLimits) {
    CNyTestLogCapture capture(false);  // the fixture started the library and its logger
    NY_COMM_HANDLE hSession = StartServer();
    std::vector<uint8_t> vRequest = Pattern(100, 5);
    std::vector<uint8_t> vNote = Pattern(300, 7);
    EXPECT_EQ(Answer(hSession, vNote), 0u);
    pid_t pidClient = Child([&] {
        NY_COMM_HANDLE hClient = nullptr;
        std::vector<uint8_t> vAnswer(CAPACITY, 0xEE);
        if (NyCommConnect(&m_blkParam, 500, &hClient) != 0 ||
            NyCommWaitForSignal(hClient, COMM_SIGNAL_NONE, NY_WAIT_INFINITE, vAnswer.data(),
                                CAPACITY) != 0 ||
            !std::equal(vNote.begin(), vNote.end(), vAnswer.begin()) ||
            NyCommWaitForSignal(hClient, COMM_SIGNAL_NONE, 0, nullptr, 0) != NY_ERR_TIMEOUT) {
            return 3;
        }
        std::fill(vAnswer.begin(), vAnswer.end(), 0xEE);
        if (CommitOnce(m_strName, vRequest, hClient) != 0 ||
            NyCommCommit(hClient, vAnswer.data(), 1, vAnswer.data(), CAPACITY) != 0) {
            return 1;
        }
        bool bUntouched = std::count(vAnswer.begin(), vAnswer.end(), 0xEE) == CAPACITY;
        return bUntouched && NyCommDisconnect(hClient) == 0 ? 0 : 2;
    });
    std::vector<uint8_t> vBuffer(CAPACITY);
    uint32_t u4Length = 10;
    ASSERT_EQ(ListenFor(hSession, &vBuffer, &u4Length), NY_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(u4Length, 100u);
    u4Length = CAPACITY;
    EXPECT_EQ(NyCommListen(hSession, vBuffer.data(), &u4Length), EAGAIN_CODE);
    NY_SHM_HANDLE hShm = nullptr;
    ASSERT_EQ(NyShareMemOpen(m_strName.c_str(), 0, &hShm), 0u);
    EXPECT_EQ(NyShareMemRead(hShm, COMM_DATA_OFFSET, vBuffer.data(), 100), 0u);
    EXPECT_TRUE(std::equal(vRequest.begin(), vRequest.end(), vBuffer.begin()));
    EXPECT_EQ(NyShareMemClose(hShm), 0u);
    EXPECT_EQ(Answer(hSession, NyTestCommAnswerFor(vRequest)), 0u);
    ASSERT_EQ(ListenFor(hSession, &vBuffer, &u4Length), 0u);
    EXPECT_EQ(u4Length, 1u);
    EXPECT_EQ(Answer(hSession, Pattern(CAPACITY + 1, 3)), 0u);
    EXPECT_EQ(Reap(pidClient), 0);
    std::vector<std::string> vErrors = capture.MessagesAt(LOG_ERROR);
    EXPECT_NE(std::find(vErrors.begin(), vErrors.end(),
                        "CNyShmCommunication::InnerNotify()->data size too big!"),
              vErrors.end());
    // A second start or connect under a name this process serves returns the one channel, which
    // one disconnect closes (on a client's side: the restart test).
    NY_COMM_HANDLE hClient = nullptr;
    ASSERT_EQ(NyCommConnect(&m_blkParam, 500, &hClient), 0u);
    EXPECT_EQ(hClient, hSession);
    EXPECT_EQ(StartServer(), hSession);
    EnBool bConnected = NY_FALSE;
    EXPECT_EQ(NyCommIsConnected(hSession, &bConnected), 0u);
    EXPECT_EQ(bConnected, NY_TRUE);
    EXPECT_EQ(NyCommDisconnect(hSession), 0u);
    EXPECT_EQ(NyCommDisconnect(hClient), NY_ERR_COMM_NOT_CONNECTED);
}

TEST_F(ServerFixture, OnlyWhatAClientWroteIsServedAndNothingElseIsAnswered) {
    struct {
        BlkShmCommHeaderTag blkHeader;
        uint32_t u4Listen;
    } aCases[] = {
        {RequestHeader(COMM_DIRECTION_ANSWER, COMM_COMMAND_REQUEST, 4), EAGAIN_CODE},
        {RequestHeader(COMM_DIRECTION_REQUEST, COMM_COMMAND_ACK, 4), EAGAIN_CODE},
        {RequestHeader(COMM_DIRECTION_REQUEST, COMM_COMMAND_REQUEST, COMM_DEFAULT_DATA_SIZE + 1),
         EAGAIN_CODE},
        {RequestHeader(COMM_DIRECTION_REQUEST, COMM_COMMAND_REQUEST, 4), 0},
    };
    for (const auto& c : aCases) {
        Write(c.blkHeader, 0x1234);
        uint32_t u4Data = 0;
        EXPECT_EQ(Listen(&u4Data), c.u4Listen) << c.blkHeader.u4Direction << c.blkHeader.u4Command;
        EXPECT_EQ(u4Data, c.u4Listen == 0 ? 0x1234u : 0u);
        // Consumed: the next listen finds nothing.
        EXPECT_EQ(Listen(&u4Data), EAGAIN_CODE);
    }
}

TEST_F(ServerFixture, AnswerToARequestThatAnotherClientReplacedIsNotWritten) {
    uint32_t u4Data = 0;
    Write(RequestHeader(0, COMM_COMMAND_REQUEST, 4), 1);
    ASSERT_EQ(Listen(&u4Data), 0u);
    Write(RequestHeader(0, COMM_COMMAND_REQUEST, 4), 2);  // the first client died, a second came
    EXPECT_EQ(Notify(0xAAAA), 0u);
    EXPECT_EQ(Header().u4Direction, COMM_DIRECTION_REQUEST);
    ASSERT_EQ(Listen(&u4Data), 0u);
    EXPECT_EQ(u4Data, 2u);
    EXPECT_EQ(Notify(0xAAAA), 0u);
    EXPECT_EQ(Header().u4Direction, COMM_DIRECTION_ANSWER);
}

// A set of the request event that a killed client left wakes the server before the next
// client's own set: its request is read and answered before that client resets the response
// event. The client's set that follows gets the answer signalled again.
TEST_F(ServerFixture, AnswerReadBeforeItsClientsOwnSetIsSignalledAgain) {
    int afdAnswered[2];
    int afdDone[2];
    ASSERT_EQ(0, pipe(afdAnswered));
    ASSERT_EQ(0, pipe2(afdDone, O_NONBLOCK));
    pid_t pidClient = Child([&] {
        NY_MUTEX_HANDLE hMutex = nullptr;
        NY_EVENT_HANDLE hRequest = nullptr;
        NY_EVENT_HANDLE hResponse = nullptr;
        char c = 0;
        if (NyMutexCreate((m_strName + "_Mutex_Communication").c_str(), &hMutex) != 0 ||
            NyMutexWait(hMutex, NY_WAIT_INFINITE) != 0 ||
            NyEventCreate((m_strName + "_Event_Request").c_str(), &hRequest) != 0 ||
            NyEventCreate((m_strName + "_Event_Response").c_str(), &hResponse) != 0) {
            return 1;
        }
        Write(RequestHeader(0, COMM_COMMAND_REQUEST, 4), 1);  // its set stands for the killed one's
        if (read(afdAnswered[0], &c, 1) != 1) {
            return 2;
        }
        NyEventReset(hResponse);
        NyEventSet(hRequest);
        int iExit = NyEventWait(hResponse, 2000) == 0 ? 0 : 3;
        return write(afdDone[1], "d", 1) == 1 ? iExit : 4;
    });
    uint32_t u4Data = 0;
    for (int i = 0; i < 100 && Listen(&u4Data) != 0; ++i) {
    }
    EXPECT_EQ(u4Data, 1u);
    EXPECT_EQ(Notify(0xAAAA), 0u);
    EXPECT_EQ(1, write(afdAnswered[1], "a", 1));
    char c = 0;
    for (int i = 0; i < 250 && read(afdDone[0], &c, 1) != 1; ++i) {
        EXPECT_NE(Listen(&u4Data), 0u) << "an answer served as a request";
    }
    EXPECT_EQ(Reap(pidClient), 0);
    for (int fd : {afdAnswered[0], afdAnswered[1], afdDone[0], afdDone[1]}) {
        close(fd);
    }
}

// The client is another process: the server sees its hold of the channel mutex.
TEST_F(ServerFixture, AnswerIsWipedOnceItsClientReleasedTheChannelAndTheRegionWhenItCloses) {
    pid_t pidClient = Child([this] {
        NY_MUTEX_HANDLE hMutex = nullptr;
        if (NyMutexCreate((m_strName + "_Mutex_Communication").c_str(), &hMutex) != 0 ||
            NyMutexWait(hMutex, NY_WAIT_INFINITE) != 0) {
            return 1;
        }
        Write(RequestHeader(0, COMM_COMMAND_REQUEST, 4), 1);
        NyOsSleep(150);  // the answer arrives meanwhile
        return NyMutexRelease(hMutex) == 0 ? 0 : 2;
    });
    uint32_t u4Data = 0;
    for (int i = 0; i < 100 && Listen(&u4Data) != 0; ++i) {
    }
    constexpr uint32_t u4Pin = 0x31323334;
    EXPECT_EQ(Notify(u4Pin), 0u);
    NyOsSleep(50);
    EXPECT_EQ(DataInRegion(), u4Pin) << "wiped while its client still held the channel";
    EXPECT_EQ(0, Reap(pidClient));
    NyOsSleep(30);
    EXPECT_EQ(DataInRegion(), 0u);
    EXPECT_EQ(Header().u4Direction, COMM_DIRECTION_ANSWER);
    // A notification that answers no request stays (its clients read it without the mutex),
    // until the server closes the channel.
    EXPECT_EQ(Notify(u4Pin), 0u);
    NyOsSleep(30);
    EXPECT_EQ(DataInRegion(), u4Pin);
    EXPECT_EQ(server.Disconnect(hServer), 0u);
    hServer = nullptr;
    EXPECT_EQ(DataInRegion(), 0u);
}
