#include "UictlOptions.h"

#include <algorithm>
#include <cstring>

#include "uiblock/NyUiConfirmParam.h"

namespace {

// The common options, in the order of s_aCommonOptions.
enum EnUictlCommonOption {
    OPT_MAIN,
    OPT_SERVER,
    OPT_KEEP,
    OPT_ID,
    OPT_ASYNC,
    OPT_POLL,
    OPT_WAIT,
    OPT_PROTECT,
    OPT_JSON,
    OPT_UPDATE_AFTER,
    OPT_STOP_AFTER,
    OPT_TERMINATE_AFTER,
    OPT_COMMON_COUNT
};

const BlkToolOptionTag s_aCommonOptions[OPT_COMMON_COUNT] = {
    {"main", 0, "NAME", "join the server of that main session (default: start one)"},
    {"server", 0, "PATH", "the server to start (default: ukey-uiserver as installed)"},
    {"keep", 0, nullptr, "leave a started server running; its main session is printed"},
    {"id", 0, "N", "interaction id (default 1)"},
    {"async", 0, nullptr, "start the dialog asynchronously and poll its status"},
    {"poll", 0, "MS", "interval of the status polls (default 100)"},
    {"wait", 0, "S", "close the dialog when it has not been answered within S seconds"},
    {"protect", 0, "SEEDHEX", "protect the exchange with this 16-byte seed (32 hex digits)"},
    {"json", 0, nullptr, "print the answer as one JSON object"},
    {"update-after", 0, "MS:DETAIL", "update a confirm or fingerprint dialog; repeatable"},
    {"stop-after", 0, "MS", "stop the dialog MS after its start"},
    {"terminate-after", 0, "MS", "the same as --stop-after"},
};

bool ParseSeed(const std::string& strHex, uint8_t* pu1Seed) {
    if (strHex.size() != 2 * NY_UI_KEY_SEED_SIZE) {
        return false;
    }
    for (uint32_t i = 0; i < NY_UI_KEY_SEED_SIZE; ++i) {
        uint32_t u4Byte = 0;
        if (!UictlParseU32("0x" + strHex.substr(2 * i, 2), &u4Byte)) {
            return false;
        }
        pu1Seed[i] = static_cast<uint8_t>(u4Byte);
    }
    return true;
}

// False for a bad value.
bool ApplyCommon(size_t uIndex, const std::string& strValue, BlkUictlOptionsTag* pOptions) {
    switch (uIndex) {
        case OPT_MAIN:
            pOptions->strMain = strValue;
            return !strValue.empty();
        case OPT_SERVER:
            pOptions->strServer = strValue;
            return !strValue.empty();
        case OPT_KEEP:
            return pOptions->bKeep = true;
        case OPT_ID:
            return UictlParseU32(strValue, &pOptions->u4InteractionId);
        case OPT_ASYNC:
            return pOptions->bAsync = true;
        case OPT_POLL:
            return UictlParseU32(strValue, &pOptions->u4PollMs);
        case OPT_WAIT:
            return UictlParseU32(strValue, &pOptions->u4WaitS) &&
                   pOptions->u4WaitS != UICTL_NO_WAIT;
        case OPT_PROTECT:
            pOptions->bProtect = true;
            return ParseSeed(strValue, pOptions->au1Seed);
        case OPT_JSON:
            return pOptions->bJson = true;
        case OPT_UPDATE_AFTER:
            pOptions->vUpdates.push_back({0, 0});
            return UictlParseUpdate(strValue, &pOptions->vUpdates.back());
        default:
            return UictlParseU32(strValue, &pOptions->u4StopAfterMs);
    }
}

std::vector<BlkToolOptionTag> AllOptions(const BlkUictlCommandTag* pCommand) {
    std::vector<BlkToolOptionTag> vOptions(s_aCommonOptions, s_aCommonOptions + OPT_COMMON_COUNT);
    vOptions.insert(vOptions.end(), pCommand->aOptions, pCommand->aOptions + pCommand->cOptions);
    return vOptions;
}

// A confirmation ends when its countdown has run out, if nothing ends it before.
void LimitToCountdown(const BlkUictlCommandTag* pCommand, const tagBlkUiParam* pReq,
                      BlkUictlOptionsTag* pOptions) {
    uint32_t u4Countdown = NyUiParamGetU4(pReq, UI_OFS_CONFIRM_TIMEOUT);
    if (strcmp(pCommand->szName, "confirm") == 0 && u4Countdown != 0) {
        pOptions->u4WaitS = std::min(pOptions->u4WaitS, u4Countdown);
    }
}

}  // namespace

EnToolParse UictlParseOptions(int argc, char** argv, int iFirst, const BlkUictlCommandTag* pCommand,
                              BlkUictlOptionsTag* pOptions, tagBlkUiParam* pReq,
                              std::string* pstrError) {
    memset(pReq, 0, sizeof(*pReq));
    pReq->enUiCmdType = pCommand->u4CmdType;
    UictlPresetRequest(pCommand, pReq);
    std::vector<BlkToolOptionTag> vOptions = AllOptions(pCommand);
    std::vector<std::string> vOperands;
    EnToolParse enParse = NyToolParseArgs(
        argc - iFirst + 1, argv + iFirst - 1, vOptions,
        [&](size_t uIndex, const char* szValue, std::string* pstrOptionError) {
            std::string strName = std::string("--") + vOptions[uIndex].szLong;
            std::string strValue = szValue != nullptr ? szValue : "";
            if (uIndex >= OPT_COMMON_COUNT) {
                return pCommand->pfnOption(strName, strValue, pReq, pstrOptionError);
            }
            if (!ApplyCommon(uIndex, strValue, pOptions)) {
                *pstrOptionError = "bad value \"" + strValue + "\" for " + strName;
                return false;
            }
            return true;
        },
        &vOperands, pstrError);
    if (enParse != NY_TOOL_RUN) {
        return enParse;
    }
    if (!vOperands.empty()) {
        *pstrError = "unexpected argument \"" + vOperands[0] + "\"";
        return NY_TOOL_BAD;
    }
    if (pOptions->bAsync) {
        pReq->u4Mode = UI_MODE_ASYNC;
    }
    LimitToCountdown(pCommand, pReq, pOptions);
    return UictlPrepareSchedule(pOptions, pReq, pstrError) ? NY_TOOL_RUN : NY_TOOL_BAD;
}

std::string UictlUsage() {
    std::string strUsage =
        "usage: ukey-uictl COMMAND [options]\n"
        "Sends one request to a UI server (started for the purpose unless --main is given) and\n"
        "prints its answer. 'ukey-uictl COMMAND --help' lists a command's own options.\n"
        "common options:\n" +
        NyToolOptionHelp({s_aCommonOptions, s_aCommonOptions + OPT_COMMON_COUNT}) + "commands:\n";
    for (size_t i = 0; i < g_cUictlCommands; ++i) {
        char szLine[160];
        snprintf(szLine, sizeof(szLine), "  %-12s %s\n", g_aUictlCommands[i].szName,
                 g_aUictlCommands[i].szSummary);
        strUsage += szLine;
    }
    return strUsage +
           "exit status: 0 answered OK (raw: answered), 1 cancelled, 2 bad command line,\n"
           "  3 not processed, 4 the dialog could not be shown, 5 no connection to the server,\n"
           "  6 no answer in time (--wait, or the end of a confirmation's countdown),\n"
           "  130 interrupted (the dialog is closed).\n";
}

std::string UictlCommandUsage(const BlkUictlCommandTag* pCommand) {
    return std::string("usage: ukey-uictl ") + pCommand->szName + " [options]\n" +
           pCommand->szSummary + "\n" +
           NyToolOptionHelp({pCommand->aOptions, pCommand->aOptions + pCommand->cOptions}) +
           "and the common options of 'ukey-uictl --help'.\n";
}
