// One exchange with a UI server as ukey-uictl runs it: find or start the server, open a
// session, send the block, wait or poll, close the dialog and the session.
#pragma once

#include <string>

#include "UictlOptions.h"

// The server ukey-uictl starts when it joins none.
std::string UictlServerPath(const BlkUictlOptionsTag& options);
// One request and its answer, protected when the options say so.
uint32_t UictlSend(CNyUiClient* pClient, const BlkUictlOptionsTag& options,
                   const tagBlkUiParam* pReq, tagBlkUiParam* pAnswer);
// Closes an asynchronous dialog that has ended (the server keeps it until then).
uint32_t UictlCloseDialog(CNyUiClient* pClient, const BlkUictlOptionsTag& options);

// The whole exchange: 0 with the final answer in *pAnswer; otherwise a result code with a
// sentence describing the failed step in *pstrError. *pstrMain gets the server's main session.
uint32_t UictlExchange(const BlkUictlOptionsTag& options, const tagBlkUiParam* pReq,
                       tagBlkUiParam* pAnswer, std::string* pstrError, std::string* pstrMain);
