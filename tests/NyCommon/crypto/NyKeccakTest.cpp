// The Keccak sponge: published empty-message digests with the original padding, and, with the
// FIPS 202 padding, agreement with libcrypto's SHA-3 at every length across two blocks.
#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <string>
#include <vector>

#include "crypto/NyKeccak.h"
#include "support/NyTestHex.h"

namespace {

TEST(Keccak, EmptyMessageGivesThePublishedDigests) {
    const std::pair<uint32_t, const char*> aVectors[] = {
        {28, "f71837502ba8e10837bdd8d365adb85591895602fc552b48b7390abd"},
        {32, "c5d2460186f7233c927e7db2dcc703c0e500b653ca82273b7bfad8045d85a470"},
        {48,
         "2c23146a63a29acf99e73b88f8c24eaa7dc60aa771780ccc006afbfa8fe2479b2dd2b21362337441ac12b5"
         "15911957ff"},
        {64,
         "0eab42de4c3ceb9235fc91acffe746b29c29a8c366b7c60e4e67c466f36a4304c00fa9caf9d87976ba469b"
         "cbe06713b435f091ef2769fb160cdab33d3670680e"},
    };
    for (const auto& v : aVectors) {
        uint8_t au1Digest[64] = {};
        ASSERT_TRUE(NyKeccakDigest(NY_KECCAK_PAD_ORIGINAL, v.first, nullptr, 0, au1Digest));
        EXPECT_EQ(NyTestToHex(au1Digest, v.first), v.second);
    }
    uint8_t au1Digest[64];
    EXPECT_FALSE(NyKeccakDigest(NY_KECCAK_PAD_ORIGINAL, 20, nullptr, 0, au1Digest));
}

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
}

}  // namespace
