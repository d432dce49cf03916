// One exchange with a UI server as ukey-uictl runs it: find or start the server, open a
// session, send the block, wait or poll, close the dialog and the session.
#pragma once

#include <string>

#include "UictlOptions.h"

// 0 with the final answer in *pAnswer; otherwise a result code with a sentence describing the
// failed step in *pstrError. *pstrNotice gets what the user should know besides the answer
// (the name of a server left running).
uint32_t UictlExchange(const BlkUictlOptionsTag& options, const tagBlkUiParam* pReq,
                       tagBlkUiParam* pAnswer, std::string* pstrError, std::string* pstrNotice);
