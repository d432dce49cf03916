#include "UkeyCfgArgs.h"

#include <cstring>
#include <utility>
#include <vector>

#include "NyToolArgs.h"
#include "config/NyCfgLang.h"

namespace {

const char cg_szUsageHead[] =
    "usage: ukey-cfg get ID [--lang zh-CN|en|zh-TW] [--raw]\n"
    "       ukey-cfg list [--lang zh-CN|en|zh-TW]\n"
    "       ukey-cfg info\n"
    "Shows entries of the built-in configuration image. ID is a configuration id such as\n"
    "0x0021007E. Texts are shown in Simplified Chinese unless --lang says otherwise, with their\n"
    "references expanded unless --raw is given.\n"
    "\n";
const char cg_szUsageTail[] =
    "\n"
    "Exit status: 0 shown, 1 the entry could not be shown, 2 bad command line.\n";

// The options in the order of cg_vOptions.
enum EnUkeyCfgOption { OPT_LANG, OPT_RAW };
const std::vector<BlkToolOptionTag> cg_vOptions = {
    {"lang", 0, "LANG", "language of the texts: zh-CN (default), en or zh-TW"},
    {"raw", 0, nullptr, "get: show a text as stored, its references not expanded"},
};

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

// The command and its id from the operands; then whether the options given suit it.
bool UkeyCfgCheckCommand(const std::vector<std::string>& vOperands, bool bLang,
                         BlkUkeyCfgArgsTag* pArgs, std::string* pstrError) {
    if (vOperands.empty() || !UkeyCfgParseCommand(vOperands[0].c_str(), &pArgs->enCommand)) {
        *pstrError =
            vOperands.empty() ? "no command given" : "unknown command '" + vOperands[0] + "'";
        return false;
    }
    size_t cOperands = pArgs->enCommand == UKEY_CFG_GET ? 2 : 1;
    if (pArgs->enCommand == UKEY_CFG_GET &&
        (vOperands.size() < 2 || !UkeyCfgParseId(vOperands[1], &pArgs->u4Id))) {
        *pstrError = vOperands.size() < 2 ? "get needs an id"
                                          : "bad id '" + vOperands[1] +
                                                "' (expected hexadecimal such as 0x0021007E)";
    } else if (vOperands.size() > cOperands) {
        *pstrError = "unexpected argument '" + vOperands[cOperands] + "'";
    } else if (pArgs->bRaw && pArgs->enCommand != UKEY_CFG_GET) {
        *pstrError = "--raw is for get only";
    } else if (bLang && pArgs->enCommand == UKEY_CFG_INFO) {
        *pstrError = "info takes no --lang";
    } else {
        return true;
    }
    return false;
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

EnToolParse UkeyCfgParseArgs(int argc, char** argv, BlkUkeyCfgArgsTag* pArgs,
                             std::string* pstrError) {
    bool bLang = false;
    std::vector<std::string> vOperands;
    EnToolParse enParse = NyToolParseArgs(
        argc, argv, cg_vOptions,
        [&](size_t uIndex, const char* szValue, std::string* pstrOptionError) {
            if (uIndex == OPT_RAW) {
                return pArgs->bRaw = true;
            }
            bLang = true;
            if (!UkeyCfgParseLanguage(szValue, &pArgs->u4Language)) {
                *pstrOptionError = "--lang takes zh-CN, en or zh-TW";
                return false;
            }
            return true;
        },
        &vOperands, pstrError);
    if (enParse == NY_TOOL_RUN && !UkeyCfgCheckCommand(vOperands, bLang, pArgs, pstrError)) {
        return NY_TOOL_BAD;
    }
    return enParse;
}

std::string UkeyCfgUsage() {
    return cg_szUsageHead + NyToolOptionHelp(cg_vOptions) + cg_szUsageTail;
}
