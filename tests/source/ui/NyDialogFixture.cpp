#include "NyDialogFixture.h"

#include <cstdio>

#include "uiblock/NyUiConfirmParam.h"

std::vector<std::pair<uint32_t, uint32_t>> NyPinTestOutputs(uint32_t u4Cmd) {
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

bool NyGuiTestLabelShows(const std::string& strText) {
    for (const BlkTestAccessibleTag& blk : NyGuiTestTree()) {
        if (blk.strRole == "label" && blk.strName == strText && blk.HasState("showing")) {
            return true;
        }
    }
    return false;
}

std::string NyGuiTestCounter(unsigned int u4Count) {
    char szText[NY_GUI_TEXT_SIZE];
    snprintf(szText, sizeof(szText), NyGuiTestText(0x210085).c_str(), u4Count);
    return szText;
}

tagBlkUiParam NyConfirmTestRequest(uint32_t u4Kind, uint32_t u4Timeout, uint32_t u4Closable,
                                   uint32_t u4Detail, uint32_t u4Attempts) {
    tagBlkUiParam blk = NyGuiTestRequest(UI_CMD_CONFIRM, u4Kind, u4Closable);
    NyUiParamSetU4(&blk, UI_OFS_CONFIRM_DETAIL, u4Detail);
    NyUiParamSetU4(&blk, UI_OFS_CONFIRM_ATTEMPTS, u4Attempts);
    NyUiParamSetU4(&blk, UI_OFS_CONFIRM_TIMEOUT, u4Timeout);
    return blk;
}

tagBlkUiParam NyConfirmTestUpdate(uint32_t u4Kind, uint32_t u4Detail, uint32_t u4Timeout) {
    tagBlkUiParam blk = NyConfirmTestRequest(u4Kind, u4Timeout, 1, u4Detail);
    blk.enUiCmdType = UI_CMD_UPDATE;
    blk.enRes = UI_RESULT_OK;
    return blk;
}
