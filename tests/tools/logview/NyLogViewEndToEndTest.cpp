#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cctype>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "log/NyLog.h"
#include "os/NyCommonLib.h"
#include "support/CNyTestChild.h"
#include "support/NyTestLogQueue.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"

namespace {

// A forked process that starts the library on the test's queue, logs, and ends.
pid_t StartLoggingProcess(const CNyTestLogQueue& queue, const std::function<void()>& pfnLog) {
    return NyTestForkChild([&queue, &pfnLog] {
        queue.MakeDefault();
        if (NyCommonLibInit() != 0) {
            return 1;
        }
        pfnLog();
        NyCommonLibRelease();
        return 0;
    });
}

// Output of one viewer run, in a file removed with the object.
class CViewerOutput {
public:
    CViewerOutput() : m_strPath("/tmp/" + NyTestUniqueName("ukey-logview-out")) {}
    ~CViewerOutput() { unlink(m_strPath.c_str()); }
    const std::string& Path() const { return m_strPath; }
    std::vector<std::string> Lines() const {
        std::ifstream in(m_strPath);
        std::vector<std::string> vLines;
        for (std::string str; std::getline(in, str);) {
            vLines.push_back(str);
        }
        return vLines;
    }

private:
    std::string m_strPath;
};

std::vector<std::string> ViewerArgs(const CNyTestLogQueue& queue,
                                    std::vector<std::string> vOptions) {
    std::vector<std::string> vArgs = {NyTestBinPath("ukey-logview"), "--queue", queue.QueueName(),
                                      "--capacity", std::to_string(queue.Capacity())};
    vArgs.insert(vArgs.end(), vOptions.begin(), vOptions.end());
    return vArgs;
}

// Runs the viewer to its end; its exit code.
int RunViewer(const CNyTestLogQueue& queue, const std::vector<std::string>& vOptions,
              const CViewerOutput& output) {
    return CNyTestChild(NyTestSpawn(ViewerArgs(queue, vOptions), output.Path())).Wait(20000);
}

}  // namespace

TEST(NyLogViewEndToEnd, JsonBacklogCarriesTheRecordsOfALoggingProcess) {
    CNyTestLogQueue queue(16);
    CNyTestChild logger(StartLoggingProcess(queue, [] {
        NyLogEx(LOG_INFO, "source/GUIverify.cpp", 321, "hello \"%s\"\n", "viewer");
        NyLogEx(LOG_ERROR, "source/MainServer.cpp", 9, "u4Result = %08X", 0xE0600007u);
    }));
    pid_t pidLogger = logger.Pid();
    ASSERT_EQ(logger.Wait(10000), 0);

    CViewerOutput output;
    ASSERT_EQ(RunViewer(queue, {"--json"}, output), 0);
    std::vector<std::string> vLines = output.Lines();
    ASSERT_EQ(vLines.size(), 2u);
    std::string strPid = "\"pid\":" + std::to_string(pidLogger) + ",";
    EXPECT_NE(vLines[0].find(strPid), std::string::npos) << vLines[0];
    EXPECT_NE(vLines[0].find("\"level\":2,\"levelName\":\"INFO\""), std::string::npos);
    EXPECT_NE(vLines[0].find("\"source\":\"source/GUIverify.cpp\",\"line\":321,"
                             "\"message\":\"hello \\\"viewer\\\"\\n\"}"),
              std::string::npos)
        << vLines[0];
    EXPECT_NE(vLines[1].find(strPid), std::string::npos) << vLines[1];
    EXPECT_NE(vLines[1].find("\"levelName\":\"ERROR\""), std::string::npos);
    EXPECT_NE(vLines[1].find("\"message\":\"u4Result = E0600007\""), std::string::npos);

    // The records were consumed and the viewer no longer counts as a listener.
    ASSERT_NE(queue.View(), nullptr);
    EXPECT_EQ(queue.View()->Count(), 0u);
    EXPECT_EQ(queue.View()->GetConsumerListeningCount(), 0u);
}

TEST(NyLogViewEndToEnd, TextBacklogHonoursLevelAndProcessFilters) {
    CNyTestLogQueue queue(16);
    auto log = [] {
        NyLogEx(LOG_TRACE, "source/GUIBase.cpp", 1, "enter");
        NyLogEx(LOG_ERROR, "source/GUIBase.cpp", 2, "failed");
    };
    CNyTestChild shown(StartLoggingProcess(queue, log));
    pid_t pidShown = shown.Pid();
    ASSERT_EQ(shown.Wait(10000), 0);
    ASSERT_EQ(CNyTestChild(StartLoggingProcess(queue, log)).Wait(10000), 0);

    CViewerOutput output;
    ASSERT_EQ(RunViewer(queue, {"--level", "error", "--pid", std::to_string(pidShown)}, output), 0);
    std::vector<std::string> vLines = output.Lines();
    ASSERT_EQ(vLines.size(), 1u);
    // "<yyyy-mm-dd hh:mm:ss.mmm> ERROR [<pid>:<tid>] source/GUIBase.cpp:2 failed"
    const std::string strShape = "0000-00-00 00:00:00.000";
    ASSERT_GT(vLines[0].size(), strShape.size());
    for (size_t i = 0; i < strShape.size(); ++i) {
        EXPECT_TRUE(strShape[i] == '0' ? isdigit(static_cast<unsigned char>(vLines[0][i])) != 0
                                       : vLines[0][i] == strShape[i])
            << vLines[0];
    }
    std::string strRest = vLines[0].substr(strShape.size());
    std::string strHead = " ERROR [" + std::to_string(pidShown) + ":";
    std::string strTail = "] source/GUIBase.cpp:2 failed";
    EXPECT_EQ(strRest.compare(0, strHead.size(), strHead), 0) << vLines[0];
    ASSERT_GT(strRest.size(), strHead.size() + strTail.size());
    EXPECT_EQ(strRest.substr(strRest.size() - strTail.size()), strTail) << vLines[0];
    EXPECT_EQ(queue.View()->Count(), 0u);
}

TEST(NyLogViewEndToEnd, FollowingViewerKeepsUpWithAFastProducerAndDetachesOnCtrlC) {
    constexpr int iRecords = 300;
    CNyTestLogQueue queue(16);
    CViewerOutput output;
    CNyTestChild viewer(NyTestSpawn(ViewerArgs(queue, {"-f", "-j"}), output.Path()));
    ASSERT_TRUE(viewer.Started());
    ASSERT_TRUE(NyTestWaitUntil(
        [&queue] {
            return queue.View() != nullptr && queue.View()->GetConsumerListeningCount() == 1;
        },
        10000));

    // Far more records than the ring holds: producers wait for the draining viewer.
    CNyTestChild logger(StartLoggingProcess(queue, [] {
        for (int i = 0; i < iRecords; ++i) {
            NyLogEx(LOG_TRACE, "source/GUIService.cpp", 5, "record %d", i);
        }
    }));
    EXPECT_EQ(logger.Wait(20000), 0);
    bool bAll = NyTestWaitUntil([&output] { return output.Lines().size() >= iRecords; }, 20000);
    kill(viewer.Pid(), SIGINT);
    EXPECT_EQ(viewer.Wait(5000), 0);
    EXPECT_EQ(queue.View()->GetConsumerListeningCount(), 0u);

    ASSERT_TRUE(bAll);
    std::vector<std::string> vLines = output.Lines();
    ASSERT_EQ(vLines.size(), static_cast<size_t>(iRecords));
    for (int i = 0; i < iRecords; ++i) {
        std::string strMessage = "\"message\":\"record " + std::to_string(i) + "\"}";
        EXPECT_NE(vLines[i].find(strMessage), std::string::npos) << vLines[i];
    }
}

TEST(NyLogViewEndToEnd, HelpExplainsEveryOptionAndBadOptionsFail) {
    CViewerOutput help;
    ASSERT_EQ(CNyTestChild(NyTestSpawn({NyTestBinPath("ukey-logview"), "--help"}, help.Path()))
                  .Wait(10000),
              0);
    std::stringstream ss;
    for (const std::string& str : help.Lines()) {
        ss << str << "\n";
    }
    for (const char* szOption :
         {"--follow", "--level", "--pid", "--json", "--queue", "--capacity", "--help"}) {
        EXPECT_NE(ss.str().find(szOption), std::string::npos) << szOption;
    }

    CViewerOutput bad;
    EXPECT_EQ(
        CNyTestChild(NyTestSpawn({NyTestBinPath("ukey-logview"), "--level", "loud"}, bad.Path()))
            .Wait(10000),
        2);
    ASSERT_FALSE(bad.Lines().empty());
    EXPECT_NE(bad.Lines()[0].find("--level"), std::string::npos);
}
