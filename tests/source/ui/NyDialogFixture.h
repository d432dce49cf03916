// Shared fixture of the dialog tests: a request block the test fills, the dialog run on its own
// thread over a configuration the test chooses, entries found by their captions, keys typed and
// buttons clicked through the X server, texts and states read back as a screen reader reads
// them, and the answer block's fields.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "NyGuiTestEnv.h"
#include "support/NyTestConfig.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"
#include "uiblock/NyUiConfirmParam.h"

// Roles of the entries as a screen reader reports them.
constexpr char NY_ROLE_PIN[] = "password text";
constexpr char NY_ROLE_TEXT[] = "text";
constexpr unsigned int NY_TXT_OK = 0x210011;
constexpr unsigned int NY_TXT_CANCEL = 0x210012;

// The (PIN, length) fields a PIN dialog answers, in the order of its entries.
inline std::vector<std::pair<uint32_t, uint32_t>> NyPinTestOutputs(uint32_t u4Cmd) {
    switch (u4Cmd) {
        case UI_CMD_VERIFY_PIN:
        case UI_CMD_GET_PIN_CONFIRM:
            return {{UI_OFS_VERIFY_PIN, UI_OFS_VERIFY_PIN_LEN}};
        case UI_CMD_CHANGE_PIN:
        case UI_CMD_CHANGE_PIN_FORCED:
            return {{UI_OFS_CHANGE_OLD_PIN, UI_OFS_CHANGE_OLD_PIN_LEN},
                    {UI_OFS_CHANGE_NEW_PIN, UI_OFS_CHANGE_NEW_PIN_LEN}};
        case UI_CMD_UNBLOCK:
            return {{UI_OFS_UNBLOCK_SO_PIN, UI_OFS_UNBLOCK_SO_PIN_LEN},
                    {UI_OFS_UNBLOCK_USER_PIN, UI_OFS_UNBLOCK_USER_PIN_LEN}};
        case UI_CMD_CHANGE_LABEL:
            return {{UI_OFS_LABEL_PIN, UI_OFS_LABEL_PIN_LEN}};
        default:
            return {};
    }
}

// Whether a label showing strText is on screen.
inline bool NyGuiTestLabelShows(const std::string& strText) {
    for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
        if (blk.strRole == "label" && blk.strName == strText && blk.HasState("showing")) {
            return true;
        }
    }
    return false;
}

// Counter text for u4Count characters.
inline std::string NyGuiTestCounter(unsigned int u4Count) {
    char szText[NY_GUI_TEXT_SIZE];
    snprintf(szText, sizeof(szText), NyGuiTestText(0x210085).c_str(), u4Count);
    return szText;
}

// A confirm request: kind, time-out in seconds, closable flag, detail and attempts values.
inline tagBlkUiParam NyConfirmTestRequest(uint32_t u4Kind, uint32_t u4Timeout,
                                          uint32_t u4Closable = 1, uint32_t u4Detail = 0,
                                          uint32_t u4Attempts = 0) {
    tagBlkUiParam blk = NyGuiTestRequest(UI_CMD_CONFIRM, u4Kind, u4Closable);
    NyUiParamSetU4(&blk, UI_OFS_CONFIRM_DETAIL, u4Detail);
    NyUiParamSetU4(&blk, UI_OFS_CONFIRM_ATTEMPTS, u4Attempts);
    NyUiParamSetU4(&blk, UI_OFS_CONFIRM_TIMEOUT, u4Timeout);
    return blk;
}

// An update block as a client sends it: command type 1 and, to show that a dialog keeps its own
// answer, a result word of OK.
inline tagBlkUiParam NyConfirmTestUpdate(uint32_t u4Kind, uint32_t u4Detail,
                                         uint32_t u4Timeout = 30) {
    tagBlkUiParam blk = NyConfirmTestRequest(u4Kind, u4Timeout, 1, u4Detail);
    blk.enUiCmdType = UI_CMD_UPDATE;
    blk.enRes = UI_RESULT_OK;
    return blk;
}

class CDialogTest : public testing::Test {
protected:
    static constexpr char NY_PIN_SENTINEL[] = "untouched";
    static constexpr uint32_t NY_LEN_SENTINEL = 0x11223344;

    // The configuration the next dialog reads (the product's unless a test picks a variant).
    void UseConfig(std::vector<uint8_t> vImage) { m_pConfig.reset(new CNyTestConfig(vImage)); }
    CConfig* Config() { return m_pConfig->Get(); }
    // Starts m_req as command u4Cmd with two payload words; each (offset, value) pair after
    // them is set too, and the command's PIN outputs get a sentinel.
    void Request(uint32_t u4Cmd, uint32_t u4First, uint32_t u4Second,
                 std::vector<std::pair<uint32_t, uint32_t>> vWords = {}) {
        m_req = NyGuiTestRequest(u4Cmd, u4First, u4Second);
        for (const auto& word : vWords) {
            NyUiParamSetU4(&m_req, word.first, word.second);
        }
        m_vOutputs = NyPinTestOutputs(u4Cmd);
        for (const auto& out : m_vOutputs) {
            memcpy(NyUiParamBytes(&m_req, out.first), NY_PIN_SENTINEL, sizeof(NY_PIN_SENTINEL));
            NyUiParamSetU4(&m_req, out.second, NY_LEN_SENTINEL);
        }
    }
    // Runs the dialog over m_req (the fixture owns it) and waits for its window titled text
    // u4TitleId, or strTitle.
    template <typename TDialog>
    void Open(unsigned int u4TitleId) {
        Open(new TDialog(&m_req, Config()), NyGuiTestText(u4TitleId));
    }
    void Open(GUIBase* pDialog, const std::string& strTitle) {
        m_pRun.reset();
        m_pDialog.reset(pDialog);
        m_pRun.reset(new CGuiTestRun(pDialog));
        m_strTitle = strTitle;
        m_strWindow = NyTestWaitWindow("^" + m_strTitle + "$", NY_GUI_TEST_WAIT_MS);
        ASSERT_FALSE(m_strWindow.empty()) << "no window titled " << m_strTitle;
    }
    unsigned int Update(const tagBlkUiParam& blk) {
        return m_pDialog->update(reinterpret_cast<const unsigned char*>(&blk), sizeof(blk));
    }
    // The entry captioned by text u4CaptionId.
    BlkTestAccessibleTag Entry(unsigned int u4CaptionId, const char* szRole = NY_ROLE_PIN) {
        BlkTestAccessibleTag entry;
        EXPECT_TRUE(NyGuiTestWaitFor(szRole, NyGuiTestText(u4CaptionId), &entry))
            << "no " << szRole << " captioned " << NyGuiTestText(u4CaptionId);
        return entry;
    }
    // Clicks into that entry and types strText.
    void TypeInto(unsigned int u4CaptionId, const std::string& strText,
                  const char* szRole = NY_ROLE_PIN) {
        NyGuiTestClick(Entry(u4CaptionId, szRole));
        NyTestType(strText);
    }
    void ClickButton(unsigned int u4TextId) {
        BlkTestAccessibleTag button;
        ASSERT_TRUE(NyGuiTestWaitFor("push button", NyGuiTestText(u4TextId), &button));
        NyGuiTestClick(button);
    }
    bool OkSensitive() {
        for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
            if (blk.strRole == "push button" && blk.strName == NyGuiTestText(NY_TXT_OK)) {
                return blk.HasState("sensitive");
            }
        }
        ADD_FAILURE() << "no OK button";
        return false;
    }
    bool WaitOkSensitive() {
        return NyTestWaitUntil([this] { return OkSensitive(); }, NY_GUI_TEST_WAIT_MS);
    }
    // Enter is refused: the dialog is still running a moment later.
    void ExpectReturnRefused() {
        NyTestKey("Return");
        usleep(300 * 1000);
        EXPECT_EQ(0u, m_pDialog->IsFinished());
    }
    // Whether a label showing strText appears within the usual wait, or none shows it.
    static bool WaitLabel(const std::string& strText) {
        return NyTestWaitUntil([&] { return NyGuiTestLabelShows(strText); }, NY_GUI_TEST_WAIT_MS);
    }
    static bool WaitNoLabel(const std::string& strText) {
        return NyTestWaitUntil([&] { return !NyGuiTestLabelShows(strText); }, NY_GUI_TEST_WAIT_MS);
    }
    static std::string Counter(unsigned int u4Count) { return NyGuiTestCounter(u4Count); }
    // Waits until run() has returned and the window is gone; the answer block.
    tagBlkUiParam Finish() {
        EXPECT_TRUE(m_pRun->Wait(NY_GUI_TEST_WAIT_MS));
        EXPECT_EQ(0u, m_pRun->Result());
        EXPECT_EQ(1u, m_pDialog->IsFinished());
        EXPECT_TRUE(NyTestWaitNoWindow("^" + m_strTitle + "$", NY_GUI_TEST_WAIT_MS));
        return NyGuiTestResponse(m_pDialog.get());
    }
    tagBlkUiParam StopAndFinish() {
        EXPECT_EQ(0u, m_pDialog->stop());
        return Finish();
    }
    // A NUL-terminated field of the block, read up to u4Size bytes.
    static std::string Field(const tagBlkUiParam& blk, uint32_t u4Offset, uint32_t u4Size) {
        const char* sz = reinterpret_cast<const char*>(NyUiParamBytes(&blk, u4Offset));
        return std::string(sz, strnlen(sz, u4Size));
    }
    // The answer is OK and its PIN outputs (in entry order) hold vPins with their lengths.
    void ExpectAnswer(const tagBlkUiParam& blk, const std::vector<std::string>& vPins) {
        EXPECT_EQ(UI_RESULT_OK, blk.enRes);
        ASSERT_EQ(m_vOutputs.size(), vPins.size());
        for (size_t i = 0; i < vPins.size(); ++i) {
            EXPECT_EQ(vPins[i], Field(blk, m_vOutputs[i].first, NY_UI_PIN_FIELD_SIZE)) << i;
            EXPECT_EQ(vPins[i].size(), NyUiParamGetU4(&blk, m_vOutputs[i].second)) << i;
        }
    }
    // The answer is cancelled and the sentinels of m_req's outputs are still there.
    void ExpectCancelledUntouched(const tagBlkUiParam& blk) {
        EXPECT_EQ(UI_RESULT_CANCEL, blk.enRes);
        for (const auto& out : m_vOutputs) {
            EXPECT_EQ(NY_PIN_SENTINEL, Field(blk, out.first, sizeof(NY_PIN_SENTINEL)));
            EXPECT_EQ(NY_LEN_SENTINEL, NyUiParamGetU4(&blk, out.second));
        }
    }

    std::unique_ptr<CNyTestConfig> m_pConfig{new CNyTestConfig};
    tagBlkUiParam m_req;
    std::vector<std::pair<uint32_t, uint32_t>> m_vOutputs;
    std::atomic<int> m_nSignals{0};  // for handlers connected to the dialog's widgets
    std::unique_ptr<GUIBase> m_pDialog;
    std::unique_ptr<CGuiTestRun> m_pRun;  // declared last: joined before the dialog goes
    std::string m_strTitle;
    std::string m_strWindow;
};
