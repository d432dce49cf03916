// What the tests of the two confirmation dialogs share: requests and updates of the confirm
// command, and a fixture that shows a dialog on a thread of its own and collects its answer.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>

#include "NyPinDialogFixture.h"
#include "support/NyTestX11.h"

// A confirm request: kind, time-out in seconds, closable flag, detail and attempts values.
tagBlkUiParam NyConfirmTestRequest(uint32_t u4Kind, uint32_t u4Timeout, uint32_t u4Closable = 1,
                                   uint32_t u4Detail = 0, uint32_t u4Attempts = 0);
// An update block as a client sends it: command type 1 and, to show that a dialog keeps its own
// answer, a result word of OK.
tagBlkUiParam NyConfirmTestUpdate(uint32_t u4Kind, uint32_t u4Detail, uint32_t u4Timeout = 30);

// Shows a confirmation dialog on a thread of its own and collects its answer.
class CConfirmDialogTest : public CPinDialogTest {
protected:
    template <typename TDialog>
    void OpenDialog(const tagBlkUiParam& req, const std::string& strTitle) {
        m_req = req;
        OpenTitled(new TDialog(&m_req, m_pConfig->Get()), strTitle);
    }
    unsigned int Update(const tagBlkUiParam& blk) {
        return m_pDialog->update(reinterpret_cast<const unsigned char*>(&blk), sizeof(blk));
    }

    tagBlkUiParam m_req;
    std::atomic<int> m_nSignals{0};  // for handlers connected to the dialog's widgets
};
