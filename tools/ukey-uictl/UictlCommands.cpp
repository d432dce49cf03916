#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "UictlCommand.h"

const BlkUictlCommandTag g_aUictlCommands[] = {
    {"raw", "send a block given field by field; the answer includes the whole block",
     "--cmd TYPE  --mode MODE  --u32 OFFSET=VALUE (repeatable)", 0, UictlRawOption, true},
    // Verify and new-PIN requests carry the same payload (lengths, kind).
    {"verify", "ask for a PIN; the answer carries it and its length",
     "--min N  --max N (0: no limit)  --kind N (2: administrator)", UI_CMD_VERIFY_PIN,
     UictlNewPinOption, false},
    {"message", "show the message for a result code, or a success notice (id 0)",
     "--id HEX  --param N", UI_CMD_MESSAGE, UictlMessageOption, false},
    {"change-pin", "ask for the current PIN and a new one, checked against the PIN policy",
     "--min N  --max N  --kind N (2: administrator)  --compulsory (no Cancel, no close)",
     UI_CMD_CHANGE_PIN, UictlChangePinOption, false},
    {"new-pin", "ask for a new PIN twice", "--min N  --max N  --kind N (2: administrator)",
     UI_CMD_GET_PIN_CONFIRM, UictlNewPinOption, false},
    {"unblock", "ask for the administrator PIN and a new user PIN", "--min N  --max N",
     UI_CMD_UNBLOCK, UictlUnblockOption, false},
    {"label", "ask for a new device name, and a PIN when PIN lengths are given",
     "--name-min N  --name-max N  --pin-min N  --pin-max N", UI_CMD_CHANGE_LABEL, UictlLabelOption,
     false},
    {"confirm", "ask for a confirmation on the device, counting down its time-out",
     "--kind N (default 1)  --timeout S (seconds, default 30)  --closable  --detail HEX  "
     "--attempts N",
     UI_CMD_CONFIRM, UictlConfirmOption, false},
    {"fingerprint", "guide a fingerprint enrolment or verification on the device",
     "--enrol | --verify (default)", UI_CMD_CONFIRM, UictlFingerprintOption, false},
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
