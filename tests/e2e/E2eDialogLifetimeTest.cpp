// A dialog's life is bound to its own session: a terminate never waits for another session's
// dialog, and a dialog never outlives the client that asked for it.
#include <gtest/gtest.h>

#include <dirent.h>

#include <atomic>
#include <string>
#include <thread>

#include "NyE2eEnv.h"
#include "os/NyOs.h"
#include "support/NyTestProcess.h"

namespace {

// Far below "until someone answers the other dialog", far above a busy machine's jitter.
constexpr uint64_t NY_PROMPT_MS = 2000;

// A session stays alive while any process's id contains its client's id (1234 in 51234): a
// client is only killed to test that rule's other side when no other process shares its id so.
bool NoOtherProcessContains(pid_t pid) {
    std::string strPid = std::to_string(pid);
    DIR* pDir = opendir("/proc");
    bool bAlone = pDir != nullptr;
    for (struct dirent* p = pDir != nullptr ? readdir(pDir) : nullptr; p != nullptr && bAlone;
         p = readdir(pDir)) {
        std::string strName = p->d_name;
        bAlone = strName == strPid ||
                 strName.find_first_not_of("0123456789") != std::string::npos ||
                 strName.find(strPid) == std::string::npos;
    }
    if (pDir != nullptr) {
        closedir(pDir);
    }
    return bAlone;
}

}  // namespace

TEST(E2eDialogLifetimeTest, TerminateIsAnsweredWhileAnotherSessionsDialogStaysOpen) {
    CE2eServer server;
    ASSERT_TRUE(server.Started());
    std::unique_ptr<CNyUiClient> pFirst = server.Connect(1);
    std::unique_ptr<CNyUiClient> pSecond = server.Connect(2);
    ASSERT_NE(nullptr, pFirst);
    ASSERT_NE(nullptr, pSecond);
    tagBlkUiParam req = NyE2eVerifyRequest(1, 16, UI_MODE_ASYNC);
    tagBlkUiParam resp;
    // The terminate races the other dialog for the one-dialog lock: several rounds.
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(NY_OK, pFirst->Exchange(&req, &resp));
        ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
        ASSERT_EQ(NY_OK, pSecond->Exchange(&req, &resp));

        std::atomic<uint64_t> u8AnsweredMs{0};
        uint64_t u8Start = NyOsGetTickCount64();
        std::thread terminate([&] {
            tagBlkUiParam blkEnd;
            pFirst->SendCommand(UI_CMD_TERMINATE, &blkEnd);
            u8AnsweredMs.store(NyOsGetTickCount64() - u8Start + 1);
        });
        bool bPrompt = NyTestWaitUntil([&] { return u8AnsweredMs.load() != 0; }, NY_PROMPT_MS);
        // The second session's dialog takes the screen, alone, and waits for its user.
        EXPECT_TRUE(NyTestWaitUntil([] { return NyE2eVerifyWindows() == 1; }, NY_E2E_WAIT_MS));
        EXPECT_EQ(NY_OK, pSecond->SendCommand(UI_CMD_GET_STATUS, &resp));
        EXPECT_EQ(UI_RESULT_PENDING, resp.enRes);
        NyE2eEnterPin(server.Pid(), "second");
        terminate.join();
        EXPECT_TRUE(bPrompt) << "round " << i << ": terminate answered after "
                             << u8AnsweredMs.load() << " ms";
        ASSERT_EQ(NY_OK, pSecond->PollUntilDone(&resp, 20, NY_E2E_WAIT_MS));
        EXPECT_EQ("second", NyE2ePin(resp));
        pSecond->SendCommand(UI_CMD_TERMINATE, &resp);
    }
}

TEST(E2eDialogLifetimeTest, KilledClientTakesItsSynchronousDialogWithIt) {
    CE2eServer server;
    ASSERT_TRUE(server.Started());
    for (int i = 0; i < 3; ++i) {
        pid_t pidClient = NyTestSpawn({NyTestBinPath("ukey-uictl"), "verify", "--main",
                                       server.MainName(), "--min", "1", "--max", "16"},
                                      "/dev/null");
        ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
        if (!NoOtherProcessContains(pidClient)) {
            // Its session would rightly live on: answer this one and try another client.
            NyE2eEnterPin(server.Pid(), "x");
            EXPECT_TRUE(NyE2eWaitNoVerifyWindow());
            NyTestKillChild(pidClient);
            --i;
            continue;
        }
        NyTestKillChild(pidClient);
        EXPECT_TRUE(NyE2eWaitNoVerifyWindow(NY_PROMPT_MS)) << "round " << i;
    }
}
