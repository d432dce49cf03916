// The installed tree as a packager and an integrator get it: every piece in its place, the
// tools and the client library finding the installed server, the C example built through
// pkg-config asking for a PIN.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "NyE2eEnv.h"
#include "NyUiClientC.h"
#include "support/CNyTestChild.h"
#include "support/NyTestProcess.h"

namespace {

std::string ReadFile(const std::string& strPath) {
    std::ifstream in(strPath);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class PackageInstallTest : public testing::Test {
protected:
    void SetUp() override {
        char szDir[] = "/tmp/ukey-install-XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(szDir));
        m_strDest = szDir;
        m_strRoot = m_strDest + NY_TEST_PREFIX + "/";
        ASSERT_EQ(0,
                  Run("DESTDIR=" + m_strDest + " " NY_TEST_CMAKE " --install " NY_TEST_BUILD_DIR))
            << ReadFile(m_strDest + "/out.log");
    }
    void TearDown() override { Run("rm -rf " + m_strDest); }
    int Run(const std::string& strCommand) {
        return system((strCommand + " >" + m_strDest + "/out.log 2>&1").c_str());
    }
    std::string PkgConfig(const std::string& strArgs) {
        return "$(PKG_CONFIG_PATH=" + m_strRoot + NY_TEST_LIBDIR "/pkgconfig pkg-config " +
               strArgs + " ukey-uiclient)";
    }

    std::string m_strDest, m_strRoot;
};

}  // namespace

TEST_F(PackageInstallTest, EveryPieceIsInItsPlaceAndTheToolsFindTheInstalledServer) {
    const std::string strLib = NY_TEST_LIBDIR "/libukey-uiclient";
    for (const std::string& strFile : std::initializer_list<std::string>{
             "libexec/ukey-uiserver/ukey-uiserver", "libexec/ukey-uiserver/res/verify.glade",
             "bin/ukey-uictl", "bin/ukey-logview", "bin/ukey-cfg", strLib + ".so.1", strLib + ".a",
             "include/ukey-uiclient/NyUiClientC.h", "share/man/man1/ukey-uiserver.1.gz",
             "share/man/man1/ukey-uictl.1.gz", "share/man/man1/ukey-logview.1.gz",
             "share/man/man1/ukey-cfg.1.gz", "share/doc/ukey-uiserver/copyright"}) {
        EXPECT_EQ(0, access((m_strRoot + strFile).c_str(), R_OK)) << strFile;
    }
    EXPECT_NE(0, access((m_strRoot + "bin/res").c_str(), F_OK));
    // A status request needs a server: an answer shows the installed one was started.
    ASSERT_EQ(0, Run(m_strRoot + "bin/ukey-uictl raw --cmd 3 --json"));
    EXPECT_EQ(0u, ReadFile(m_strDest + "/out.log").find("{\"")) << ReadFile(m_strDest + "/out.log");
    // The static library holds everything but the system libraries it names.
    EXPECT_EQ(0, Run(NY_TEST_CC " " NY_TEST_EXAMPLE " " + PkgConfig("--cflags") + " " + m_strRoot +
                     strLib + ".a " + PkgConfig("--static --libs") + " -o " + m_strDest +
                     "/ask_pin_static"))
        << ReadFile(m_strDest + "/out.log");
}

TEST_F(PackageInstallTest, CExampleBuiltThroughPkgConfigGetsTheTypedPin) {
    // The README shows this very example.
    EXPECT_NE(std::string::npos,
              ReadFile(NY_TEST_SOURCE_DIR "/README.md").find(ReadFile(NY_TEST_EXAMPLE)));
    const std::string strExample = m_strDest + "/ask_pin";
    ASSERT_EQ(0, Run(NY_TEST_CC " " NY_TEST_EXAMPLE " " + PkgConfig("--cflags --libs") + " -o " +
                     strExample))
        << ReadFile(m_strDest + "/out.log");
    setenv("LD_LIBRARY_PATH", (m_strRoot + NY_TEST_LIBDIR).c_str(), 1);
    CNyTestChild example(NyTestSpawn({strExample}, m_strDest + "/answer.txt"));
    ASSERT_FALSE(NyE2eWaitVerifyWindow().empty());
    // The server the library started is the installed one, found beside the library.
    const std::string strPid = std::to_string(example.Pid());
    pid_t pidServer = atoi(ReadFile("/proc/" + strPid + "/task/" + strPid + "/children").c_str());
    EXPECT_EQ(
        m_strRoot + "libexec/ukey-uiserver/ukey-uiserver",
        std::filesystem::read_symlink("/proc/" + std::to_string(pidServer) + "/exe").string());
    NyE2eEnterPin(pidServer, "secret42");
    EXPECT_EQ(0, example.Wait(NY_E2E_WAIT_MS));
    EXPECT_EQ("PIN of 8 characters: secret42\n", ReadFile(m_strDest + "/answer.txt"));
}

using NyUiClientC = E2eTest;

TEST_F(NyUiClientC, JoinsARunningServerChecksItsArgumentsAndReportsAServerThatDidNotStart) {
    NyUiSessionOptions options = {m_owner.MainName().c_str(), nullptr, 7, 0};
    NyUiSession* pSession = nullptr;
    ASSERT_EQ(NYUI_OK, NyUiSessionStart(&options, &pSession));
    NyUiPinRequest request = {6, NYUI_PIN_MAX_LEN + 1, 0};
    NyUiPinAnswer answer;
    EXPECT_EQ(NYUI_ERR_BAD_ARGUMENT, NyUiSessionAskPin(pSession, &request, &answer));
    tagBlkUiParam blkStatus = NyGuiTestRequest(UI_CMD_GET_STATUS, 0, 0), blkAnswer;
    EXPECT_EQ(NYUI_OK, NyUiSessionRequest(pSession, &blkStatus, &blkAnswer));
    EXPECT_EQ(NYUI_ANSWER_NOT_PROCESSED, blkAnswer.enRes);
    NyUiSessionEnd(pSession);

    options = {nullptr, "/nonexistent/ukey-uiserver", 1, 0};
    EXPECT_EQ(NYUI_ERR_NOT_STARTED, NyUiSessionStart(&options, &pSession));
    EXPECT_EQ(nullptr, pSession);
}
