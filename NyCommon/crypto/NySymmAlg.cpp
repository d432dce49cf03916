#include "crypto/NySymmAlg.h"

#include "crypto/NySymm.h"

namespace {

const BlkSymmAlgTag m_aSymmAlgs[] = {
    {NY_SYMM_DES, 8, 8, SYMM_FAMILY_BLOCK, "DES-ECB", "DES-CBC"},
    {NY_SYMM_TDES_2KEY, 16, 8, SYMM_FAMILY_BLOCK, "DES-EDE-ECB", "DES-EDE-CBC"},
    {NY_SYMM_TDES_3KEY, 24, 8, SYMM_FAMILY_BLOCK, "DES-EDE3-ECB", "DES-EDE3-CBC"},
    {NY_SYMM_AES128, 16, 16, SYMM_FAMILY_BLOCK, "AES-128-ECB", "AES-128-CBC"},
    {NY_SYMM_AES192, 24, 16, SYMM_FAMILY_BLOCK, "AES-192-ECB", "AES-192-CBC"},
    {NY_SYMM_AES256, 32, 16, SYMM_FAMILY_BLOCK, "AES-256-ECB", "AES-256-CBC"},
    {NY_SYMM_EXTERN_1, 16, 16, SYMM_FAMILY_EXTERN, nullptr, nullptr},
    {NY_SYMM_EXTERN_2, 16, 16, SYMM_FAMILY_EXTERN, nullptr, nullptr},
    {NY_SYMM_SM4, 16, 16, SYMM_FAMILY_BLOCK, "SM4-ECB", "SM4-CBC"},
    {NY_SYMM_RC4, 16, 1, SYMM_FAMILY_RC4, "RC4", "RC4"},
    {NY_SYMM_UNSUPPORTED_5, 5, 1, SYMM_FAMILY_NONE, nullptr, nullptr},
    {NY_SYMM_RC2_128, 16, 8, SYMM_FAMILY_RC2, "RC2-ECB", "RC2-CBC"},
    {NY_SYMM_RC2_64, 8, 8, SYMM_FAMILY_RC2, "RC2-ECB", "RC2-CBC"},
    {NY_SYMM_RC2_40, 5, 8, SYMM_FAMILY_RC2, "RC2-ECB", "RC2-CBC"},
};

}  // namespace

const BlkSymmAlgTag* _CheckAlgId(uint32_t u4AlgId) {
    for (const BlkSymmAlgTag& alg : m_aSymmAlgs) {
        if (alg.u4AlgId == u4AlgId) {
            return &alg;
        }
    }
    return nullptr;
}

uint32_t NySymmGetInfo(uint32_t u4AlgId, uint32_t* pu4BlockSize, uint32_t* pu4KeySize) {
    const BlkSymmAlgTag* pAlg = _CheckAlgId(u4AlgId);
    if (pAlg == nullptr || pu4BlockSize == nullptr || pu4KeySize == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    *pu4BlockSize = pAlg->u4BlockSize;
    *pu4KeySize = pAlg->u4KeySize;
    return NY_OK;
}
