#include "NyE2eEnv.h"

#include <dirent.h>

#include <cstring>

#include "NyUiServerProcess.h"
#include "support/NyTestAccessible.h"
#include "support/NyTestDisplay.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"

namespace {

constexpr unsigned int NY_TXT_VERIFY_CAPTION = 0x21007F;

class CE2eEnvironment : public testing::Environment {
public:
    void SetUp() override { m_display.Start(true, true); }
    void TearDown() override { m_display.Stop(); }

private:
    CNyTestDisplay m_display;
};

testing::Environment* const g_pEnvironment = testing::AddGlobalTestEnvironment(new CE2eEnvironment);

// The names in a directory (dot entries aside).
std::vector<std::string> Entries(const std::string& strDir) {
    std::vector<std::string> v;
    if (DIR* pDir = opendir(strDir.c_str())) {
        while (struct dirent* pEntry = readdir(pDir)) {
            if (pEntry->d_name[0] != '.') {
                v.push_back(pEntry->d_name);
            }
        }
        closedir(pDir);
    }
    return v;
}

bool IdContainedInAnotherLiveId(pid_t pid) {
    std::string strPid = std::to_string(pid);
    for (const std::string& strEntry : Entries("/proc")) {
        if (strEntry != strPid && strEntry.find(strPid) != std::string::npos &&
            strEntry.find_first_not_of("0123456789") == std::string::npos) {
            return true;
        }
    }
    return false;
}

std::string VerifyTitle() {
    return "^" + NyGuiTestText(NY_TXT_VERIFY_TITLE) + "$";
}

}  // namespace

void E2eTest::SetUp() {
    ASSERT_EQ(NY_OK, m_owner.StartServer(NyTestBinPath("ukey-uiserver").c_str(),
                                         NyUiFreshMainName().c_str()));
    m_pClient = Connect(1);
    ASSERT_NE(nullptr, m_pClient);
}

std::unique_ptr<CNyUiClient> E2eTest::Connect(uint32_t u4InteractionId) const {
    std::unique_ptr<CNyUiClient> pClient(new CNyUiClient);
    if (pClient->JoinServer(m_owner.MainName().c_str()) != NY_OK ||
        pClient->OpenSession(u4InteractionId) != NY_OK) {
        return nullptr;
    }
    return pClient;
}

pid_t E2eTest::SpawnUictl(std::vector<std::string> vArgs, const std::string& strOutput) const {
    vArgs.insert(vArgs.begin(), NyTestBinPath("ukey-uictl"));
    vArgs.insert(vArgs.end(), {"--main", m_owner.MainName()});
    return NyTestSpawn(vArgs, strOutput,
                       [](pid_t pid) { return !IdContainedInAnotherLiveId(pid); });
}

void NyE2eEnterPin(pid_t pidServer, const std::string& strPin) {
    BlkTestAccessibleTag entry;
    ASSERT_TRUE(NyTestWaitAccessible(pidServer, "password text",
                                     NyGuiTestText(NY_TXT_VERIFY_CAPTION), NY_E2E_WAIT_MS, &entry));
    NyTestClickAt(entry.CentreX(), entry.CentreY());
    NyTestType(strPin);
    NyTestKey("Return");
}

std::string E2eTest::AnswerVerify(CNyUiClient* pClient, const std::string& strPin) const {
    tagBlkUiParam req = NyE2eVerifyRequest(1, 16, UI_MODE_ASYNC);
    tagBlkUiParam resp;
    EXPECT_EQ(NY_OK, pClient->Exchange(&req, &resp));
    EXPECT_FALSE(NyE2eWaitVerifyWindow().empty());
    NyE2eEnterPin(ServerPid(), strPin);
    EXPECT_EQ(NY_OK, pClient->PollUntilDone(&resp, 20, NY_E2E_WAIT_MS));
    pClient->SendCommand(UI_CMD_TERMINATE, &req);
    return NyE2ePin(resp);
}

int E2eTest::ServerEntries(const char* szDir) const {
    return int(Entries("/proc/" + std::to_string(ServerPid()) + "/" + szDir).size());
}

tagBlkUiParam NyE2eVerifyRequest(uint32_t u4Min, uint32_t u4Max, uint32_t u4Mode) {
    tagBlkUiParam blk = NyGuiTestRequest(UI_CMD_VERIFY_PIN, u4Min, u4Max);
    blk.u4Mode = u4Mode;
    return blk;
}

std::string NyE2ePin(const tagBlkUiParam& blk) {
    const char* sz = reinterpret_cast<const char*>(NyUiParamBytes(&blk, UI_OFS_VERIFY_PIN));
    return std::string(sz, strnlen(sz, NY_UI_PIN_FIELD_SIZE));
}

std::string NyE2eWaitVerifyWindow() {
    return NyTestWaitWindow(VerifyTitle(), NY_E2E_WAIT_MS);
}

bool NyE2eWaitNoVerifyWindow(unsigned int u4TimeoutMs) {
    return NyTestWaitNoWindow(VerifyTitle(), u4TimeoutMs);
}

size_t NyE2eVerifyWindows() {
    return NyTestFindWindows(VerifyTitle()).size();
}
