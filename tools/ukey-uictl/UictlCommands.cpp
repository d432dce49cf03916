#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "UictlCommand.h"

namespace {

// The subcommands' own options.
const BlkToolOptionTag s_aRawOptions[] = {
    {"cmd", 0, "TYPE", "command type"},
    {"mode", 0, "MODE", "mode field (1: asynchronous)"},
    {"u32", 0, "OFFSET=VALUE", "a 32-bit field of the block; repeatable"},
};
// The PIN dialogs' options: verify and new-pin take the first three (their requests carry the
// same payload), unblock the first two, change-pin all.
const BlkToolOptionTag s_aPinOptions[] = {
    {"min", 0, "N", "shortest PIN"},
    {"max", 0, "N", "longest PIN (0: no limit)"},
    {"kind", 0, "N", "2: the administrator's PIN"},
    {"compulsory", 0, nullptr, "change-pin: no Cancel, no close"},
};
const BlkToolOptionTag s_aMessageOptions[] = {
    {"message-id", 0, "HEX", "the message: a result code in hexadecimal, 0 for success"},
    {"param", 0, "N", "the message's parameter"},
};
const BlkToolOptionTag s_aLabelOptions[] = {
    {"name-min", 0, "N", "shortest name"},
    {"name-max", 0, "N", "longest name"},
    {"pin-min", 0, "N", "shortest PIN (with --pin-max: ask for the PIN too)"},
    {"pin-max", 0, "N", "longest PIN"},
};
const BlkToolOptionTag s_aConfirmOptions[] = {
    {"kind", 0, "N", "what to confirm (default 1)"},
    {"timeout", 0, "S", "the device's time-out: the countdown (default 30)"},
    {"closable", 0, nullptr, "the window may be closed"},
    {"detail", 0, "HEX", "detail value"},
    {"attempts", 0, "N", "attempts value"},
};
const BlkToolOptionTag s_aFingerprintOptions[] = {
    {"enrol", 0, nullptr, "guide an enrolment"},
    {"verify", 0, nullptr, "guide a verification (default)"},
};

}  // namespace

#define UICTL_OPTIONS(a) a, sizeof(a) / sizeof(a[0])

const BlkUictlCommandTag g_aUictlCommands[] = {
    {"raw", "send a block given field by field; the answer includes the whole block",
     UICTL_OPTIONS(s_aRawOptions), 0, UictlRawOption, true},
    {"verify", "ask for a PIN; the answer carries it and its length", s_aPinOptions, 3,
     UI_CMD_VERIFY_PIN, UictlNewPinOption, false},
    {"message", "show the message for a result code, or a success notice (id 0)",
     UICTL_OPTIONS(s_aMessageOptions), UI_CMD_MESSAGE, UictlMessageOption, false},
    {"change-pin", "ask for the current PIN and a new one, checked against the PIN policy",
     UICTL_OPTIONS(s_aPinOptions), UI_CMD_CHANGE_PIN, UictlChangePinOption, false},
    {"new-pin", "ask for a new PIN twice", s_aPinOptions, 3, UI_CMD_GET_PIN_CONFIRM,
     UictlNewPinOption, false},
    {"unblock", "ask for the administrator PIN and a new user PIN", s_aPinOptions, 2,
     UI_CMD_UNBLOCK, UictlUnblockOption, false},
    {"label", "ask for a new device name, and a PIN when PIN lengths are given",
     UICTL_OPTIONS(s_aLabelOptions), UI_CMD_CHANGE_LABEL, UictlLabelOption, false},
    {"confirm", "ask for a confirmation on the device; ends when its countdown has run out",
     UICTL_OPTIONS(s_aConfirmOptions), UI_CMD_CONFIRM, UictlConfirmOption, false},
    {"fingerprint", "guide a fingerprint enrolment or verification on the device",
     UICTL_OPTIONS(s_aFingerprintOptions), UI_CMD_CONFIRM, UictlFingerprintOption, false},
};
const size_t g_cUictlCommands = sizeof(g_aUictlCommands) / sizeof(g_aUictlCommands[0]);

namespace {

struct BlkUictlPresetTag {
    const char* szName;
    PFN_UICTL_PRESET pfnPreset;
};

const BlkUictlPresetTag s_aUictlPresets[] = {
    {"confirm", UictlConfirmPreset},
    {"fingerprint", UictlFingerprintPreset},
};

}  // namespace

void UictlPresetRequest(const BlkUictlCommandTag* pCommand, tagBlkUiParam* pReq) {
    for (const BlkUictlPresetTag& preset : s_aUictlPresets) {
        if (strcmp(preset.szName, pCommand->szName) == 0) {
            preset.pfnPreset(pReq);
        }
    }
}

const BlkUictlCommandTag* UictlFindCommand(const std::string& strName) {
    for (size_t i = 0; i < g_cUictlCommands; ++i) {
        if (strName == g_aUictlCommands[i].szName) {
            return &g_aUictlCommands[i];
        }
    }
    return nullptr;
}

bool UictlApplyFieldOption(const BlkUictlFieldOptionTag* aFields, size_t cFields,
                           const std::string& strName, const std::string& strValue,
                           tagBlkUiParam* pReq, std::string* pstrError) {
    for (size_t i = 0; i < cFields; ++i) {
        if (strName != aFields[i].szName) {
            continue;
        }
        uint32_t u4Value = 0;
        if (!UictlParseU32(strValue, &u4Value)) {
            *pstrError = "bad value \"" + strValue + "\" for " + strName;
            return false;
        }
        NyUiParamSetU4(pReq, aFields[i].u4Offset, u4Value);
        return true;
    }
    *pstrError = NY_UICTL_UNKNOWN_OPTION + strName;
    return false;
}

bool UictlParseU32(const std::string& strText, uint32_t* pu4Value) {
    if (strText.empty() || strText[0] == '-' || strText[0] == '+') {
        return false;
    }
    char* pEnd = nullptr;
    errno = 0;
    unsigned long long u8Value = strtoull(strText.c_str(), &pEnd, 0);
    if (errno != 0 || *pEnd != '\0' || u8Value > 0xFFFFFFFFull) {
        return false;
    }
    *pu4Value = static_cast<uint32_t>(u8Value);
    return true;
}

bool UictlParseHex32(const std::string& strText, uint32_t* pu4Value) {
    std::string strDigits = strText.compare(0, 2, "0x") == 0 || strText.compare(0, 2, "0X") == 0
                                ? strText.substr(2)
                                : strText;
    if (strDigits.empty() || strDigits.size() > 8 ||
        strDigits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        return false;
    }
    *pu4Value = static_cast<uint32_t>(strtoul(strDigits.c_str(), nullptr, 16));
    return true;
}

bool UictlParseOffsetValue(const std::string& strText, uint32_t* pu4Offset, uint32_t* pu4Value) {
    size_t nEq = strText.find('=');
    return nEq != std::string::npos && UictlParseU32(strText.substr(0, nEq), pu4Offset) &&
           UictlParseU32(strText.substr(nEq + 1), pu4Value);
}
