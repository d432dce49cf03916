// The server's side of one region: canned answers, what Listen refuses to serve, and the wipe of
// an answer once its client has taken it. Two channel objects of one process play client and
// server; a raw region handle plays a client that writes whatever it likes.
#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include <unistd.h>

#include "comm/CNyShmCommunication.h"
#include "ipc/NyEvent.h"
#include "ipc/NyMutex.h"
#include "ipc/NyShareMem.h"
#include "os/NyCommonLib.h"
#include "os/NyOs.h"
#include "session/NySessionChannel.h"
#include "support/NyTestChannelObjects.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"

namespace {

constexpr uint32_t EAGAIN_CODE = static_cast<uint32_t>(EAGAIN);

BlkCommInitParamTag Param(const std::string& strName) {
    BlkCommInitParamTag blkParam;
    NySessionFillInitParam(strName.c_str(), &blkParam);
    return blkParam;
}

struct ServerFixture : ::testing::Test {
    void SetUp() override {
        NyCommonLibInit();
        ASSERT_EQ(server.StartAsServer(&blkParam, &hServer), 0u);
        ASSERT_EQ(NyShareMemOpen(strName.c_str(), 0, &hShm), 0u);
    }
    void TearDown() override {
        EXPECT_TRUE(hServer == nullptr || server.Disconnect(hServer) == 0u);
        NyShareMemClose(hShm);
        EXPECT_FALSE(NyTestChannelObjectsExist(strName));
        NyCommonLibRelease();
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
        ASSERT_EQ(NyEventCreate((strName + "_Event_Request").c_str(), &hRequest), 0u);
        NyEventSet(hRequest);
        NyEventClose(hRequest);
    }
    uint32_t Listen(uint32_t* pu4Data) {
        uint32_t u4Length = sizeof(*pu4Data);
        return server.Listen(hServer, pu4Data, &u4Length);
    }

    std::string strName = NyTestUniqueName("comm-server");
    BlkCommInitParamTag blkParam = Param(strName);
    CNyShmCommunication server;
    NY_COMM_HANDLE hServer = nullptr;
    NY_SHM_HANDLE hShm = nullptr;
};

BlkShmCommHeaderTag RequestHeader(uint32_t u4Direction, uint32_t u4Command, uint32_t u4Length) {
    BlkShmCommHeaderTag blkHeader = {};
    blkHeader.u4Direction = u4Direction;
    blkHeader.u4Command = u4Command;
    blkHeader.u4DataLen = u4Length;
    blkHeader.u4DataOffset = COMM_DATA_OFFSET;
    return blkHeader;
}

}  // namespace

TEST_F(ServerFixture, DefaultResponseAnswersByTheRequestsCommand) {
    struct {
        uint32_t u4Command;
        uint32_t u4Returned;    // by DefaultResponse
        uint32_t u4CommitWait;  // InnerCommit's result
        uint32_t u4Direction;   // of the header left in the region
        uint32_t u4Signal;
    } aCases[] = {
        {COMM_COMMAND_ACK, 0, 0, COMM_DIRECTION_REQUEST, 0},
        {COMM_COMMAND_REQUEST, 1, 0, COMM_DIRECTION_ANSWER, COMM_SIGNAL_DEFAULT},
        {7, 0, EAGAIN_CODE, COMM_DIRECTION_REQUEST, 0},
    };
    CNyShmCommunication client;
    NY_COMM_HANDLE hClient = nullptr;
    ASSERT_EQ(client.Connect(&blkParam, 500, &hClient), 0u);
    for (const auto& c : aCases) {
        uint32_t u4Commit = 0xFFFFFFFF;
        std::thread requester([&] {
            u4Commit = client.InnerCommit(hClient, RequestHeader(0, c.u4Command, 4), "data", 300);
        });
        NyOsSleep(50);  // the requester resets the response event after setting the request
        EXPECT_EQ(server.DefaultResponse(hServer), c.u4Returned) << c.u4Command;
        requester.join();
        EXPECT_EQ(u4Commit, c.u4CommitWait) << c.u4Command;
        EXPECT_EQ(Header().u4Direction, c.u4Direction) << c.u4Command;
        EXPECT_EQ(Header().u4Signal, c.u4Signal) << c.u4Command;
    }
    EXPECT_EQ(client.Disconnect(hClient), 0u);
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
    uint32_t u4Answer = 0xAAAA;
    BlkCommNotifyDataTag blkNotify = {COMM_SIGNAL_RESPONSE, &u4Answer, sizeof(u4Answer)};
    EXPECT_EQ(server.Notify(hServer, &blkNotify), 0u);
    EXPECT_EQ(Header().u4Direction, COMM_DIRECTION_REQUEST);
    ASSERT_EQ(Listen(&u4Data), 0u);
    EXPECT_EQ(u4Data, 2u);
    EXPECT_EQ(server.Notify(hServer, &blkNotify), 0u);
    EXPECT_EQ(Header().u4Direction, COMM_DIRECTION_ANSWER);
}

// The client is another process: the server sees its hold of the channel mutex.
TEST_F(ServerFixture, AnswerIsWipedOnceItsClientReleasedTheChannelMutex) {
    pid_t pidClient = NyTestForkChild([this] {
        NY_MUTEX_HANDLE hMutex = nullptr;
        if (NyMutexCreate((strName + "_Mutex_Communication").c_str(), &hMutex) != 0 ||
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
    uint32_t u4Pin = 0x31323334;
    BlkCommNotifyDataTag blkNotify = {COMM_SIGNAL_RESPONSE, &u4Pin, sizeof(u4Pin)};
    EXPECT_EQ(server.Notify(hServer, &blkNotify), 0u);
    NyOsSleep(50);
    uint32_t u4InRegion = 0;
    NyShareMemRead(hShm, COMM_DATA_OFFSET, &u4InRegion, sizeof(u4InRegion));
    EXPECT_EQ(u4InRegion, u4Pin) << "wiped while its client still held the channel";
    EXPECT_EQ(0, NyTestWaitChild(pidClient, 5000));
    NyOsSleep(30);
    NyShareMemRead(hShm, COMM_DATA_OFFSET, &u4InRegion, sizeof(u4InRegion));
    EXPECT_EQ(u4InRegion, 0u);
    EXPECT_EQ(Header().u4Direction, COMM_DIRECTION_ANSWER);
}

TEST_F(ServerFixture, RegionIsWipedWhenTheServerClosesTheChannel) {
    uint32_t u4Pin = 0x31323334;
    BlkCommNotifyDataTag blkNotify = {COMM_SIGNAL_RESPONSE, &u4Pin, sizeof(u4Pin)};
    EXPECT_EQ(server.Notify(hServer, &blkNotify), 0u);  // not an answer: nothing wipes it early
    NyOsSleep(30);
    uint32_t u4InRegion = 0;
    NyShareMemRead(hShm, COMM_DATA_OFFSET, &u4InRegion, sizeof(u4InRegion));
    EXPECT_EQ(u4InRegion, u4Pin);
    EXPECT_EQ(server.Disconnect(hServer), 0u);
    hServer = nullptr;
    NyShareMemRead(hShm, COMM_DATA_OFFSET, &u4InRegion, sizeof(u4InRegion));
    EXPECT_EQ(u4InRegion, 0u);
}
