// Argument checks of the cipher facade in their order, the size query, the special cases and
// the external block ciphers behind identifiers 256 and 512.
#include <gtest/gtest.h>

#include <vector>

#include "crypto/NySymm.h"

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

struct ExternCall {
    int iCalls;
    uint32_t u4AlgId;
    EnBool enCbc, enEncrypt;
    const uint8_t *pu1Key, *pu1Iv;
    uint32_t u4InLen, u4Capacity;
} m_call;

uint32_t FakeCipher(uint32_t u4AlgId, EnBool enCbc, EnBool enEncrypt, const uint8_t* pu1Key,
                    const uint8_t* pu1Iv, const uint8_t*, uint32_t u4InLen, uint8_t*,
                    uint32_t* pu4OutLen) {
    m_call = {m_call.iCalls + 1, u4AlgId, enCbc, enEncrypt, pu1Key, pu1Iv, u4InLen, *pu4OutLen};
    return 0x1234;  // the implementation's own code is passed through
}

TEST(SymmExtern, RegistrationRefusalsAndDispatchOfTheCheckedRequest) {
    uint8_t au1Key[16] = {}, au1In[32] = {}, au1Out[48] = {};
    uint32_t u4Len = sizeof(au1Out);
    auto Enc = [&](uint32_t u4AlgId, const uint8_t* pu1Iv) {
        return pu1Iv ? NySymmEncCbc(u4AlgId, au1Key, pu1Iv, au1In, 32, au1Out, &u4Len)
                     : NySymmEncEcb(u4AlgId, au1Key, au1In, 32, au1Out, &u4Len);
    };
    EXPECT_EQ(Enc(NY_SYMM_EXTERN_1, nullptr), NY_ERR_SYMM_NO_EXTERN);
    for (uint32_t u4AlgId : {0u, 1u, 128u, 768u, 1024u}) {
        EXPECT_EQ(NySymmSetExternImpl(u4AlgId, 0, FakeCipher), NY_ERR_INVALID_ARGUMENT);
    }
    EXPECT_EQ(NySymmSetExternImpl(NY_SYMM_EXTERN_1, 0, FakeCipher), NY_OK);
    EXPECT_EQ(Enc(NY_SYMM_EXTERN_2, nullptr), NY_ERR_SYMM_NO_EXTERN)
        << "registrations are per identifier";
    EXPECT_EQ(Enc(NY_SYMM_EXTERN_1, kIv), NY_ERR_SYMM_NO_EXTERN);
    EXPECT_EQ(m_call.iCalls, 0);
    EXPECT_EQ(Enc(NY_SYMM_EXTERN_1, nullptr), 0x1234u);
    NySymmSetExternImpl(NY_SYMM_EXTERN_1, 0, nullptr);
    EXPECT_EQ(Enc(NY_SYMM_EXTERN_1, nullptr), NY_ERR_SYMM_NO_EXTERN);
    EXPECT_EQ(m_call.iCalls, 1);
    // The implementation gets the checked request as asked.
    EXPECT_EQ(NySymmSetExternImpl(NY_SYMM_EXTERN_2, NY_SYMM_EXTERN_CAP_CBC, FakeCipher), NY_OK);
    EXPECT_EQ(Enc(NY_SYMM_EXTERN_2, kIv), 0x1234u);
    EXPECT_TRUE(m_call.u4AlgId == NY_SYMM_EXTERN_2 && m_call.enCbc == NY_TRUE &&
                m_call.enEncrypt == NY_TRUE && m_call.pu1Key == au1Key && m_call.pu1Iv == kIv &&
                m_call.u4InLen == 32u && m_call.u4Capacity == 48u);
    EXPECT_EQ(NySymmDecEcb(NY_SYMM_EXTERN_2, au1Key, au1In, 32, au1Out, &u4Len), 0x1234u);
    EXPECT_TRUE(m_call.enCbc == NY_FALSE && m_call.enEncrypt == NY_FALSE);
    EXPECT_EQ(NySymmEncEcb(NY_SYMM_EXTERN_2, au1Key, au1In, 20, au1Out, &u4Len),
              NY_ERR_SYMM_NOT_BLOCKS);
    EXPECT_EQ(m_call.iCalls, 3) << "length checks come before the implementation";
    NySymmSetExternImpl(NY_SYMM_EXTERN_2, 0, nullptr);
}

}  // namespace
