// Key derivation for the UI block protection.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "support/NyTestHex.h"
#include "uiblock/NyTripleDesKey.h"

namespace {

// Computed outside this code base with Python's hashlib:
//   A = sha1(seed).digest()[:16]; B = sha1(b"TarnFieldKey2").digest()[6:20]
//   key = sha1(A + B + A + B).digest() + A[12:16]
const std::pair<const char*, const char*> kKeyVectors[] = {
    {"000102030405060708090a0b0c0d0e0f", "42aeb40c6b321e89f37ed3ebf0436f77fc7ebdfa185c2cc9"},
    {"00000000000000000000000000000000", "9a2e485096c106666aaa4959f5b9573a7e669836a15e160d"},
    {"8f3a5c217e90b4d6c1f02a9e3b7d5468", "5a4a3578b8818f06d492ec193d0c1aa98fa2a082d42c4361"},
};

TEST(TripleDesKey, DerivesTheIndependentlyComputedKeysAndRefusesBadBuffers) {
    for (const auto& v : kKeyVectors) {
        std::vector<uint8_t> vSeed = NyTestFromHex(v.first);
        uint8_t au1Key[NY_TDES_KEY_SIZE] = {};
        int32_t i4Len = NY_TDES_KEY_SIZE;
        ASSERT_TRUE(SafeCommunication::TripleDes168GenKey(vSeed.data(), 16, au1Key, &i4Len));
        EXPECT_EQ(NyTestToHex(au1Key, sizeof(au1Key)), v.second);

        vSeed.insert(vSeed.end(), {0xFF, 0xEE, 0xDD, 0xCC});  // ignored tail
        std::vector<uint8_t> vKey(32, 0xCC);
        i4Len = 32;
        ASSERT_TRUE(NyTripleDesDeriveKey(vSeed.data(), 20, vKey.data(), &i4Len));
        EXPECT_EQ(i4Len, NY_TDES_KEY_SIZE);
        EXPECT_EQ(NyTestToHex(vKey), std::string(v.second) + "cccccccccccccccc");
    }
    // Short or missing buffers are refused and nothing is written.
    const uint8_t au1Seed[16] = {1};
    const struct {
        const uint8_t* pu1Seed;
        int32_t i4SeedLen;
        bool bNullKey, bNullLen;
        int32_t i4KeyLen;
    } aCases[] = {{nullptr, 16, false, false, 24},  {au1Seed, 15, false, false, 24},
                  {au1Seed, -16, false, false, 24}, {au1Seed, 16, true, false, 24},
                  {au1Seed, 16, false, false, 23},  {au1Seed, 16, false, true, 24}};
    for (const auto& c : aCases) {
        std::vector<uint8_t> vKey(NY_TDES_KEY_SIZE, 0xCC);
        int32_t i4Len = c.i4KeyLen;
        EXPECT_FALSE(NyTripleDesDeriveKey(c.pu1Seed, c.i4SeedLen,
                                          c.bNullKey ? nullptr : vKey.data(),
                                          c.bNullLen ? nullptr : &i4Len));
        EXPECT_EQ(i4Len, c.i4KeyLen);
        EXPECT_EQ(vKey, std::vector<uint8_t>(NY_TDES_KEY_SIZE, 0xCC));
    }
}

}  // namespace
