// Result codes of the UI service's own.
#pragma once

#include <cstdint>

#include "runtime/NyResult.h"

// No dialog exists for the command (or dialogs cannot be shown: the server has no display),
// or a command that re-runs the held dialog found none.
constexpr uint32_t UI_ERR_NO_DIALOG = NY_ERR_NOT_FOUND;
// The held dialog is still running and cannot be run a second time.
constexpr uint32_t UI_ERR_DIALOG_BUSY = NY_ERR_INVALID_ARGUMENT;
// The answer buffer is shorter than a UI block.
constexpr uint32_t UI_ERR_ANSWER_TOO_SMALL = NY_ERR_BUFFER_TOO_SMALL;
