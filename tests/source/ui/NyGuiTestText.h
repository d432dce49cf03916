// What the dialogs show, as the server reads it: the built-in configuration in the product
// language, and request blocks for the tests.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "CConfig.h"
#include "uiblock/NyUiParam.h"

// The configuration the server uses: the built-in image in the product language.
std::unique_ptr<CConfig> NyGuiTestConfig();
// Text u4Id of that configuration, references expanded.
std::string NyGuiTestText(unsigned int u4Id);

// A request block of command u4CmdType with two payload words at 312 and 316.
tagBlkUiParam NyGuiTestRequest(uint32_t u4CmdType, uint32_t u4First, uint32_t u4Second);
