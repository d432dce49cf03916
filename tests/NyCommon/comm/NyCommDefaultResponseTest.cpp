// The low-level request and the canned answers, with two channel objects of one process playing
// client and server on two threads.
#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include "NyCommTestPeer.h"
#include "comm/CNyShmCommunication.h"
#include "ipc/NyShareMem.h"
#include "os/NyCommonLib.h"
#include "os/NyOs.h"
#include "support/NyTestNames.h"

namespace {

BlkShmCommHeaderTag RegionHeader(const std::string& strName) {
    BlkShmCommHeaderTag blkHeader = {};
    NY_SHM_HANDLE hShm = nullptr;
    if (NyShareMemOpen(strName.c_str(), 0, &hShm) == 0) {
        NyShareMemRead(hShm, 0, &blkHeader, sizeof(blkHeader));
        NyShareMemClose(hShm);
    }
    return blkHeader;
}

}  // namespace

TEST(CNyShmCommunication, DefaultResponseAnswersByTheRequestsCommand) {
    struct {
        uint32_t u4Command;
        uint32_t u4Returned;    // by DefaultResponse
        uint32_t u4CommitWait;  // InnerCommit's result
        uint32_t u4Direction;   // of the header left in the region
        uint32_t u4Signal;
    } aCases[] = {
        {COMM_COMMAND_ACK, 0, 0, COMM_DIRECTION_REQUEST, 0},
        {COMM_COMMAND_REQUEST, 1, 0, COMM_DIRECTION_ANSWER, COMM_SIGNAL_DEFAULT},
        {7, 0, static_cast<uint32_t>(EAGAIN), COMM_DIRECTION_REQUEST, 0},
    };
    NyCommonLibInit();
    for (const auto& c : aCases) {
        std::string strName = NyTestUniqueName("comm-default");
        BlkCommInitParamTag blkParam = NyTestCommParam(strName);
        CNyShmCommunication server;
        CNyShmCommunication client;
        NY_COMM_HANDLE hServer = nullptr;
        NY_COMM_HANDLE hClient = nullptr;
        ASSERT_EQ(server.StartAsServer(&blkParam, &hServer), 0u);
        ASSERT_EQ(client.Connect(&blkParam, 500, &hClient), 0u);

        BlkShmCommHeaderTag blkRequest = {};
        blkRequest.u4Command = c.u4Command;
        blkRequest.u4DataLen = 4;
        blkRequest.u4DataOffset = COMM_DATA_OFFSET;
        uint32_t u4Commit = 0xFFFFFFFF;
        std::thread requester(
            [&] { u4Commit = client.InnerCommit(hClient, blkRequest, "data", 300); });
        uint8_t au1Buffer[16] = {};
        uint32_t u4Length = sizeof(au1Buffer);
        uint32_t u4Listen = static_cast<uint32_t>(EAGAIN);
        for (int i = 0; i < 100 && u4Listen == static_cast<uint32_t>(EAGAIN); ++i) {
            u4Length = sizeof(au1Buffer);
            u4Listen = server.Listen(hServer, au1Buffer, &u4Length);
        }
        EXPECT_EQ(u4Listen, 0u);
        EXPECT_EQ(u4Length, 4u);
        NyOsSleep(50);  // the requester resets the response event after setting the request
        EXPECT_EQ(server.DefaultResponse(hServer), c.u4Returned) << c.u4Command;
        requester.join();
        EXPECT_EQ(u4Commit, c.u4CommitWait) << c.u4Command;
        BlkShmCommHeaderTag blkLeft = RegionHeader(strName);
        EXPECT_EQ(blkLeft.u4Direction, c.u4Direction) << c.u4Command;
        EXPECT_EQ(blkLeft.u4Signal, c.u4Signal) << c.u4Command;

        EXPECT_EQ(client.Disconnect(hClient), 0u);
        EXPECT_EQ(server.Disconnect(hServer), 0u);
        EXPECT_EQ(NyTestCommLeftovers(strName), std::vector<std::string>{});
    }
    NyCommonLibRelease();
}
