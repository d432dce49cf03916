// The confirm and fingerprint commands: the on-device confirmation dialog and the fingerprint
// dialog, both confirm requests told apart by their kind.
#include "UictlCommand.h"
#include "uiblock/NyUiConfirmParam.h"

namespace {

// What a bare "ukey-uictl confirm" shows: the plain confirmation with half a minute to go.
constexpr uint32_t UICTL_CONFIRM_DEFAULT_KIND = 1;
constexpr uint32_t UICTL_CONFIRM_DEFAULT_TIMEOUT = 30;

const BlkUictlFieldOptionTag s_aConfirmFields[] = {
    {"--kind", UI_OFS_CONFIRM_KIND},
    {"--timeout", UI_OFS_CONFIRM_TIMEOUT},
    {"--attempts", UI_OFS_CONFIRM_ATTEMPTS},
};

// A flag sets a field to a fixed value.
bool ApplyFlag(uint32_t u4Offset, uint32_t u4Value, tagBlkUiParam* pReq) {
    NyUiParamSetU4(pReq, u4Offset, u4Value);
    return true;
}

}  // namespace

void UictlConfirmPreset(tagBlkUiParam* pReq) {
    NyUiParamSetU4(pReq, UI_OFS_CONFIRM_KIND, UICTL_CONFIRM_DEFAULT_KIND);
    NyUiParamSetU4(pReq, UI_OFS_CONFIRM_TIMEOUT, UICTL_CONFIRM_DEFAULT_TIMEOUT);
}

void UictlFingerprintPreset(tagBlkUiParam* pReq) {
    NyUiParamSetU4(pReq, UI_OFS_CONFIRM_KIND, UI_CTT_FINGERPRINT_VERIFY);
}

bool UictlConfirmOption(const std::string& strName, const std::string& strValue,
                        tagBlkUiParam* pReq, std::string* pstrError) {
    if (strName == "--closable") {
        return ApplyFlag(UI_OFS_CONFIRM_CLOSABLE, 1, pReq);
    }
    if (strName == "--detail") {
        uint32_t u4Detail = 0;
        if (!UictlParseHex32(strValue, &u4Detail)) {
            *pstrError = "bad value \"" + strValue + "\" for --detail (hexadecimal)";
            return false;
        }
        NyUiParamSetU4(pReq, UI_OFS_CONFIRM_DETAIL, u4Detail);
        return true;
    }
    return UictlApplyFieldOption(s_aConfirmFields,
                                 sizeof(s_aConfirmFields) / sizeof(s_aConfirmFields[0]), strName,
                                 strValue, pReq, pstrError);
}

bool UictlFingerprintOption(const std::string& strName, const std::string& /*strValue*/,
                            tagBlkUiParam* pReq, std::string* pstrError) {
    if (strName == "--enrol") {
        return ApplyFlag(UI_OFS_CONFIRM_KIND, UI_CTT_FINGERPRINT_ENROL, pReq);
    }
    if (strName == "--verify") {
        return ApplyFlag(UI_OFS_CONFIRM_KIND, UI_CTT_FINGERPRINT_VERIFY, pReq);
    }
    *pstrError = NY_UICTL_UNKNOWN_OPTION + strName;
    return false;
}
