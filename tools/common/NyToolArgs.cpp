#include "NyToolArgs.h"

#include <getopt.h>

#include <cstdio>

#include "NyVersion.h"

namespace {

// getopt_long's return values for table entries and the built-in options.
constexpr int NY_TOOL_LONG_BASE = 0x100;
constexpr int NY_TOOL_OPT_HELP = 'h';
constexpr int NY_TOOL_OPT_VERSION = 0x80;

std::string OptionName(const std::vector<BlkToolOptionTag>& vOptions, int iValue) {
    if (iValue >= NY_TOOL_LONG_BASE) {
        return std::string("--") + vOptions[static_cast<size_t>(iValue - NY_TOOL_LONG_BASE)].szLong;
    }
    for (const BlkToolOptionTag& option : vOptions) {
        if (option.chShort == iValue) {
            return std::string("--") + option.szLong;
        }
    }
    return std::string("-") + static_cast<char>(iValue);
}

// The argument getopt_long refused, without a value given with '='.
std::string Offending(char** argv) {
    std::string strArg = argv[optind - 1];
    return strArg.substr(0, strArg.find('='));
}

// Index into vOptions of a value getopt_long returned for one of them; -1 for the built-ins.
long TableIndex(const std::vector<BlkToolOptionTag>& vOptions, int iValue) {
    if (iValue >= NY_TOOL_LONG_BASE) {
        return iValue - NY_TOOL_LONG_BASE;
    }
    for (size_t i = 0; i < vOptions.size(); ++i) {
        if (vOptions[i].chShort == iValue) {
            return static_cast<long>(i);
        }
    }
    return -1;
}

}  // namespace

EnToolParse NyToolParseArgs(int argc, char** argv, const std::vector<BlkToolOptionTag>& vOptions,
                            const FnToolOption& fnApply, std::vector<std::string>* pvOperands,
                            std::string* pstrError) {
    std::string strShort = ":h";
    std::vector<struct option> vLong;
    for (size_t i = 0; i < vOptions.size(); ++i) {
        int iHasArg = vOptions[i].szValueName != nullptr ? required_argument : no_argument;
        vLong.push_back(
            {vOptions[i].szLong, iHasArg, nullptr, NY_TOOL_LONG_BASE + static_cast<int>(i)});
        if (vOptions[i].chShort != 0) {
            strShort += vOptions[i].chShort;
            strShort += iHasArg == required_argument ? ":" : "";
        }
    }
    vLong.push_back({"help", no_argument, nullptr, NY_TOOL_OPT_HELP});
    vLong.push_back({"version", no_argument, nullptr, NY_TOOL_OPT_VERSION});
    vLong.push_back({nullptr, 0, nullptr, 0});
    optind = 0;  // a fresh scan on every call
    opterr = 0;
    EnToolParse enResult = NY_TOOL_RUN;
    for (int iValue;
         (iValue = getopt_long(argc, argv, strShort.c_str(), vLong.data(), nullptr)) != -1;) {
        if (iValue == ':') {
            *pstrError = "option " + OptionName(vOptions, optopt) + " needs a value";
            return NY_TOOL_BAD;
        }
        if (iValue == '?') {
            bool bFlagWithValue = optopt >= NY_TOOL_LONG_BASE || optopt == NY_TOOL_OPT_VERSION;
            *pstrError = bFlagWithValue
                             ? "option " + Offending(argv) + " takes no value"
                             : "unknown option '" +
                                   (optopt != 0 ? std::string("-") + static_cast<char>(optopt)
                                                : Offending(argv)) +
                                   "'";
            return NY_TOOL_BAD;
        }
        long lIndex = TableIndex(vOptions, iValue);
        if (lIndex >= 0) {
            if (!fnApply(static_cast<size_t>(lIndex), optarg, pstrError)) {
                return NY_TOOL_BAD;
            }
        } else if (enResult == NY_TOOL_RUN) {
            enResult = iValue == NY_TOOL_OPT_HELP ? NY_TOOL_HELP : NY_TOOL_VERSION;
        }
    }
    for (int i = optind; i < argc; ++i) {
        pvOperands->push_back(argv[i]);
    }
    return enResult;
}

std::string NyToolOptionHelp(const std::vector<BlkToolOptionTag>& vOptions) {
    std::vector<BlkToolOptionTag> vAll = vOptions;
    vAll.push_back({"help", 'h', nullptr, "print this help and exit"});
    vAll.push_back({"version", 0, nullptr, "print the name and version and exit"});
    std::string strHelp;
    for (const BlkToolOptionTag& option : vAll) {
        char szHead[64];
        snprintf(szHead, sizeof(szHead), "  %c%c%s--%s%s%s", option.chShort != 0 ? '-' : ' ',
                 option.chShort != 0 ? option.chShort : ' ', option.chShort != 0 ? ", " : "  ",
                 option.szLong, option.szValueName != nullptr ? " " : "",
                 option.szValueName != nullptr ? option.szValueName : "");
        char szLine[256];
        snprintf(szLine, sizeof(szLine), "%-26s %s\n", szHead, option.szHelp);
        strHelp += szLine;
    }
    return strHelp;
}

std::string NyToolVersionLine(const char* szTool) {
    return std::string(szTool) + " " + NY_VERSION_STRING + "\n";
}

int NyToolUsageError(const char* szTool, const std::string& strError) {
    fprintf(stderr, "%s: %s\nTry '%s --help'.\n", szTool, strError.c_str(), szTool);
    return NY_TOOL_EXIT_USAGE;
}
