// ukey-uictl COMMAND [options]: sends one UI request to a UI server and prints its answer; the
// exit status tells the answer (UictlExit.h).
#include <cstdio>
#include <cstring>
#include <string>

#include "NyToolArgs.h"
#include "UictlExchange.h"
#include "UictlExit.h"
#include "UictlInterrupt.h"
#include "UictlOutput.h"
#include "UictlPreflight.h"

namespace {

constexpr char UICTL_NAME[] = "ukey-uictl";

int Fail(int iExit, const std::string& strWhy) {
    fprintf(stderr, "%s: %s\n", UICTL_NAME, strWhy.c_str());
    return iExit;
}

// --help and --version before a command; -1 for anything else.
int AnswerTopLevel(const std::string& strArg) {
    if (strArg == "help" || strArg == "--help" || strArg == "-h") {
        fputs(UictlUsage().c_str(), stdout);
        return UICTL_EXIT_OK;
    }
    if (strArg == "--version") {
        fputs(NyToolVersionLine(UICTL_NAME).c_str(), stdout);
        return UICTL_EXIT_OK;
    }
    return -1;
}

int Run(const BlkUictlCommandTag* pCommand, const BlkUictlOptionsTag& options,
        const tagBlkUiParam& blkReq) {
    bool bRaw = strcmp(pCommand->szName, "raw") == 0;
    std::string strError;
    if (!bRaw && options.strMain.empty() &&
        !UictlCanShowDialogs(UictlServerPath(options), &strError)) {
        return Fail(UICTL_EXIT_START_FAILED, strError);
    }
    UictlCatchInterrupt();
    tagBlkUiParam blkAnswer = {};
    std::string strMain;
    uint32_t u4Result = UictlExchange(options, &blkReq, &blkAnswer, &strError, &strMain);
    if (u4Result != NY_OK) {
        char szCode[32];
        snprintf(szCode, sizeof(szCode), " (error 0x%08X)", u4Result);
        int iExit = UictlExitForFailure(u4Result);
        return Fail(iExit, strError + (iExit == UICTL_EXIT_CONNECTION ? szCode : ""));
    }
    fputs(UictlFormatAnswer(&blkAnswer, options.bJson, pCommand->bPrintBlock,
                            options.bKeep ? strMain : "")
              .c_str(),
          stdout);
    int iExit = UictlExitForAnswer(&blkAnswer, bRaw);
    if (iExit == UICTL_EXIT_START_FAILED) {
        Fail(iExit, "the server could not show the dialog (no display, or no resources)");
    }
    return iExit;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        return NyToolUsageError(UICTL_NAME, "no command given");
    }
    int iTopLevel = AnswerTopLevel(argv[1]);
    if (iTopLevel >= 0) {
        return iTopLevel;
    }
    const BlkUictlCommandTag* pCommand = UictlFindCommand(argv[1]);
    if (pCommand == nullptr) {
        return NyToolUsageError(UICTL_NAME, std::string("unknown command \"") + argv[1] + "\"");
    }
    BlkUictlOptionsTag options;
    tagBlkUiParam blkReq;
    std::string strError;
    switch (UictlParseOptions(argc, argv, 2, pCommand, &options, &blkReq, &strError)) {
        case NY_TOOL_BAD:
            return NyToolUsageError(UICTL_NAME, strError);
        case NY_TOOL_HELP:
            fputs(UictlCommandUsage(pCommand).c_str(), stdout);
            return UICTL_EXIT_OK;
        case NY_TOOL_VERSION:
            return AnswerTopLevel("--version");
        default:
            return Run(pCommand, options, blkReq);
    }
}
