#include "ui/GUIFactory.h"

#include "ui/GUIBase.h"

GUIBase* CreateDialogForCommand(uint32_t u4CmdType, uint32_t u4Ctt, const tagBlkUiParam* pReq,
                                CConfig* pCfg) {
    (void)u4Ctt;
    (void)pReq;
    (void)pCfg;
    switch (u4CmdType) {
        default:
            return nullptr;
    }
}
