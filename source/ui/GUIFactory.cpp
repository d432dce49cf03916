#include "ui/GUIFactory.h"

#include "ui/GUIBase.h"
#include "ui/GUImessage.h"
#include "ui/GUIverify.h"
#include "uiblock/NyUiParam.h"

GUIBase* CreateDialogForCommand(uint32_t u4CmdType, uint32_t u4Ctt, const tagBlkUiParam* pReq,
                                CConfig* pCfg) {
    (void)u4Ctt;
    switch (u4CmdType) {
        case UI_CMD_VERIFY_PIN:
            return new GUIverify(pReq, pCfg);
        case UI_CMD_MESSAGE:
            return new GUImessage(pReq, pCfg);
        default:
            return nullptr;
    }
}
