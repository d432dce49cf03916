#include "NyE2eEnv.h"

#include <dirent.h>
#include <gtest/gtest.h>

#include <cstring>

#include "NyUiServerProcess.h"
#include "support/NyTestDisplay.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"

namespace {

constexpr unsigned int NY_TXT_VERIFY_TITLE = 0x21007A;
constexpr unsigned int NY_TXT_VERIFY_CAPTION = 0x21007F;

class CE2eEnvironment : public testing::Environment {
public:
    void SetUp() override { ASSERT_TRUE(m_display.Start(true, true)); }
    void TearDown() override { m_display.Stop(); }

private:
    CNyTestDisplay m_display;
};

testing::Environment* const g_pEnvironment = testing::AddGlobalTestEnvironment(new CE2eEnvironment);

int CountEntries(const std::string& strDir) {
    DIR* pDir = opendir(strDir.c_str());
    if (pDir == nullptr) {
        return -1;
    }
    int nCount = 0;
    while (struct dirent* pEntry = readdir(pDir)) {
        nCount += pEntry->d_name[0] != '.';
    }
    closedir(pDir);
    return nCount;
}

}  // namespace

CE2eServer::CE2eServer() {
    m_bStarted = m_owner.StartServer(NyTestBinPath("ukey-uiserver").c_str(),
                                     NyUiFreshMainName().c_str()) == NY_OK;
}

std::unique_ptr<CNyUiClient> CE2eServer::Connect(uint32_t u4InteractionId) const {
    std::unique_ptr<CNyUiClient> pClient(new CNyUiClient);
    if (pClient->JoinServer(MainName().c_str()) != NY_OK ||
        pClient->OpenSession(u4InteractionId) != NY_OK) {
        return nullptr;
    }
    return pClient;
}

int CE2eServer::OpenFds() const {
    return CountEntries("/proc/" + std::to_string(Pid()) + "/fd");
}

int CE2eServer::Threads() const {
    return CountEntries("/proc/" + std::to_string(Pid()) + "/task");
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

std::string NyE2eVerifyTitle() {
    return NyGuiTestText(NY_TXT_VERIFY_TITLE);
}

std::string NyE2eWaitVerifyWindow() {
    return NyTestWaitWindow("^" + NyE2eVerifyTitle() + "$", NY_E2E_WAIT_MS);
}

bool NyE2eWaitNoVerifyWindow(unsigned int u4TimeoutMs) {
    return NyTestWaitNoWindow("^" + NyE2eVerifyTitle() + "$", u4TimeoutMs);
}

size_t NyE2eVerifyWindows() {
    return NyTestFindWindows("^" + NyE2eVerifyTitle() + "$").size();
}

void NyE2eEnterPin(pid_t pidServer, const std::string& strPin) {
    BlkTestAccessibleTag entry;
    ASSERT_TRUE(NyTestWaitAccessible(pidServer, "password text",
                                     NyGuiTestText(NY_TXT_VERIFY_CAPTION), NY_E2E_WAIT_MS, &entry));
    NyTestClickAt(entry.CentreX(), entry.CentreY());
    NyTestType(strPin);
    NyTestKey("Return");
}
