#include "crypto/NyEvpCipher.h"

#include <openssl/core_names.h>
#include <openssl/params.h>

#include <memory>

namespace {

struct CtxFree {
    void operator()(EVP_CIPHER_CTX* p) const { EVP_CIPHER_CTX_free(p); }
};
using CtxPtr = std::unique_ptr<EVP_CIPHER_CTX, CtxFree>;

// EVP lengths are ints: long inputs go through in slices.
constexpr uint32_t kSlice = 1u << 30;

bool InitContext(EVP_CIPHER_CTX* pCtx, const BlkEvpCipherJobTag& job) {
    const int iEnc = job.bEncrypt ? 1 : 0;
    if (job.u4Rc2KeyBits != 0) {
        size_t uKeyLen = job.u4KeyLen;
        size_t uKeyBits = job.u4Rc2KeyBits;
        OSSL_PARAM aParams[] = {
            OSSL_PARAM_construct_size_t(OSSL_CIPHER_PARAM_KEYLEN, &uKeyLen),
            OSSL_PARAM_construct_size_t(OSSL_CIPHER_PARAM_RC2_KEYBITS, &uKeyBits),
            OSSL_PARAM_construct_end()};
        if (EVP_CipherInit_ex2(pCtx, job.pCipher, nullptr, nullptr, iEnc, aParams) != 1) {
            return false;
        }
        return EVP_CipherInit_ex2(pCtx, nullptr, job.pu1Key, job.pu1Iv, iEnc, nullptr) == 1;
    }
    return EVP_CipherInit_ex2(pCtx, job.pCipher, job.pu1Key, job.pu1Iv, iEnc, nullptr) == 1;
}

}  // namespace

bool NyEvpCipherRun(const BlkEvpCipherJobTag& job, const uint8_t* pu1In, uint32_t u4InLen,
                    uint8_t* pu1Out) {
    CtxPtr ctx(EVP_CIPHER_CTX_new());
    if (!ctx || job.pCipher == nullptr || !InitContext(ctx.get(), job) ||
        EVP_CIPHER_CTX_set_padding(ctx.get(), 0) != 1) {
        return false;
    }
    uint32_t u4Done = 0;
    while (u4Done < u4InLen) {
        const uint32_t u4Part = (u4InLen - u4Done < kSlice) ? u4InLen - u4Done : kSlice;
        int iOut = 0;
        if (EVP_CipherUpdate(ctx.get(), pu1Out + u4Done, &iOut, pu1In + u4Done,
                             static_cast<int>(u4Part)) != 1 ||
            static_cast<uint32_t>(iOut) != u4Part) {
            return false;
        }
        u4Done += u4Part;
    }
    int iFinal = 0;
    return EVP_CipherFinal_ex(ctx.get(), pu1Out + u4Done, &iFinal) == 1 && iFinal == 0;
}
