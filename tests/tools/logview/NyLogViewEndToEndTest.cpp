#include <gtest/gtest.h>
#include <signal.h>

#include <cstring>

#include "log/NyLog.h"
#include "os/NyCommonLib.h"
#include "support/CNyTestChild.h"
#include "support/NyTestLogQueue.h"
#include "support/NyTestProcess.h"
#include "support/NyTestRun.h"

// A record of pid 4321, thread 4322, line 77 (built by the in-process tests).
tagBlkLogItem NyLogViewTestItem(uint32_t u4Level, const char* szSource, const char* szMessage);

namespace {

std::vector<std::string> ViewerArgs(const CNyTestLogQueue& queue, std::vector<std::string> vArgs) {
    vArgs.insert(vArgs.begin(), {NyTestBinPath("ukey-logview"), "--queue", queue.QueueName(),
                                 "--capacity", std::to_string(queue.Capacity())});
    return vArgs;
}

void Push(CLockfreeArrayQueue* pQueue, uint32_t u4Level, uint64_t u8Time, const char* szMessage) {
    tagBlkLogItem item = NyLogViewTestItem(u4Level, "source/GUIBase.cpp", szMessage);
    item.u8Time = u8Time;
    ASSERT_EQ(NY_LFQ_OK, pQueue->Push(item));
}

TEST(NyLogViewEndToEnd, PeekingAndFilteredRunsLeaveTheRecordsForOthersAndMistakesAreSaid) {
    CNyTestLogQueue queue(16);
    // Without --create a named queue that does not exist is not made.
    BlkTestRunTag missing = NyTestRun(ViewerArgs(queue, {}));
    EXPECT_EQ(1, missing.iExit);
    EXPECT_EQ(std::string("ukey-logview: there is no log queue ") + queue.QueueName() +
                  " (--create makes one)\n",
              missing.strOutput);
    BlkTestRunTag bad = NyTestRun(ViewerArgs(queue, {"--level", "loud"}));
    EXPECT_EQ(2, bad.iExit);
    EXPECT_EQ(
        "ukey-logview: option --level needs trace, info, error or a number\nTry "
        "'ukey-logview --help'.\n",
        bad.strOutput);
    EXPECT_EQ(nullptr, queue.View());
    ASSERT_EQ(0, NyTestRun(ViewerArgs(queue, {"--create"})).iExit);
    CLockfreeArrayQueue* pQueue = queue.View();
    ASSERT_NE(nullptr, pQueue);
    Push(pQueue, LOG_TRACE, 1, "enter");
    Push(pQueue, LOG_ERROR, 1, "failed\nagain");
    Push(pQueue, LOG_INFO, 0, "no clock");

    // Peeking runs, the default and --peek, leave every record in the queue.
    BlkTestRunTag first = NyTestRun(ViewerArgs(queue, {"--peek"}));
    ASSERT_EQ(0, first.iExit);
    std::vector<std::string> vLines = NyTestLines(first.strOutput);
    ASSERT_EQ(3u, vLines.size()) << first.strOutput;
    EXPECT_TRUE(
        NyTestContains(vLines[1], " ERROR [4321:4322] source/GUIBase.cpp:77 failed\\nagain"));
    EXPECT_EQ("- INFO [4321:4322] source/GUIBase.cpp:77 no clock", vLines[2]);
    EXPECT_EQ(0u, pQueue->GetConsumerListeningCount());

    BlkTestRunTag filtered = NyTestRun(ViewerArgs(queue, {"-l", "error"}));
    EXPECT_EQ(vLines[1] + "\n", filtered.strOutput);
    EXPECT_EQ(3u, pQueue->Count());
    BlkTestRunTag taken = NyTestRun(ViewerArgs(queue, {"-l", "info", "--take"}));
    EXPECT_EQ(vLines[1] + "\n" + vLines[2] + "\n", taken.strOutput);
    EXPECT_EQ(0u, pQueue->Count());
    EXPECT_EQ("", NyTestRun(ViewerArgs(queue, {"--peek"})).strOutput);
}

TEST(NyLogViewEndToEnd, FollowingViewerKeepsUpWithAFastProducerAndDetachesOnCtrlC) {
    constexpr int iRecords = 300;
    CNyTestLogQueue queue(16);
    CNyTestRun viewer(ViewerArgs(queue, {"-f", "-j", "--create"}));
    ASSERT_GT(viewer.Pid(), 0);
    ASSERT_TRUE(NyTestWaitUntil(
        [&queue] {
            return queue.View() != nullptr && queue.View()->GetConsumerListeningCount() == 1;
        },
        10000));
    // Far more records than the ring holds: producers wait for the draining viewer.
    CNyTestChild logger(NyTestForkChild([&queue] {
        queue.MakeDefault();
        if (NyCommonLibInit() != 0) {
            return 1;
        }
        for (int i = 0; i < iRecords; ++i) {
            NyLogEx(LOG_TRACE, "source/GUIService.cpp", 5, "record %d", i);
        }
        NyLogEx(LOG_ERROR, "source/MainServer.cpp", 9, "u4Result = %08X \"%s\"\n", 0xE0600007u,
                "x");
        NyCommonLibRelease();
        return 0;
    }));
    std::string strIds = ",\"pid\":" + std::to_string(logger.Pid()) + ",\"tid\":";
    EXPECT_EQ(0, logger.Wait(20000));
    bool bAll = NyTestWaitUntil(
        [&viewer] { return NyTestLines(viewer.Output()).size() > iRecords; }, 20000);
    kill(viewer.Pid(), SIGINT);
    EXPECT_EQ(0, viewer.Wait(5000));
    EXPECT_EQ(0u, queue.View()->GetConsumerListeningCount());
    ASSERT_TRUE(bAll);
    std::vector<std::string> vLines = NyTestLines(viewer.Output());
    ASSERT_EQ(static_cast<size_t>(iRecords + 1), vLines.size());
    for (int i = 0; i < iRecords; ++i) {
        EXPECT_TRUE(NyTestContains(vLines[i], "\"message\":\"record " + std::to_string(i) + "\"}"));
    }
    EXPECT_TRUE(NyTestContains(vLines[iRecords], "\"level\":3,\"levelName\":\"ERROR\"" + strIds));
    EXPECT_EQ(
        "\"source\":\"source/MainServer.cpp\",\"line\":9,\"message\":\"u4Result = E0600007 "
        "\\\"x\\\"\\n\"}",
        vLines[iRecords].substr(vLines[iRecords].find("\"source\"")));
}

}  // namespace
