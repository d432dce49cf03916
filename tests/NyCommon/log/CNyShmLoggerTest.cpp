#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "LogTestItems.h"
#include "log/CNyShmLogger.h"
#include "log/NyLog.h"
#include "os/NyCommonLib.h"
#include "os/NyOs.h"
#include "support/CNyTestChild.h"
#include "support/NyTestLogQueue.h"
#include "support/NyTestProcess.h"

namespace {

// Logs records 0 .. u4Count - 1.
::testing::AssertionResult LogRecords(CNyShmLogger& logger, uint32_t u4Count) {
    for (uint32_t i = 0; i < u4Count; ++i) {
        if (!logger.SetLogItem(MakeItem(0, i))) {
            return ::testing::AssertionFailure() << "record " << i << " not queued";
        }
    }
    return ::testing::AssertionSuccess();
}

std::unique_ptr<CNyShmLogger> MakeLogger(const CNyTestLogQueue& queue) {
    return std::unique_ptr<CNyShmLogger>(new CNyShmLogger(queue.QueueName(), queue.Capacity()));
}

}  // namespace

TEST(CNyShmLogger, FirstConnectCreatesTheRingOthersJoinItAndListenersAreCounted) {
    CNyTestLogQueue queue(8);
    auto pProducer = MakeLogger(queue);
    auto pViewer = MakeLogger(queue);
    auto pViewer2 = MakeLogger(queue);
    EXPECT_FALSE(pProducer->IsConnect());
    EXPECT_FALSE(pProducer->Disconnect());
    EXPECT_FALSE(pProducer->SetLogItem(MakeItem(0, 0)));
    ASSERT_TRUE(pProducer->Connect(false));
    EXPECT_TRUE(pProducer->Connect(false));
    EXPECT_TRUE(pProducer->IsConnect());
    struct stat st = {};
    std::string strPath = std::string("/dev/shm") + queue.QueueName();
    ASSERT_EQ(stat(strPath.c_str(), &st), 0);
    EXPECT_EQ(static_cast<size_t>(st.st_size), CLockfreeArrayQueue::CalcBufferLen(8));
    EXPECT_EQ(st.st_mode & 0777, 0666u);
    CLockfreeArrayQueue* pView = queue.View();
    ASSERT_NE(pView, nullptr);

    EXPECT_TRUE(pProducer->SetLogItem(MakeItem(0, 1)));
    ASSERT_TRUE(pViewer->Connect(true));
    ASSERT_TRUE(pViewer2->Connect(true));
    EXPECT_TRUE(pViewer2->Connect(true));  // already attached: not counted twice
    EXPECT_EQ(pView->GetConsumerListeningCount(), 2u);
    tagBlkLogItem aOut[4];
    ASSERT_EQ(pViewer->GetLogItem(aOut, 4), 1u);
    tagBlkLogItem expected = MakeItem(0, 1);
    EXPECT_EQ(memcmp(&aOut[0], &expected, sizeof(expected)), 0);
    EXPECT_EQ(pViewer->GetLogItem(aOut, 4), 0u);
    pViewer.reset();
    EXPECT_EQ(pView->GetConsumerListeningCount(), 1u);
    EXPECT_TRUE(pViewer2->Disconnect());
    EXPECT_EQ(pView->GetConsumerListeningCount(), 0u);

    EXPECT_TRUE(pProducer->Disconnect());
    EXPECT_FALSE(pProducer->IsConnect());
    EXPECT_FALSE(pProducer->Disconnect());
    EXPECT_FALSE(pProducer->SetLogItem(MakeItem(0, 0)));
    EXPECT_EQ(pProducer->GetLogItem(aOut, 1), 0u);
    EXPECT_TRUE(pProducer->Connect(false));  // reconnects to the ring as it was left
    EXPECT_TRUE(pProducer->SetLogItem(MakeItem(0, 7)));
    EXPECT_EQ(PopLines(*pView, 8192), std::vector<uint32_t>{7});
}

TEST(CNyShmLogger, ForeignOrHalfMadeObjectsAreNotAttached) {
    const struct {
        const char* szCase;
        size_t cbLength;
        uint32_t u4CapacityField;
    } aCases[] = {{"capacity field of another ring", CLockfreeArrayQueue::CalcBufferLen(16), 8},
                  {"capacity field not yet written", CLockfreeArrayQueue::CalcBufferLen(16), 0},
                  {"not yet sized by its creator", 0, 0},
                  {"one byte short", CLockfreeArrayQueue::CalcBufferLen(16) - 1, 16}};
    for (const auto& c : aCases) {
        CNyTestLogQueue queue(16);
        int fd = shm_open(queue.QueueName(), O_RDWR | O_CREAT | O_EXCL, 0600);
        ASSERT_GE(fd, 0) << c.szCase;
        ASSERT_EQ(ftruncate(fd, static_cast<off_t>(c.cbLength)), 0) << c.szCase;
        if (c.cbLength >= sizeof(uint32_t)) {
            ASSERT_EQ(pwrite(fd, &c.u4CapacityField, sizeof(uint32_t), 0), 4) << c.szCase;
        }
        close(fd);

        auto pLogger = MakeLogger(queue);
        EXPECT_FALSE(pLogger->Connect(false)) << c.szCase;
        EXPECT_FALSE(pLogger->SetLogItem(MakeItem(0, 0))) << c.szCase;
    }
}

TEST(CNyShmLogger, ConsumerOperationsBeatTheHeartbeatAndDiscard) {
    CNyTestLogQueue queue(16);
    auto pLogger = MakeLogger(queue);
    ASSERT_TRUE(pLogger->Connect(true));
    ASSERT_TRUE(LogRecords(*pLogger, 10));
    CLockfreeArrayQueue* pView = queue.View();
    ASSERT_NE(pView, nullptr);

    EXPECT_TRUE(pLogger->DiscardLog(3));
    tagBlkLogItem aOut[2];
    ASSERT_EQ(pLogger->GetLogItem(aOut, 2), 2u);
    EXPECT_EQ(aOut[0].u4Line, 3u);
    EXPECT_EQ(aOut[1].u4Line, 4u);
    EXPECT_TRUE(pLogger->DiscardLog(0));  // everything
    EXPECT_EQ(pView->Count(), 0u);
    pLogger->SetHeartbeatForViewer();
    EXPECT_EQ(pView->GetConsumerHeartbeatCount(), 4u);
    EXPECT_EQ(pView->GetConsumerListeningCount(), 1u);
}

TEST(CNyShmLogger, FullRingWithoutListenerDropsTheOldest4096AtOnce) {
    CNyTestLogQueue queue(8192);
    auto pLogger = MakeLogger(queue);
    ASSERT_TRUE(pLogger->Connect(false));
    ASSERT_TRUE(LogRecords(*pLogger, 8191));
    CLockfreeArrayQueue* pView = queue.View();
    ASSERT_NE(pView, nullptr);
    ASSERT_EQ(pView->Count(), 8191u);

    ASSERT_TRUE(pLogger->SetLogItem(MakeItem(0, 8191)));
    std::vector<uint32_t> vLines = PopLines(*pView, 8192);
    ASSERT_EQ(vLines.size(), 8192u - 4096u);
    EXPECT_EQ(vLines.front(), 4096u);
    EXPECT_EQ(vLines.back(), 8191u);
}

TEST(CNyShmLogger, FullRingBehindAStalledListenerIsDroppedAndTheListenerForgotten) {
    CNyTestLogQueue queue(8);
    auto pProducer = MakeLogger(queue);
    auto pStalledViewer = MakeLogger(queue);
    ASSERT_TRUE(pProducer->Connect(false));
    ASSERT_TRUE(pStalledViewer->Connect(true));
    ASSERT_TRUE(LogRecords(*pProducer, 8));
    CLockfreeArrayQueue* pView = queue.View();
    ASSERT_NE(pView, nullptr);
    EXPECT_EQ(pView->GetConsumerListeningCount(), 0u);
    EXPECT_EQ(PopLines(*pView, 8192), std::vector<uint32_t>{7});
}

TEST(CNyShmLogger, EveryProcessThatStartsTheLibraryLogsIntoTheQueue) {
    CNyTestLogQueue queue(16);
    CNyTestChild logger(NyTestForkChild([&queue] {
        queue.MakeDefault();
        if (NyCommonLibInit() != 0) {
            return 1;
        }
        NY_LOG(LOG_ERROR, "started %d", 42);
        tagBlkLogParam blkOff = {NY_LOG_MODE_OFF, {0}};
        NyLogSetParam(&blkOff);
        NY_LOG(LOG_ERROR, "while off");
        NyLogSetParam(&cg_blkLogParam);
        NY_LOG(LOG_TRACE, "on again");
        NyCommonLibRelease();
        return 0;
    }));
    pid_t pid = logger.Pid();
    ASSERT_EQ(logger.Wait(10000), 0);

    CLockfreeArrayQueue* pView = queue.View();
    ASSERT_NE(pView, nullptr);
    tagBlkLogItem aItems[8];
    unsigned int u4Count = 8;
    ASSERT_EQ(pView->Pop(aItems, u4Count), NY_LFQ_OK);
    std::vector<std::string> vMessages;
    for (unsigned int i = 0; i < u4Count; ++i) {
        EXPECT_EQ(aItems[i].u4Pid, static_cast<uint32_t>(pid));
        vMessages.emplace_back(aItems[i].szMessage);
    }
    EXPECT_EQ(vMessages, (std::vector<std::string>{"started 42", "on again"}));
    EXPECT_EQ(aItems[0].u4Level, LOG_ERROR);
}
