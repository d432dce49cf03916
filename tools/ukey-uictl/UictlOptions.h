// Command-line options of ukey-uictl: the common ones, and the subcommand's own applied to
// the request block.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "CNyUiClient.h"
#include "NyToolArgs.h"
#include "UictlCommand.h"
#include "UictlSchedule.h"

// No --wait given.
constexpr uint32_t UICTL_NO_WAIT = 0xFFFFFFFF;

struct BlkUictlOptionsTag {
    std::string strMain;    // --main NAME: join that server; empty: start one
    std::string strServer;  // --server PATH: the server to start (default: beside uictl)
    bool bAsync = false;    // --async: start the dialog asynchronously and poll
    bool bJson = false;     // --json: one JSON object on stdout
    bool bKeep = false;     // --keep: leave a started server running
    bool bProtect = false;  // --protect SEEDHEX given
    uint8_t au1Seed[NY_UI_KEY_SEED_SIZE] = {};
    uint32_t u4InteractionId = 1;             // --id N
    uint32_t u4WaitS = UICTL_NO_WAIT;         // --wait S: limit of the whole wait for the answer
    uint32_t u4PollMs = 100;                  // --poll MS: interval of the asynchronous polls
    std::vector<BlkUictlUpdateTag> vUpdates;  // --update-after MS:DETAIL (repeatable)
    uint32_t u4StopAfterMs = UICTL_NO_STOP;   // --stop-after MS
};

// Parses argv[iFirst..] for pCommand (argv[iFirst - 1] is its name): common options into
// *pOptions, the subcommand's own into *pReq (preset with the command type, and mode 1 for
// --async). NY_TOOL_BAD with a sentence in *pstrError. argv may be reordered.
EnToolParse UictlParseOptions(int argc, char** argv, int iFirst, const BlkUictlCommandTag* pCommand,
                              BlkUictlOptionsTag* pOptions, tagBlkUiParam* pReq,
                              std::string* pstrError);

// Usage text listing the common options and every subcommand.
std::string UictlUsage();
// Usage text of one subcommand: its own options and the common ones.
std::string UictlCommandUsage(const BlkUictlCommandTag* pCommand);
