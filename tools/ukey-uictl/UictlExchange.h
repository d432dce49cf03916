// One exchange with a UI server as ukey-uictl runs it: find or start the server, open a
// session, send the block, wait or poll, close the dialog and the session.
#pragma once

#include <string>

#include "UictlOptions.h"

// 0 with the final answer in *pAnswer; otherwise a result code with a sentence describing the
// failed step in *pstrError. *pstrNotice gets what the user should know besides the answer
// (the name of a server left running).
// One request and its answer, protected when the options say so.
uint32_t UictlSend(CNyUiClient* pClient, const BlkUictlOptionsTag& options,
                   const tagBlkUiParam* pReq, tagBlkUiParam* pAnswer);
// Polls a started asynchronous dialog to its end (at most the poll time-out), then closes it.
uint32_t UictlFinishAsync(CNyUiClient* pClient, const BlkUictlOptionsTag& options,
                          tagBlkUiParam* pAnswer, std::string* pstrError);

uint32_t UictlExchange(const BlkUictlOptionsTag& options, const tagBlkUiParam* pReq,
                       tagBlkUiParam* pAnswer, std::string* pstrError, std::string* pstrNotice);
