#include "crypto/NyKeccak.h"

#include <openssl/crypto.h>

namespace {

constexpr int kRounds = 24;
constexpr uint32_t kStateBytes = 200;

constexpr uint64_t kRoundConstants[kRounds] = {
    0x0000000000000001ULL, 0x0000000000008082ULL, 0x800000000000808AULL, 0x8000000080008000ULL,
    0x000000000000808BULL, 0x0000000080000001ULL, 0x8000000080008081ULL, 0x8000000000008009ULL,
    0x000000000000008AULL, 0x0000000000000088ULL, 0x0000000080008009ULL, 0x000000008000000AULL,
    0x000000008000808BULL, 0x800000000000008BULL, 0x8000000000008089ULL, 0x8000000000008003ULL,
    0x8000000000008002ULL, 0x8000000000000080ULL, 0x000000000000800AULL, 0x800000008000000AULL,
    0x8000000080008081ULL, 0x8000000000008080ULL, 0x0000000080000001ULL, 0x8000000080008008ULL};

// Rho rotations and the pi lane order, walked along the pi cycle that starts at lane 1.
constexpr int kRho[kRounds] = {1,  3,  6,  10, 15, 21, 28, 36, 45, 55, 2,  14,
                               27, 41, 56, 8,  25, 43, 62, 18, 39, 61, 20, 44};
constexpr int kPi[kRounds] = {10, 7,  11, 17, 18, 3, 5,  16, 8,  21, 24, 4,
                              15, 23, 19, 13, 12, 2, 20, 14, 22, 9,  6,  1};

inline uint64_t Rotl(uint64_t u8, int iBits) {
    return (u8 << iBits) | (u8 >> (64 - iBits));
}

void Theta(uint64_t* pu8State) {
    uint64_t au8Col[5];
    for (int i = 0; i < 5; ++i) {
        au8Col[i] =
            pu8State[i] ^ pu8State[i + 5] ^ pu8State[i + 10] ^ pu8State[i + 15] ^ pu8State[i + 20];
    }
    for (int i = 0; i < 5; ++i) {
        const uint64_t u8D = au8Col[(i + 4) % 5] ^ Rotl(au8Col[(i + 1) % 5], 1);
        for (int j = 0; j < 25; j += 5) {
            pu8State[j + i] ^= u8D;
        }
    }
}

void RhoPi(uint64_t* pu8State) {
    uint64_t u8Carry = pu8State[1];
    for (int i = 0; i < kRounds; ++i) {
        const uint64_t u8Next = pu8State[kPi[i]];
        pu8State[kPi[i]] = Rotl(u8Carry, kRho[i]);
        u8Carry = u8Next;
    }
}

void Chi(uint64_t* pu8State) {
    for (int j = 0; j < 25; j += 5) {
        uint64_t au8Row[5];
        for (int i = 0; i < 5; ++i) {
            au8Row[i] = pu8State[j + i];
        }
        for (int i = 0; i < 5; ++i) {
            pu8State[j + i] ^= ~au8Row[(i + 1) % 5] & au8Row[(i + 2) % 5];
        }
    }
}

void KeccakF1600(uint64_t* pu8State) {
    for (int r = 0; r < kRounds; ++r) {
        Theta(pu8State);
        RhoPi(pu8State);
        Chi(pu8State);
        pu8State[0] ^= kRoundConstants[r];
    }
}

// Lanes are little-endian: byte i of the state is byte i % 8 of lane i / 8.
void XorByte(uint64_t* pu8State, uint32_t u4Index, uint8_t u1) {
    pu8State[u4Index / 8] ^= uint64_t(u1) << (8 * (u4Index % 8));
}

uint8_t GetByte(const uint64_t* pu8State, uint32_t u4Index) {
    return uint8_t(pu8State[u4Index / 8] >> (8 * (u4Index % 8)));
}

}  // namespace

bool NyKeccakDigest(uint8_t u1Pad, uint32_t u4DigestLen, const uint8_t* pu1Data, size_t uLen,
                    uint8_t* pu1Digest) {
    if (u4DigestLen != 28 && u4DigestLen != 32 && u4DigestLen != 48 && u4DigestLen != 64) {
        return false;
    }
    const uint32_t u4Rate = kStateBytes - 2 * u4DigestLen;
    uint64_t au8State[25] = {};
    uint32_t u4Pos = 0;
    for (size_t i = 0; i < uLen; ++i) {
        XorByte(au8State, u4Pos, pu1Data[i]);
        if (++u4Pos == u4Rate) {
            KeccakF1600(au8State);
            u4Pos = 0;
        }
    }
    XorByte(au8State, u4Pos, u1Pad);
    XorByte(au8State, u4Rate - 1, 0x80);
    KeccakF1600(au8State);
    // Every digest size is shorter than its rate: one squeeze suffices.
    for (uint32_t i = 0; i < u4DigestLen; ++i) {
        pu1Digest[i] = GetByte(au8State, i);
    }
    OPENSSL_cleanse(au8State, sizeof(au8State));
    return true;
}
