// ukey-cfg: shows entries of the built-in configuration image (texts in any of the three
// languages, settings, raw values) and a summary of the image.
#include <cstdio>
#include <string>

#include "UkeyCfgArgs.h"
#include "UkeyCfgCommands.h"

int main(int argc, char** argv) {
    BlkUkeyCfgArgsTag args;
    std::string strError;
    if (!UkeyCfgParseArgs(argc, argv, &args, &strError)) {
        fprintf(stderr, "ukey-cfg: %s\n%s", strError.c_str(), g_szUkeyCfgUsage);
        return UKEY_CFG_EXIT_USAGE;
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
