#include "NyGuiConfirmFixture.h"

#include "uiblock/NyUiConfirmParam.h"

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
