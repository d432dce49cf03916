// ukey-cfg: shows entries of the built-in configuration image (texts in any of the three
// languages, settings, raw values) and a summary of the image.
#include <cstdio>
#include <string>

#include "UkeyCfgArgs.h"
#include "UkeyCfgCommands.h"

int main(int argc, char** argv) {
    BlkUkeyCfgArgsTag args;
    std::string strError;
    switch (UkeyCfgParseArgs(argc, argv, &args, &strError)) {
        case NY_TOOL_BAD:
            return NyToolUsageError("ukey-cfg", strError);
        case NY_TOOL_HELP:
            fputs(UkeyCfgUsage().c_str(), stdout);
            return UKEY_CFG_EXIT_OK;
        case NY_TOOL_VERSION:
            fputs(NyToolVersionLine("ukey-cfg").c_str(), stdout);
            return UKEY_CFG_EXIT_OK;
        default:
            break;
    }
    switch (args.enCommand) {
        case UKEY_CFG_GET:
            return UkeyCfgGet(args);
        case UKEY_CFG_LIST:
            return UkeyCfgList(args);
        default:
            return UkeyCfgInfo();
    }
}
