// Hash facade: published digests for every identifier NyHashData takes, and its refusals; the
// Keccak sponge with the FIPS 202 padding against libcrypto's SHA-3.
#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <cstring>
#include <string>
#include <vector>

#include "crypto/NyHash.h"
#include "crypto/NyKeccak.h"
#include "support/NyTestHex.h"

namespace {

const char kAbc[] = "abc";

// Sources: RFC 1321, FIPS 180 (SHA-1 over its two-block message), GB/T 32905, the RIPEMD-160
// reference, FIPS 202, and the original Keccak submission's answers.
const struct {
    uint32_t u4AlgId;
    const char* szMessage;
    const char* szDigest;
} kVectors[] = {
    {NY_HASH_MD5, kAbc, "900150983cd24fb0d6963f7d28e17f72"},
    {NY_HASH_SHA1, "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
     "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
    {NY_HASH_SHA256, kAbc, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
    {NY_HASH_SHA384, kAbc,
     "cb00753f45a35e8bb5a03d699ac65007272c32ab0eded1631a8b605a43ff5bed8086072ba1e7cc2358baeca134c"
     "825a7"},
    {NY_HASH_SHA512, kAbc,
     "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a2192992a274fc1a836ba3c23a3f"
     "eebbd454d4423643ce80e2a9ac94fa54ca49f"},
    {NY_HASH_SM3, kAbc, "66c7f0f462eeedd9d1f2d46bdc10e4e24167c4875cf2f7a2297da02b8f4ba8e0"},
    {NY_HASH_RIPEMD160, kAbc, "8eb208f7e05d987a9b044a8e98c6b087f15a0bfc"},
    {NY_HASH_SHA3_224, kAbc, "e642824c3f8cf24ad09234ee7d3c766fc9a3a5168d0c94ad73b46fdf"},
    {NY_HASH_SHA3_256, kAbc, "3a985da74fe225b2045c172d6bd390bd855f086e3e9d525b46bfe24511431532"},
    {NY_HASH_SHA3_384, kAbc,
     "ec01498288516fc926459f58e2c6ad8df9b473cb0fc08c2596da7cf0e49be4b298d88cea927ac7f539f1edf2283"
     "76d25"},
    {NY_HASH_SHA3_512, kAbc,
     "b751850b1a57168a5693cd924b6b096e08f621827444f70d884f5d0240d2712e10e116e9192af3c91a7ec57647e"
     "3934057340b4cf408d5a56592f8274eec53f0"},
    {NY_HASH_KECCAK_224, kAbc, "c30411768506ebe1c2871b1ee2e87d38df342317300a9b97a95ec6a8"},
    {NY_HASH_KECCAK_256, "The quick brown fox jumps over the lazy dog",
     "4d741b6f1eb29cb2a9b9911c82f56fa8d73b04959d3d9d222895df6c0b28aa15"},
    {NY_HASH_KECCAK_384, kAbc,
     "f7df1165f033337be098e7d288ad6a2f74409d7a60b49c36642218de161b1f99f8c681e4afaf31a34db29fb763e"
     "3c28e"},
    {NY_HASH_KECCAK_512, kAbc,
     "18587dc2ea106b9a1563e32b3312421ca164c7f1f07bc922a9c83d77cea3a1e5d0c69910739025372dc14ac9642"
     "629379540c17e2a65b19d77aa511a9d00bb96"},
};

TEST(HashData, DigestsToThePublishedValuesAndRefusesWithZero) {
    for (const auto& v : kVectors) {
        std::vector<uint8_t> vDigest(NY_HASH_MAX_DIGEST + 1, 0xCC);
        const uint32_t u4Len = NyHashData(v.u4AlgId, reinterpret_cast<const uint8_t*>(v.szMessage),
                                          uint32_t(strlen(v.szMessage)), vDigest.data());
        ASSERT_LE(u4Len, NY_HASH_MAX_DIGEST);
        EXPECT_EQ(NyTestToHex(vDigest.data(), u4Len), v.szDigest) << std::hex << v.u4AlgId;
        EXPECT_EQ(vDigest[u4Len], 0xCC) << std::hex << v.u4AlgId;
    }
    // Refusals return zero and write nothing.
    const uint8_t au1Data[3] = {'a', 'b', 'c'};
    std::vector<uint8_t> vDigest(NY_HASH_MAX_DIGEST, 0xCC);
    for (uint32_t u4AlgId :
         {uint32_t(NY_HASH_MD5_SHA1), uint32_t(NY_HASH_CUSTOM), 0x80000000u, 0x80000011u}) {
        EXPECT_EQ(NyHashData(u4AlgId, au1Data, 3, vDigest.data()), 0u) << std::hex << u4AlgId;
    }
    EXPECT_EQ(NyHashData(NY_HASH_SHA1, au1Data, 0, vDigest.data()), 0u);
    EXPECT_EQ(NyHashData(NY_HASH_SHA1, nullptr, 3, vDigest.data()), 0u);
    EXPECT_EQ(NyHashData(NY_HASH_SHA1, au1Data, 3, nullptr), 0u);
    EXPECT_EQ(vDigest, std::vector<uint8_t>(NY_HASH_MAX_DIGEST, 0xCC));
}

// The SHA-3 padding agrees with libcrypto at every length across two blocks (the original
// padding is pinned by the published vectors above).
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
