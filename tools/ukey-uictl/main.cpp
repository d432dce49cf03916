// ukey-uictl COMMAND [options]: sends one UI request to a UI server and prints its answer.
#include <cstdio>
#include <string>

#include "UictlExchange.h"
#include "UictlOutput.h"

namespace {

constexpr int EXIT_FAILED = 1;
constexpr int EXIT_USAGE = 2;

int UsageError(const std::string& strError) {
    fprintf(stderr, "ukey-uictl: %s.\n%s", strError.c_str(), UictlUsage().c_str());
    return EXIT_USAGE;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        return UsageError("no command given");
    }
    std::string strCommand = argv[1];
    if (strCommand == "help" || strCommand == "--help" || strCommand == "-h") {
        fputs(UictlUsage().c_str(), stdout);
        return 0;
    }
    const BlkUictlCommandTag* pCommand = UictlFindCommand(strCommand);
    if (pCommand == nullptr) {
        return UsageError("unknown command \"" + strCommand + "\"");
    }
    BlkUictlOptionsTag options;
    tagBlkUiParam blkReq;
    std::string strError;
    if (!UictlParseOptions(argc, argv, 2, pCommand, &options, &blkReq, &strError)) {
        return UsageError(strError);
    }
    tagBlkUiParam blkAnswer = {};
    std::string strNotice;
    uint32_t u4Result = UictlExchange(options, &blkReq, &blkAnswer, &strError, &strNotice);
    if (!strNotice.empty()) {
        fprintf(stderr, "%s\n", strNotice.c_str());
    }
    if (u4Result != NY_OK) {
        fprintf(stderr, "ukey-uictl: %s (error 0x%08X).\n", strError.c_str(), u4Result);
        return EXIT_FAILED;
    }
    fputs(UictlFormatAnswer(&blkAnswer, options.bJson, pCommand->bPrintBlock).c_str(), stdout);
    return 0;
}
