// Triple-DES protection of a UI block's payload, in place, under the key derived from its seed.
#include "crypto/NySymm.h"
#include "log/NyLog.h"
#include "runtime/NySafe.h"
#include "uiblock/NyTripleDesKey.h"
#include "uiblock/NyUiParam.h"

namespace {

// Enciphers or deciphers bytes 312 to 3415 through a scratch buffer, so that a failure leaves
// the block as it was; the flag changes only on success. Key and scratch are wiped on every
// path.
uint32_t EncOrDecUiParam(tagBlkUiParam* pParam, bool bEncrypt) {
    uint8_t au1Key[NY_TDES_KEY_SIZE];
    int32_t i4KeyLen = NY_TDES_KEY_SIZE;
    if (!NyTripleDesDeriveKey(pParam->au1KeySeed, NY_UI_KEY_SEED_SIZE, au1Key, &i4KeyLen)) {
        NY_LOG(LOG_ERROR, "EncOrDecUiParam()-> gen key failed");
        return NY_ERR_BAD_ARGUMENT;
    }
    uint8_t au1Scratch[NY_UI_PROTECTED_SIZE];
    uint32_t u4OutLen = sizeof(au1Scratch);
    uint8_t* pu1Region = NyUiParamBytes(pParam, NY_UI_PROTECTED_OFFSET);
    const uint32_t u4Result = bEncrypt ? NySymmEncEcb(NY_SYMM_TDES_3KEY, au1Key, pu1Region,
                                                      NY_UI_PROTECTED_SIZE, au1Scratch, &u4OutLen)
                                       : NySymmDecEcb(NY_SYMM_TDES_3KEY, au1Key, pu1Region,
                                                      NY_UI_PROTECTED_SIZE, au1Scratch, &u4OutLen);
    if (u4Result != NY_OK) {
        // The encrypt path logs the same text on purpose: readers of the log match on it.
        NY_LOG(LOG_ERROR, "EncOrDecUiParam() dec failed u4Result = %08x", u4Result);
    } else {
        NyMemCopy(pu1Region, NY_UI_PROTECTED_SIZE, au1Scratch, NY_UI_PROTECTED_SIZE);
        pParam->u4Protected = bEncrypt ? UI_PARAM_PROTECTED : UI_PARAM_CLEAR;
    }
    NyMemSafeClear(au1Scratch, sizeof(au1Scratch));
    NyMemSafeClear(au1Key, sizeof(au1Key));
    return u4Result;
}

}  // namespace

uint32_t UiParamDec(tagBlkUiParam* pParam) {
    if (pParam == nullptr) {
        return NY_ERR_BAD_ARGUMENT;
    }
    if (pParam->u4Protected == UI_PARAM_CLEAR) {
        return NY_OK;
    }
    return EncOrDecUiParam(pParam, false);
}

uint32_t UiParamEnc(tagBlkUiParam* pParam) {
    if (pParam == nullptr) {
        return NY_ERR_BAD_ARGUMENT;
    }
    if (pParam->u4Protected == UI_PARAM_PROTECTED) {
        return NY_OK;
    }
    return EncOrDecUiParam(pParam, true);
}
