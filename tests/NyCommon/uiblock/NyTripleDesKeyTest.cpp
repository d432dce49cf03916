// Key derivation for the UI block protection.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "support/NyTestHex.h"
#include "uiblock/NyTripleDesKey.h"

namespace {

// Expected keys computed outside this code base with Python's hashlib:
//   A = sha1(seed).digest()[:16]; B = sha1(b"TarnFieldKey2").digest()[6:20]
//   key = sha1(A + B + A + B).digest() + A[12:16]
struct KeyVector {
    const char* szSeed;
    const char* szKey;
};

const KeyVector kKeyVectors[] = {
    {"000102030405060708090a0b0c0d0e0f", "42aeb40c6b321e89f37ed3ebf0436f77fc7ebdfa185c2cc9"},
    {"00000000000000000000000000000000", "9a2e485096c106666aaa4959f5b9573a7e669836a15e160d"},
    {"8f3a5c217e90b4d6c1f02a9e3b7d5468", "5a4a3578b8818f06d492ec193d0c1aa98fa2a082d42c4361"},
};

TEST(TripleDesKey, DerivesTheIndependentlyComputedKeys) {
    for (const KeyVector& v : kKeyVectors) {
        const std::vector<uint8_t> vSeed = NyTestFromHex(v.szSeed);
        uint8_t au1Key[NY_TDES_KEY_SIZE] = {};
        int32_t i4Len = NY_TDES_KEY_SIZE;
        ASSERT_TRUE(SafeCommunication::TripleDes168GenKey(vSeed.data(), 16, au1Key, &i4Len));
        EXPECT_EQ(i4Len, NY_TDES_KEY_SIZE);
        EXPECT_EQ(NyTestToHex(au1Key, sizeof(au1Key)), v.szKey) << v.szSeed;

        uint8_t au1Flat[NY_TDES_KEY_SIZE] = {};
        ASSERT_TRUE(NyTripleDesDeriveKey(vSeed.data(), 16, au1Flat, &i4Len));
        EXPECT_EQ(0, memcmp(au1Flat, au1Key, sizeof(au1Key)));
    }
}

TEST(TripleDesKey, OnlyTheFirstSixteenSeedBytesCount) {
    std::vector<uint8_t> vSeed = NyTestFromHex("8f3a5c217e90b4d6c1f02a9e3b7d5468ffeeddcc");
    uint8_t au1Key[32];
    memset(au1Key, 0xCC, sizeof(au1Key));
    int32_t i4Len = sizeof(au1Key);
    ASSERT_TRUE(NyTripleDesDeriveKey(vSeed.data(), int32_t(vSeed.size()), au1Key, &i4Len));
    EXPECT_EQ(i4Len, NY_TDES_KEY_SIZE);
    EXPECT_EQ(NyTestToHex(au1Key, NY_TDES_KEY_SIZE), kKeyVectors[2].szKey);
    for (size_t i = NY_TDES_KEY_SIZE; i < sizeof(au1Key); ++i) {
        EXPECT_EQ(au1Key[i], 0xCC) << "wrote past the key at " << i;
    }
}

TEST(TripleDesKey, EverySeedBitChangesTheKey) {
    std::vector<uint8_t> vSeed(16, 0);
    uint8_t au1Base[NY_TDES_KEY_SIZE], au1Key[NY_TDES_KEY_SIZE];
    int32_t i4Len = NY_TDES_KEY_SIZE;
    ASSERT_TRUE(NyTripleDesDeriveKey(vSeed.data(), 16, au1Base, &i4Len));
    for (int iBit = 0; iBit < 128; iBit += 9) {
        vSeed.assign(16, 0);
        vSeed[iBit / 8] = uint8_t(1 << (iBit % 8));
        ASSERT_TRUE(NyTripleDesDeriveKey(vSeed.data(), 16, au1Key, &i4Len));
        EXPECT_NE(0, memcmp(au1Base, au1Key, NY_TDES_KEY_SIZE)) << iBit;
    }
}

TEST(TripleDesKey, RefusesShortOrMissingBuffersAndWritesNothing) {
    const uint8_t au1Seed[16] = {1};
    struct {
        const char* szName;
        const uint8_t* pu1Seed;
        int32_t i4SeedLen;
        bool bNullKey;
        bool bNullLen;
        int32_t i4KeyLen;
    } aCases[] = {
        {"null seed", nullptr, 16, false, false, 24},
        {"15-byte seed", au1Seed, 15, false, false, 24},
        {"negative seed length", au1Seed, -16, false, false, 24},
        {"null key", au1Seed, 16, true, false, 24},
        {"23-byte key buffer", au1Seed, 16, false, false, 23},
        {"null key length", au1Seed, 16, false, true, 24},
    };
    for (const auto& c : aCases) {
        uint8_t au1Key[NY_TDES_KEY_SIZE];
        memset(au1Key, 0xCC, sizeof(au1Key));
        int32_t i4Len = c.i4KeyLen;
        EXPECT_FALSE(SafeCommunication::TripleDes168GenKey(
            c.pu1Seed, c.i4SeedLen, c.bNullKey ? nullptr : au1Key, c.bNullLen ? nullptr : &i4Len))
            << c.szName;
        EXPECT_EQ(i4Len, c.i4KeyLen) << c.szName;
        for (uint8_t u1 : au1Key) {
            ASSERT_EQ(u1, 0xCC) << c.szName;
        }
    }
}

}  // namespace
