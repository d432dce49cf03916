// Shared fixture of the change-PIN, new-PIN, unblock and change-label dialog tests: a dialog
// run on its own thread over a configuration the test chooses, entries found by their
// captions, keys typed and buttons clicked through the X server, texts and states read back
// as a screen reader reads them.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "NyGuiTestEnv.h"
#include "support/NyTestConfig.h"

// Roles of the entries as a screen reader reports them.
constexpr char NY_ROLE_PIN[] = "password text";
constexpr char NY_ROLE_TEXT[] = "text";

class CPinDialogTest : public testing::Test {
protected:
    // The configuration the next dialog reads (the product's unless a test picks a variant).
    void UseConfig(std::vector<uint8_t> vImage) { m_pConfig.reset(new CNyTestConfig(vImage)); }
    CConfig* Config() { return m_pConfig->Get(); }

    // Runs the dialog (the fixture owns it) and waits for its window titled text u4TitleId.
    void Open(GUIBase* pDialog, unsigned int u4TitleId);
    // The same for a window titled strTitle.
    void OpenTitled(GUIBase* pDialog, const std::string& strTitle);
    // The entry captioned by text u4CaptionId.
    BlkTestAccessibleTag Entry(unsigned int u4CaptionId, const char* szRole = NY_ROLE_PIN);
    // Clicks into that entry and types strText.
    void TypeInto(unsigned int u4CaptionId, const std::string& strText,
                  const char* szRole = NY_ROLE_PIN);
    void ClickButton(unsigned int u4TextId);
    bool OkSensitive();
    // Whether a label showing strText appears within the usual wait, or none shows it.
    bool WaitLabel(const std::string& strText);
    bool WaitNoLabel(const std::string& strText);
    // Counter text for u4Count characters.
    static std::string Counter(unsigned int u4Count);
    // Waits until run() has returned and the window is gone; the answer block.
    tagBlkUiParam Finish();
    // Saves a screenshot of the dialog for people to look at.
    void Shot(const std::string& strName);

    // A NUL-terminated field of the block, read up to u4Size bytes.
    static std::string Field(const tagBlkUiParam& blk, uint32_t u4Offset, uint32_t u4Size);
    // Marks output fields of a request so that a test can see whether the dialog wrote them.
    static void FillSentinel(tagBlkUiParam* pReq, uint32_t u4Offset, uint32_t u4LenOffset);
    static void ExpectSentinel(const tagBlkUiParam& blk, uint32_t u4Offset, uint32_t u4LenOffset);

    std::unique_ptr<CNyTestConfig> m_pConfig{new CNyTestConfig};
    std::unique_ptr<GUIBase> m_pDialog;
    std::unique_ptr<CGuiTestRun> m_pRun;  // declared last: joined before the dialog goes
    std::string m_strTitle;
    std::string m_strWindow;
};
