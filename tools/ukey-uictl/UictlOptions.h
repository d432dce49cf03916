// Command-line options of ukey-uictl: the common ones, and the subcommand's own applied to
// the request block.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "CNyUiClient.h"
#include "UictlCommand.h"
#include "UictlSchedule.h"

struct BlkUictlOptionsTag {
    std::string strMain;    // --main NAME: join that server; empty: start one
    std::string strServer;  // --server PATH: the server to start (default: beside uictl)
    bool bAsync = false;    // --async: start the dialog asynchronously and poll
    bool bJson = false;     // --json: one JSON object on stdout
    bool bKeep = false;     // --keep: leave a started server running
    bool bProtect = false;  // --protect SEEDHEX given
    uint8_t au1Seed[NY_UI_KEY_SEED_SIZE] = {};
    uint32_t u4InteractionId = 1;                   // --id N
    uint32_t u4TimeoutMs = NY_CLIENT_WAIT_FOREVER;  // --timeout MS: limit of the asynchronous polls
    uint32_t u4PollMs = 100;                        // --poll MS: interval of the asynchronous polls
    std::vector<BlkUictlUpdateTag> vUpdates;        // --update-after MS:DETAIL (repeatable)
    uint32_t u4StopAfterMs = UICTL_NO_STOP;         // --stop-after MS
};

// Parses argv[iFirst..] for pCommand: common options into *pOptions, the subcommand's own into
// *pReq (preset with the command type, and mode 1 for --async). False with a sentence in
// *pstrError.
bool UictlParseOptions(int argc, char** argv, int iFirst, const BlkUictlCommandTag* pCommand,
                       BlkUictlOptionsTag* pOptions, tagBlkUiParam* pReq, std::string* pstrError);

// Usage text listing the common options and every subcommand.
std::string UictlUsage();
