// Creates the dialog object that serves a UI command.
#pragma once

#include <cstdint>

class GUIBase;
class CConfig;
struct tagBlkUiParam;

// The dialog for u4CmdType (u4Ctt, the confirm sub-type, picks between the two confirm
// dialogs), built over the request block and the configuration accessor; the caller owns it.
// nullptr for a command that has no dialog.
GUIBase* CreateDialogForCommand(uint32_t u4CmdType, uint32_t u4Ctt, const tagBlkUiParam* pReq,
                                CConfig* pCfg);
