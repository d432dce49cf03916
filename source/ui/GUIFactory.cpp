#include "ui/GUIFactory.h"

#include "ui/GUIBase.h"
#include "ui/GUIchangelabel.h"
#include "ui/GUIchangepin.h"
#include "ui/GUIconfirm.h"
#include "ui/GUIconfirmFp.h"
#include "ui/GUIgetpinconfirm.h"
#include "ui/GUImessage.h"
#include "ui/GUIunblock.h"
#include "ui/GUIverify.h"
#include "uiblock/NyUiConfirmParam.h"
#include "uiblock/NyUiParam.h"

GUIBase* CreateDialogForCommand(uint32_t u4CmdType, uint32_t u4Ctt, const tagBlkUiParam* pReq,
                                CConfig* pCfg) {
    switch (u4CmdType) {
        case UI_CMD_VERIFY_PIN:
            return new GUIverify(pReq, pCfg);
        case UI_CMD_GET_PIN_CONFIRM:
            return new GUIgetpinconfirm(pReq, pCfg);
        case UI_CMD_MESSAGE:
            return new GUImessage(pReq, pCfg);
        case UI_CMD_CONFIRM:
            if (NyUiIsFingerprintKind(u4Ctt)) {
                return new GUIconfirmFp(pReq, pCfg);
            }
            return new GUIconfirm(pReq, pCfg);
        case UI_CMD_CHANGE_PIN:
        case UI_CMD_CHANGE_PIN_FORCED:
            return new GUIchangepin(pReq, pCfg);
        case UI_CMD_UNBLOCK:
            return new GUIunblock(pReq, pCfg);
        case UI_CMD_CHANGE_LABEL:
            return new GUIchangelabel(pReq, pCfg);
        default:
            return nullptr;
    }
}
