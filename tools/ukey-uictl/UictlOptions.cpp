#include "UictlOptions.h"

#include <cstring>
#include <utility>
#include <vector>

namespace {

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

bool IsFlag(const std::string& strName) {
    return strName == "--async" || strName == "--json" || strName == "--keep";
}

void ApplyFlag(const std::string& strName, BlkUictlOptionsTag* pOptions) {
    if (strName == "--async") {
        pOptions->bAsync = true;
    } else if (strName == "--json") {
        pOptions->bJson = true;
    } else {
        pOptions->bKeep = true;
    }
}

// 1 applied, 0 not a common option, -1 bad value.
int ApplyCommonValue(const std::string& strName, const std::string& strValue,
                     BlkUictlOptionsTag* pOptions) {
    bool bOk = true;
    if (strName == "--main") {
        pOptions->strMain = strValue;
        bOk = !strValue.empty();
    } else if (strName == "--server") {
        pOptions->strServer = strValue;
        bOk = !strValue.empty();
    } else if (strName == "--protect") {
        pOptions->bProtect = true;
        bOk = ParseSeed(strValue, pOptions->au1Seed);
    } else if (strName == "--id") {
        bOk = UictlParseU32(strValue, &pOptions->u4InteractionId);
    } else if (strName == "--timeout") {
        bOk = UictlParseU32(strValue, &pOptions->u4TimeoutMs);
    } else if (strName == "--poll") {
        bOk = UictlParseU32(strValue, &pOptions->u4PollMs);
    } else if (strName == "--update-after") {
        BlkUictlUpdateTag update;
        bOk = UictlParseUpdate(strValue, &update);
        pOptions->vUpdates.push_back(update);
    } else if (strName == "--stop-after" || strName == "--terminate-after") {
        bOk = UictlParseU32(strValue, &pOptions->u4StopAfterMs);
    } else {
        return 0;
    }
    return bOk ? 1 : -1;
}

// A subcommand may give a common option's name a meaning of its own (confirm's --timeout is the
// device's time-out in seconds): its handler is asked first, on a scratch block.
bool OwnedBySubcommand(const BlkUictlCommandTag* pCommand, const std::string& strName,
                       const std::string& strValue) {
    tagBlkUiParam blkScratch = {};
    std::string strError;
    return pCommand->pfnOption(strName, strValue, &blkScratch, &strError) ||
           strError.compare(0, strlen(NY_UICTL_UNKNOWN_OPTION), NY_UICTL_UNKNOWN_OPTION) != 0;
}

// A subcommand's option as given: flags have no value.
struct BlkOwnOptionTag {
    std::string strName;
    std::string strValue;
    bool bHasValue;
};

std::string NeedsValue(const std::string& strName) {
    return "option " + strName + " needs a value";
}

// Splits "--name=value" or takes the value from the next argument. An option followed by
// another option, or by nothing, has no value (false): a subcommand's flag, or a mistake.
bool TakeValue(int argc, char** argv, int* pi, std::string* pstrName, std::string* pstrValue) {
    std::string strArg = argv[*pi];
    size_t nEq = strArg.find('=');
    if (nEq != std::string::npos) {
        *pstrName = strArg.substr(0, nEq);
        *pstrValue = strArg.substr(nEq + 1);
        return true;
    }
    *pstrName = strArg;
    pstrValue->clear();
    if (*pi + 1 >= argc || std::string(argv[*pi + 1]).compare(0, 2, "--") == 0) {
        return false;
    }
    *pstrValue = argv[++*pi];
    return true;
}

}  // namespace

bool UictlParseOptions(int argc, char** argv, int iFirst, const BlkUictlCommandTag* pCommand,
                       BlkUictlOptionsTag* pOptions, tagBlkUiParam* pReq, std::string* pstrError) {
    std::vector<BlkOwnOptionTag> vOwn;
    for (int i = iFirst; i < argc; ++i) {
        std::string strArg = argv[i];
        if (strArg.compare(0, 2, "--") != 0) {
            *pstrError = "unexpected argument \"" + strArg + "\"";
            return false;
        }
        if (IsFlag(strArg)) {
            ApplyFlag(strArg, pOptions);
            continue;
        }
        std::string strName;
        std::string strValue;
        bool bHasValue = TakeValue(argc, argv, &i, &strName, &strValue);
        int iCommon = OwnedBySubcommand(pCommand, strName, strValue)
                          ? 0
                          : ApplyCommonValue(strName, strValue, pOptions);
        if (!bHasValue && iCommon != 0) {
            *pstrError = NeedsValue(strName);
            return false;
        }
        if (iCommon < 0) {
            *pstrError = "bad value \"" + strValue + "\" for " + strName;
            return false;
        }
        if (iCommon == 0) {
            vOwn.push_back({strName, strValue, bHasValue});
        }
    }
    memset(pReq, 0, sizeof(*pReq));
    pReq->enUiCmdType = pCommand->u4CmdType;
    if (pOptions->bAsync) {
        pReq->u4Mode = UI_MODE_ASYNC;
    }
    UictlPresetRequest(pCommand, pReq);
    for (const BlkOwnOptionTag& option : vOwn) {
        if (!pCommand->pfnOption(option.strName, option.strValue, pReq, pstrError)) {
            // Without a value, a known option that is no flag lacks its value.
            if (!option.bHasValue && pstrError->compare(0, strlen(NY_UICTL_UNKNOWN_OPTION),
                                                        NY_UICTL_UNKNOWN_OPTION) != 0) {
                *pstrError = NeedsValue(option.strName);
            }
            return false;
        }
    }
    return UictlPrepareSchedule(pOptions, pReq, pstrError);
}

std::string UictlUsage() {
    std::string strUsage =
        "usage: ukey-uictl COMMAND [options]\n"
        "common options:\n"
        "  --main NAME       join the server of that main session (default: start one)\n"
        "  --server PATH     the server to start (default: ukey-uiserver beside ukey-uictl)\n"
        "  --keep            leave a started server running and print its main session name\n"
        "  --id N            interaction id (default 1)\n"
        "  --async           start the dialog asynchronously and poll its status\n"
        "  --poll MS         interval of the status polls (default 100)\n"
        "  --timeout MS      give up polling after MS milliseconds\n"
        "  --protect SEEDHEX protect the exchange with this 16-byte seed (32 hex digits)\n"
        "  --json            print the answer as one JSON object\n"
        "  --update-after MS:DETAIL  MS after the start, update a confirm or fingerprint\n"
        "                    dialog with detail value DETAIL (hex); repeatable\n"
        "  --stop-after MS   stop the dialog MS after its start (also --terminate-after)\n"
        "                    (both run the dialog asynchronously)\n"
        "commands:\n";
    for (size_t i = 0; i < g_cUictlCommands; ++i) {
        strUsage += std::string("  ") + g_aUictlCommands[i].szName + ": " +
                    g_aUictlCommands[i].szSummary + "\n      " + g_aUictlCommands[i].szOptions +
                    "\n";
    }
    return strUsage;
}
