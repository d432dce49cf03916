// What the tests of the two confirmation dialogs share: requests and updates of the confirm
// command, and a fixture that shows a dialog on a thread of its own and collects its answer.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>

#include "NyGuiTestEnv.h"
#include "support/NyTestX11.h"

// A confirm request: kind, time-out in seconds, closable flag, detail and attempts values.
tagBlkUiParam NyConfirmTestRequest(uint32_t u4Kind, uint32_t u4Timeout, uint32_t u4Closable = 1,
                                   uint32_t u4Detail = 0, uint32_t u4Attempts = 0);
// An update block as a client sends it: command type 1 and, to show that a dialog keeps its own
// answer, a result word of OK.
tagBlkUiParam NyConfirmTestUpdate(uint32_t u4Kind, uint32_t u4Detail, uint32_t u4Timeout = 30);

template <typename TDialog>
class CConfirmDialogTest : public testing::Test {
protected:
    // Shows the dialog for a request and waits for its window, found by its title.
    void OpenDialog(const tagBlkUiParam& req, const std::string& strTitleRegex) {
        m_req = req;
        m_strTitleRegex = strTitleRegex;
        m_pDialog.reset(new TDialog(&m_req, m_pConfig.get()));
        m_pRun.reset(new CGuiTestRun(m_pDialog.get()));
        m_strWindow = NyTestWaitWindow(m_strTitleRegex, NY_GUI_TEST_WAIT_MS);
        ASSERT_FALSE(m_strWindow.empty()) << "no window titled " << m_strTitleRegex;
    }
    // Waits until run() has returned and the window has gone; the answer.
    tagBlkUiParam Finish() {
        EXPECT_TRUE(m_pRun->Wait(NY_GUI_TEST_WAIT_MS));
        EXPECT_EQ(0u, m_pRun->Result());
        EXPECT_EQ(1u, m_pDialog->IsFinished());
        EXPECT_TRUE(NyTestWaitNoWindow(m_strTitleRegex, NY_GUI_TEST_WAIT_MS));
        return NyGuiTestResponse(m_pDialog.get());
    }
    unsigned int Update(const tagBlkUiParam& blk) {
        return m_pDialog->update(reinterpret_cast<const unsigned char*>(&blk), sizeof(blk));
    }

    std::unique_ptr<CConfig> m_pConfig = NyGuiTestConfig();
    tagBlkUiParam m_req;
    std::atomic<int> m_nSignals{0};  // for handlers connected to the dialog's widgets
    std::unique_ptr<TDialog> m_pDialog;
    std::unique_ptr<CGuiTestRun> m_pRun;  // declared after the above: joined before they go
    std::string m_strTitleRegex;
    std::string m_strWindow;
};
