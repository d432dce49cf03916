// ukey-uictl's exit status: what the answer was, or why there was none.
#pragma once

#include <cstdint>

#include "uiblock/NyUiParam.h"

constexpr int UICTL_EXIT_OK = 0;             // answered OK (raw: answered at all)
constexpr int UICTL_EXIT_CANCEL = 1;         // the user cancelled
constexpr int UICTL_EXIT_USAGE = 2;          // bad command line
constexpr int UICTL_EXIT_NOT_PROCESSED = 3;  // the server did not process the request
constexpr int UICTL_EXIT_START_FAILED = 4;   // the dialog could not be shown
constexpr int UICTL_EXIT_CONNECTION = 5;     // the server could not be started or reached
constexpr int UICTL_EXIT_NO_ANSWER = 6;      // --wait or the confirmation's countdown ran out

// The exit status for an answer; a raw exchange's answer is the user's to read.
int UictlExitForAnswer(const tagBlkUiParam* pAnswer, bool bRaw);
// The exit status for a failed exchange (a result code of UictlExchange).
int UictlExitForFailure(uint32_t u4Result);
