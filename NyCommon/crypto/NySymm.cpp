#include "crypto/NySymm.h"

#include <cstring>

#include "crypto/NyCryptoProvider.h"
#include "crypto/NyEvpCipher.h"
#include "crypto/NySymmAlg.h"
#include "crypto/NySymmExtern.h"
#include "log/NyLog.h"

namespace {

// What the caller asked for, beyond the buffers.
struct BlkSymmCallTag {
    const BlkSymmAlgTag* pAlg;
    const uint8_t* pu1Key;
    const uint8_t* pu1Iv;
    bool bCbc;
    bool bDecrypt;
};

uint32_t RunExtern(const BlkSymmCallTag& call, const uint8_t* pu1In, uint32_t u4InLen,
                   uint8_t* pu1Out, uint32_t* pu4OutLen) {
    BlkSymmExternImplTag impl;
    if (!NySymmFindExternImpl(call.pAlg->u4AlgId, &impl) ||
        (call.bCbc && (impl.u4Flags & NY_SYMM_EXTERN_CAP_CBC) == 0)) {
        return NY_ERR_SYMM_NO_EXTERN;
    }
    return impl.pfnCipher(call.pAlg->u4AlgId, call.bCbc ? NY_TRUE : NY_FALSE,
                          call.bDecrypt ? NY_FALSE : NY_TRUE, call.pu1Key, call.pu1Iv, pu1In,
                          u4InLen, pu1Out, pu4OutLen);
}

uint32_t RunRc4(const BlkSymmCallTag& call, const uint8_t* pu1In, uint32_t u4InLen,
                uint8_t* pu1Out) {
    if (call.pu1Iv != nullptr) {
        return NY_ERR_SYMM_RC4_IV;
    }
    std::memmove(pu1Out, pu1In, u4InLen);
    const BlkEvpCipherJobTag job = {NyCryptoCipher(call.pAlg->szEcb),
                                    call.pu1Key,
                                    call.pAlg->u4KeySize,
                                    0,
                                    nullptr,
                                    !call.bDecrypt};
    return NyEvpCipherRun(job, pu1Out, u4InLen, pu1Out) ? NY_OK : NY_ERR_SYMM_PRIMITIVE;
}

// DES, AES and SM4 families and RC2 (which also sets its effective key bits).
uint32_t RunBlock(const BlkSymmCallTag& call, const uint8_t* pu1In, uint32_t u4InLen,
                  uint8_t* pu1Out) {
    if (call.bCbc && call.pu1Iv == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    const BlkSymmAlgTag& alg = *call.pAlg;
    const uint32_t u4Rc2Bits = alg.enFamily == SYMM_FAMILY_RC2 ? alg.u4KeySize * 8 : 0;
    const BlkEvpCipherJobTag job = {NyCryptoCipher(call.bCbc ? alg.szCbc : alg.szEcb),
                                    call.pu1Key,
                                    alg.u4KeySize,
                                    u4Rc2Bits,
                                    call.bCbc ? call.pu1Iv : nullptr,
                                    !call.bDecrypt};
    return NyEvpCipherRun(job, pu1In, u4InLen, pu1Out) ? NY_OK : NY_ERR_SYMM_PRIMITIVE;
}

uint32_t Dispatch(const BlkSymmCallTag& call, const uint8_t* pu1In, uint32_t u4InLen,
                  uint8_t* pu1Out, uint32_t* pu4OutLen) {
    switch (call.pAlg->enFamily) {
        case SYMM_FAMILY_EXTERN:
            return RunExtern(call, pu1In, u4InLen, pu1Out, pu4OutLen);
        case SYMM_FAMILY_RC4:
            return RunRc4(call, pu1In, u4InLen, pu1Out);
        case SYMM_FAMILY_BLOCK:
        case SYMM_FAMILY_RC2:
            return RunBlock(call, pu1In, u4InLen, pu1Out);
        case SYMM_FAMILY_NONE:
            break;
    }
    return NY_ERR_INVALID_ARGUMENT;
}

// Checks in a fixed order, then the size query, then the primitive.
uint32_t CheckAndRun(uint32_t u4AlgId, const BlkSymmCallTag& callIn, const uint8_t* pu1In,
                     uint32_t u4InLen, uint8_t* pu1Out, uint32_t* pu4OutLen) {
    BlkSymmCallTag call = callIn;
    call.pAlg = _CheckAlgId(u4AlgId);
    if (call.pAlg == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (pu1In == nullptr || call.pu1Key == nullptr || pu4OutLen == nullptr || u4InLen == 0) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (u4InLen % call.pAlg->u4BlockSize != 0) {
        return NY_ERR_SYMM_NOT_BLOCKS;
    }
    if (pu1Out == nullptr) {
        *pu4OutLen = u4InLen;
        return NY_OK;
    }
    if (*pu4OutLen < u4InLen) {
        *pu4OutLen = u4InLen;
        return NY_ERR_BUFFER_TOO_SMALL;
    }
    const uint32_t u4Result = Dispatch(call, pu1In, u4InLen, pu1Out, pu4OutLen);
    if (u4Result == NY_OK && call.pAlg->enFamily != SYMM_FAMILY_EXTERN) {
        *pu4OutLen = u4InLen;
    }
    return u4Result;
}

// The one worker behind the four entries.
uint32_t NySymmCipher(uint32_t u4AlgId, const uint8_t* pu1Key, const uint8_t* pu1Iv, bool bCbc,
                      bool bDecrypt, const uint8_t* pu1In, uint32_t u4InLen, uint8_t* pu1Out,
                      uint32_t* pu4OutLen) {
    const BlkSymmCallTag call = {nullptr, pu1Key, pu1Iv, bCbc, bDecrypt};
    const uint32_t u4Result = CheckAndRun(u4AlgId, call, pu1In, u4InLen, pu1Out, pu4OutLen);
    if (u4Result != NY_OK) {
        NY_LOG_RESULT(u4Result);
    }
    return u4Result;
}

}  // namespace

uint32_t NySymmEncEcb(uint32_t u4AlgId, const uint8_t* pu1Key, const uint8_t* pu1In,
                      uint32_t u4InLen, uint8_t* pu1Out, uint32_t* pu4OutLen) {
    return NySymmCipher(u4AlgId, pu1Key, nullptr, false, false, pu1In, u4InLen, pu1Out, pu4OutLen);
}

uint32_t NySymmDecEcb(uint32_t u4AlgId, const uint8_t* pu1Key, const uint8_t* pu1In,
                      uint32_t u4InLen, uint8_t* pu1Out, uint32_t* pu4OutLen) {
    return NySymmCipher(u4AlgId, pu1Key, nullptr, false, true, pu1In, u4InLen, pu1Out, pu4OutLen);
}

uint32_t NySymmEncCbc(uint32_t u4AlgId, const uint8_t* pu1Key, const uint8_t* pu1Iv,
                      const uint8_t* pu1In, uint32_t u4InLen, uint8_t* pu1Out,
                      uint32_t* pu4OutLen) {
    return NySymmCipher(u4AlgId, pu1Key, pu1Iv, true, false, pu1In, u4InLen, pu1Out, pu4OutLen);
}

uint32_t NySymmDecCbc(uint32_t u4AlgId, const uint8_t* pu1Key, const uint8_t* pu1Iv,
                      const uint8_t* pu1In, uint32_t u4InLen, uint8_t* pu1Out,
                      uint32_t* pu4OutLen) {
    return NySymmCipher(u4AlgId, pu1Key, pu1Iv, true, true, pu1In, u4InLen, pu1Out, pu4OutLen);
}
