#include "UkeyCfgArgs.h"

#include <cstring>
#include <utility>

#include "config/NyCfgLang.h"

const char g_szUkeyCfgUsage[] =
    "usage: ukey-cfg get ID [--lang zh-CN|en|zh-TW] [--raw]\n"
    "       ukey-cfg list [--lang zh-CN|en|zh-TW]\n"
    "       ukey-cfg info\n"
    "ID is a configuration id such as 0x0021007E. Texts are shown in Simplified Chinese\n"
    "unless --lang says otherwise, with their references expanded unless --raw is given.\n";

namespace {

// Looks szName up in a table of {name, value} pairs.
template <typename T, size_t N>
bool UkeyCfgLookup(const std::pair<const char*, T> (&aTable)[N], const char* szName, T* pValue) {
    for (const auto& entry : aTable) {
        if (strcmp(szName, entry.first) == 0) {
            *pValue = entry.second;
            return true;
        }
    }
    return false;
}

bool UkeyCfgParseLanguage(const char* szName, uint32_t* pu4Language) {
    static const std::pair<const char*, uint32_t> aLanguages[] = {
        {"zh-CN", NY_LANG_ZH_CN}, {"en", NY_LANG_EN}, {"zh-TW", NY_LANG_ZH_TW}};
    return UkeyCfgLookup(aLanguages, szName, pu4Language);
}

bool UkeyCfgParseCommand(const char* szName, EnUkeyCfgCommand* penCommand) {
    static const std::pair<const char*, EnUkeyCfgCommand> aCommands[] = {
        {"get", UKEY_CFG_GET}, {"list", UKEY_CFG_LIST}, {"info", UKEY_CFG_INFO}};
    return UkeyCfgLookup(aCommands, szName, penCommand);
}

// Options after the command (and its id); each command accepts only its own.
bool UkeyCfgParseOptions(int argc, const char* const* argv, int iFirst, BlkUkeyCfgArgsTag* pArgs,
                         std::string* pstrError) {
    for (int i = iFirst; i < argc; ++i) {
        std::string strOption = argv[i];
        bool bTakesLanguage = pArgs->enCommand != UKEY_CFG_INFO;
        if (strOption == "--lang" && bTakesLanguage) {
            if (i + 1 >= argc || !UkeyCfgParseLanguage(argv[i + 1], &pArgs->u4Language)) {
                *pstrError = "--lang takes zh-CN, en or zh-TW";
                return false;
            }
            ++i;
        } else if (strOption == "--raw" && pArgs->enCommand == UKEY_CFG_GET) {
            pArgs->bRaw = true;
        } else {
            *pstrError = "unexpected argument '" + strOption + "'";
            return false;
        }
    }
    return true;
}

}  // namespace

bool UkeyCfgParseId(const std::string& strText, uint32_t* pu4Id) {
    std::string strDigits = strText;
    if (strDigits.size() > 2 && strDigits[0] == '0' &&
        (strDigits[1] == 'x' || strDigits[1] == 'X')) {
        strDigits = strDigits.substr(2);
    }
    if (strDigits.empty() || strDigits.size() > 8 ||
        strDigits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        return false;
    }
    *pu4Id = static_cast<uint32_t>(std::stoul(strDigits, nullptr, 16));
    return true;
}

bool UkeyCfgParseArgs(int argc, const char* const* argv, BlkUkeyCfgArgsTag* pArgs,
                      std::string* pstrError) {
    if (argc < 2 || !UkeyCfgParseCommand(argv[1], &pArgs->enCommand)) {
        *pstrError =
            argc < 2 ? "no command given" : std::string("unknown command '") + argv[1] + "'";
        return false;
    }
    int iFirstOption = 2;
    if (pArgs->enCommand == UKEY_CFG_GET) {
        if (argc < 3 || !UkeyCfgParseId(argv[2], &pArgs->u4Id)) {
            *pstrError = argc < 3 ? "get needs an id"
                                  : std::string("bad id '") + argv[2] +
                                        "' (expected hexadecimal such as 0x0021007E)";
            return false;
        }
        iFirstOption = 3;
    }
    return UkeyCfgParseOptions(argc, argv, iFirstOption, pArgs, pstrError);
}
