// The Keccak sponge with the FIPS 202 padding agrees with libcrypto's SHA-3 at every length
// across two blocks (the original padding is pinned by the hash facade's published vectors).
#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <string>
#include <vector>

#include "crypto/NyKeccak.h"
#include "support/NyTestHex.h"

namespace {

std::string LibcryptoSha3(uint32_t u4DigestLen, const std::vector<uint8_t>& vData) {
    EVP_MD* pMd =
        EVP_MD_fetch(nullptr, ("SHA3-" + std::to_string(u4DigestLen * 8)).c_str(), nullptr);
    uint8_t au1Digest[64] = {};
    unsigned int u4Len = 0;
    const bool bOk = EVP_Digest(vData.data(), vData.size(), au1Digest, &u4Len, pMd, nullptr) == 1;
    EVP_MD_free(pMd);
    return bOk ? NyTestToHex(au1Digest, u4Len) : "libcrypto failed";
}

TEST(Keccak, Sha3PaddingAgreesWithLibcryptoAtEveryLengthAcrossTwoBlocks) {
    for (uint32_t u4DigestLen : {28u, 32u, 48u, 64u}) {
        const uint32_t u4Rate = 200 - 2 * u4DigestLen;
        for (uint32_t u4Len = 0; u4Len <= 2 * u4Rate + 1; ++u4Len) {
            std::vector<uint8_t> vData(u4Len);
            for (uint32_t i = 0; i < u4Len; ++i) {
                vData[i] = uint8_t(i * 31 + u4Len);
            }
            uint8_t au1Digest[64] = {};
            ASSERT_TRUE(
                NyKeccakDigest(NY_KECCAK_PAD_SHA3, u4DigestLen, vData.data(), u4Len, au1Digest));
            ASSERT_EQ(NyTestToHex(au1Digest, u4DigestLen), LibcryptoSha3(u4DigestLen, vData))
                << "digest " << u4DigestLen << " length " << u4Len;
        }
    }
    uint8_t au1Digest[64];
    EXPECT_FALSE(NyKeccakDigest(NY_KECCAK_PAD_ORIGINAL, 20, nullptr, 0, au1Digest));
}

}  // namespace
