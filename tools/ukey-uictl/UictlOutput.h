// The answer of a UI exchange as readable text or as one JSON object.
#pragma once

#include <string>

#include "uiblock/NyUiParam.h"

// "UI_RESULT_OK" and so on; "UI_RESULT_UNKNOWN" for a value the service does not produce.
const char* UictlResultName(uint32_t u4Result);

// enRes, its name, and the output fields of the answer's command type; with bBlock also the
// whole block in hex; with a main session name (a server left running) that too, as "main".
// Text: one "key: value" line per field; JSON: one object and a newline.
std::string UictlFormatAnswer(const tagBlkUiParam* pAnswer, bool bJson, bool bBlock,
                              const std::string& strMain = "");
