// The cipher facade: known answers, argument checks in their order, the size query, the special
// cases and the external block ciphers behind identifiers 256 and 512.
#include <gtest/gtest.h>

#include <vector>

#include "crypto/NySymm.h"
#include "support/NyTestHex.h"

namespace {

const uint8_t kKey[32] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17};
const uint8_t kIv[16] = {0xA5};
constexpr uint32_t kInvalid = NY_ERR_INVALID_ARGUMENT;
constexpr uint32_t kNotBlocks = NY_ERR_SYMM_NOT_BLOCKS;
constexpr uint32_t kTooSmall = NY_ERR_BUFFER_TOO_SMALL;

// Which arguments a row passes as null, whether it calls the CBC entry (without an IV unless
// IV is set) or the ECB one.
enum : uint32_t { CBC = 1, NO_KEY = 2, NO_IN = 4, NO_LEN = 8, NO_OUT = 16, IV = 32 };

// Rows: an unknown identifier, also before missing arguments; missing key, input, length; zero
// length; a partial block, also before a size query; size queries, also of a refused
// identifier; a short output; a refused identifier; CBC without an IV; RC4 needs no IV and
// refuses one; success into a larger output.
TEST(SymmChecks, ReturnsTheCodeOfTheFirstFailingCheckAndWritesOnlyOnSuccess) {
    // clang-format off
    const struct {
        uint32_t u4AlgId, u4Flags, u4InLen, u4Capacity, u4Expected, u4ExpectedLen;
    } aCases[] = {
        {3, 0, 16, 16, kInvalid, 16}, {64, NO_KEY | NO_IN | NO_OUT, 0, 0, kInvalid, 0},
        {NY_SYMM_AES128, NO_KEY, 16, 16, kInvalid, 16},
        {NY_SYMM_AES128, NO_IN, 16, 16, kInvalid, 16},
        {NY_SYMM_AES128, NO_LEN, 16, 16, kInvalid, 16}, {NY_SYMM_AES128, 0, 0, 16, kInvalid, 16},
        {NY_SYMM_TDES_3KEY, 0, 3100, 3104, kNotBlocks, 3104},
        {NY_SYMM_RC2_40, NO_OUT, 12, 0, kNotBlocks, 0},
        {NY_SYMM_TDES_3KEY, NO_OUT, 3104, 0, 0, 3104},
        {NY_SYMM_UNSUPPORTED_5, NO_OUT, 7, 0, 0, 7}, {NY_SYMM_AES256, 0, 48, 32, kTooSmall, 48},
        {NY_SYMM_UNSUPPORTED_5, 0, 5, 5, kInvalid, 5}, {NY_SYMM_AES128, CBC, 16, 16, kInvalid, 16},
        {NY_SYMM_RC4, CBC, 7, 7, 0, 7}, {NY_SYMM_RC4, CBC | IV, 5, 5, NY_ERR_SYMM_RC4_IV, 5},
        {NY_SYMM_TDES_3KEY, 0, 3104, 4000, 0, 3104}};
    // clang-format on
    for (const auto& c : aCases) {
        std::vector<uint8_t> vIn(c.u4InLen + 1, 0x33), vOut(c.u4Capacity + 1, 0xEE);
        uint32_t u4Len = c.u4Capacity;
        const uint8_t* pu1Key = (c.u4Flags & NO_KEY) ? nullptr : kKey;
        const uint8_t* pu1In = (c.u4Flags & NO_IN) ? nullptr : vIn.data();
        uint8_t* pu1Out = (c.u4Flags & NO_OUT) ? nullptr : vOut.data();
        uint32_t* pu4Len = (c.u4Flags & NO_LEN) ? nullptr : &u4Len;
        EXPECT_EQ((c.u4Flags & CBC)
                      ? NySymmEncCbc(c.u4AlgId, pu1Key, (c.u4Flags & IV) ? kIv : nullptr, pu1In,
                                     c.u4InLen, pu1Out, pu4Len)
                      : NySymmEncEcb(c.u4AlgId, pu1Key, pu1In, c.u4InLen, pu1Out, pu4Len),
                  c.u4Expected)
            << c.u4AlgId << " flags " << c.u4Flags << " length " << c.u4InLen;
        EXPECT_EQ(u4Len, c.u4ExpectedLen) << c.u4AlgId << " length " << c.u4InLen;
        const bool bWritten = vOut != std::vector<uint8_t>(c.u4Capacity + 1, 0xEE);
        EXPECT_EQ(bWritten, c.u4Expected == NY_OK && pu1Out != nullptr) << c.u4AlgId;
        EXPECT_EQ(vOut[c.u4Capacity], 0xEE) << "wrote past the output";
    }
}

TEST(SymmChecks, SizeQueriesCheckTheirArguments) {
    uint32_t u4Block = 0, u4Key = 0;
    ASSERT_EQ(NySymmGetInfo(NY_SYMM_UNSUPPORTED_5, &u4Block, &u4Key), NY_OK);
    EXPECT_EQ(u4Block, 1u);
    EXPECT_EQ(NySymmGetInfo(64, &u4Block, &u4Key), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(NySymmGetInfo(8, nullptr, &u4Key), NY_ERR_INVALID_ARGUMENT);
}

// One known answer per cipher identifier (the facade's mapping onto libcrypto: algorithm, mode,
// key size). Sources: FIPS 81 (DES, CBC), SP 800-67 (3DES), FIPS 197 C.1-C.2 and SP 800-38A
// F.2.5 (AES, CBC), GB/T 32907 (SM4), RFC 6229 (RC4) and
// RFC 2268 (RC2).
struct SymmVector {
    uint32_t u4AlgId, u4Block;
    const char* szKey;
    const char* szIv;  // empty: ECB (or the RC4 stream)
    const char* szPlain;
    const char* szCipher;
};

const SymmVector kVectors[] = {
    {NY_SYMM_DES, 8, "0123456789abcdef", "1234567890abcdef",
     "4e6f77206973207468652074696d6520666f7220616c6c20",
     "e5c7cdde872bf27c43e934008c389c0f683788499a7c05f6"},
    {NY_SYMM_TDES_3KEY, 8, "0123456789ABCDEF23456789ABCDEF01456789ABCDEF0123", "",
     "54686520717566636B2062726F776E20666F78206A756D70",
     "A826FD8CE53B855FCCE21C8112256FE668D5C05DD9B6B900"},
    {NY_SYMM_AES128, 16, "000102030405060708090a0b0c0d0e0f", "", "00112233445566778899aabbccddeeff",
     "69c4e0d86a7b0430d8cdb78070b4c55a"},
    {NY_SYMM_AES192, 16, "000102030405060708090a0b0c0d0e0f1011121314151617", "",
     "00112233445566778899aabbccddeeff", "dda97ca4864cdfe06eaf70a0ec0d7191"},
    {NY_SYMM_AES256, 16, "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4",
     "000102030405060708090a0b0c0d0e0f", "6bc1bee22e409f96e93d7e117393172a",
     "f58c4c04d6e5f1ba779eabfb5f7bfbd6"},
    {NY_SYMM_SM4, 16, "0123456789abcdeffedcba9876543210", "", "0123456789abcdeffedcba9876543210",
     "681edf34d206965e86b3e94f536e4246"},
    {NY_SYMM_RC4, 1, "0102030405060708090a0b0c0d0e0f10", "", "00000000000000000000000000000000",
     "9ac7cc9a609d1ef7b2932899cde41b97"},
    {NY_SYMM_RC2_128, 8, "88bca90e90875a7f0f79c384627bafb2", "", "0000000000000000",
     "2269552ab0f85ca6"},
    {NY_SYMM_RC2_64, 8, "3000000000000000", "", "1000000000000001", "30649edf9be7d2c2"},
    // No published vector has a 40-bit effective key; this answer comes from a separate
    // 40-bit RC2 definition (libcrypto's fixed "RC2-40-CBC" cipher, zero IV, one block).
    {NY_SYMM_RC2_40, 8, "88bca90e90", "", "0000000000000000", "116a3d8017ae1fd8"},
};

std::vector<uint8_t> Cipher(bool bEncrypt, const SymmVector& v, const std::vector<uint8_t>& vIn) {
    const std::vector<uint8_t> vKey = NyTestFromHex(v.szKey), vIv = NyTestFromHex(v.szIv);
    // Decryption works in place, as callers do on the UI block's protected region.
    std::vector<uint8_t> vOut = vIn;
    const uint8_t* pu1In = bEncrypt ? vIn.data() : vOut.data();
    uint32_t u4Len = uint32_t(vOut.size()), u4Result;
    if (vIv.empty()) {
        u4Result = (bEncrypt ? NySymmEncEcb : NySymmDecEcb)(v.u4AlgId, vKey.data(), pu1In, u4Len,
                                                            vOut.data(), &u4Len);
    } else {
        u4Result = (bEncrypt ? NySymmEncCbc : NySymmDecCbc)(v.u4AlgId, vKey.data(), vIv.data(),
                                                            pu1In, u4Len, vOut.data(), &u4Len);
    }
    EXPECT_EQ(u4Result, NY_OK);
    EXPECT_EQ(u4Len, vIn.size());
    return vOut;
}

TEST(SymmKnownAnswer, EncryptsAndDecryptsToThePublishedValues) {
    for (const SymmVector& v : kVectors) {
        uint32_t u4KeySize = 0, u4BlockSize = 0;
        ASSERT_EQ(NySymmGetInfo(v.u4AlgId, &u4BlockSize, &u4KeySize), NY_OK);
        ASSERT_EQ(NyTestFromHex(v.szKey).size(), u4KeySize) << v.szKey;
        EXPECT_EQ(u4BlockSize, v.u4Block) << v.szKey;
        EXPECT_EQ(Cipher(true, v, NyTestFromHex(v.szPlain)), NyTestFromHex(v.szCipher)) << v.szKey;
        EXPECT_EQ(Cipher(false, v, NyTestFromHex(v.szCipher)), NyTestFromHex(v.szPlain)) << v.szKey;
    }
}

// Two-key triple DES: no published vector at hand, so it must equal DES encrypt with K1,
// decrypt with K2, encrypt with K1, single DES being pinned by its vector above.
TEST(SymmTwoKeyTripleDes, EqualsEncryptDecryptEncryptOfSingleDes) {
    const SymmVector k1 = {NY_SYMM_DES, 8, "0123456789ABCDEF", "", "", ""};
    const SymmVector k2 = {NY_SYMM_DES, 8, "23456789ABCDEF01", "", "", ""};
    const SymmVector both = {NY_SYMM_TDES_2KEY, 8, "0123456789ABCDEF23456789ABCDEF01", "", "", ""};
    const std::vector<uint8_t> vPlain = NyTestFromHex("54686520717566636B2062726F776E20");
    const std::vector<uint8_t> vEde = Cipher(true, k1, Cipher(false, k2, Cipher(true, k1, vPlain)));
    EXPECT_EQ(Cipher(true, both, vPlain), vEde);
    EXPECT_EQ(Cipher(false, both, vEde), vPlain);
}

}  // namespace
