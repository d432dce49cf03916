// External block ciphers behind identifiers 256 and 512: registration and dispatch.
#include <gtest/gtest.h>

#include "crypto/NySymm.h"

namespace {

struct ExternCall {
    int iCalls = 0;
    uint32_t u4AlgId = 0;
    EnBool enCbc = NY_FALSE;
    EnBool enEncrypt = NY_FALSE;
    const uint8_t* pu1Key = nullptr;
    const uint8_t* pu1Iv = nullptr;
    uint32_t u4InLen = 0;
    uint32_t u4OutCapacity = 0;
};
ExternCall m_lastCall;

// XOR with the key and the IV: enough to see that the facade hands over the right buffers.
uint32_t FakeCipher(uint32_t u4AlgId, EnBool enCbc, EnBool enEncrypt, const uint8_t* pu1Key,
                    const uint8_t* pu1Iv, const uint8_t* pu1In, uint32_t u4InLen, uint8_t* pu1Out,
                    uint32_t* pu4OutLen) {
    m_lastCall.iCalls++;
    m_lastCall.u4AlgId = u4AlgId;
    m_lastCall.enCbc = enCbc;
    m_lastCall.enEncrypt = enEncrypt;
    m_lastCall.pu1Key = pu1Key;
    m_lastCall.pu1Iv = pu1Iv;
    m_lastCall.u4InLen = u4InLen;
    m_lastCall.u4OutCapacity = *pu4OutLen;
    for (uint32_t i = 0; i < u4InLen; ++i) {
        pu1Out[i] = pu1In[i] ^ pu1Key[i % 16] ^ (pu1Iv != nullptr ? pu1Iv[i % 16] : 0);
    }
    *pu4OutLen = u4InLen;
    return 0x1234;  // the implementation's own code is passed through
}

class SymmExtern : public testing::Test {
protected:
    void SetUp() override { m_lastCall = ExternCall(); }
    void TearDown() override {
        NySymmSetExternImpl(NY_SYMM_EXTERN_1, 0, nullptr);
        NySymmSetExternImpl(NY_SYMM_EXTERN_2, 0, nullptr);
    }
    uint8_t m_au1Key[16] = {0x10, 0x20, 0x30, 0x40, 0x50, 0x60, 0x70, 0x80,
                            0x90, 0xA0, 0xB0, 0xC0, 0xD0, 0xE0, 0xF0, 0x01};
    uint8_t m_au1Iv[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    uint8_t m_au1In[32] = {};
    uint8_t m_au1Out[48] = {};
    uint32_t m_u4Len = sizeof(m_au1Out);
};

TEST_F(SymmExtern, OnlyTheTwoExternalIdentifiersCanBeRegistered) {
    EXPECT_EQ(NySymmSetExternImpl(NY_SYMM_EXTERN_1, 0, FakeCipher), NY_OK);
    EXPECT_EQ(NySymmSetExternImpl(NY_SYMM_EXTERN_2, NY_SYMM_EXTERN_CAP_CBC, FakeCipher), NY_OK);
    for (uint32_t u4AlgId : {0u, 1u, 128u, 1024u, 768u}) {
        EXPECT_EQ(NySymmSetExternImpl(u4AlgId, 0, FakeCipher), NY_ERR_INVALID_ARGUMENT) << u4AlgId;
    }
}

TEST_F(SymmExtern, WithoutRegistrationTheCallIsRefused) {
    EXPECT_EQ(NySymmEncEcb(NY_SYMM_EXTERN_1, m_au1Key, m_au1In, 32, m_au1Out, &m_u4Len),
              NY_ERR_SYMM_NO_EXTERN);
    NySymmSetExternImpl(NY_SYMM_EXTERN_1, 0, FakeCipher);
    EXPECT_EQ(NySymmEncEcb(NY_SYMM_EXTERN_2, m_au1Key, m_au1In, 32, m_au1Out, &m_u4Len),
              NY_ERR_SYMM_NO_EXTERN)
        << "one identifier's registration serves the other";
    EXPECT_EQ(m_lastCall.iCalls, 0);
}

TEST_F(SymmExtern, CbcNeedsTheCapabilityFlag) {
    NySymmSetExternImpl(NY_SYMM_EXTERN_1, 0, FakeCipher);
    EXPECT_EQ(NySymmEncCbc(NY_SYMM_EXTERN_1, m_au1Key, m_au1Iv, m_au1In, 32, m_au1Out, &m_u4Len),
              NY_ERR_SYMM_NO_EXTERN);
    EXPECT_EQ(m_lastCall.iCalls, 0);
    NySymmSetExternImpl(NY_SYMM_EXTERN_1, NY_SYMM_EXTERN_CAP_CBC, FakeCipher);
    EXPECT_EQ(NySymmDecCbc(NY_SYMM_EXTERN_1, m_au1Key, m_au1Iv, m_au1In, 32, m_au1Out, &m_u4Len),
              0x1234u);
    EXPECT_EQ(m_lastCall.iCalls, 1);
}

TEST_F(SymmExtern, TheImplementationGetsTheRequestAsAsked) {
    NySymmSetExternImpl(NY_SYMM_EXTERN_2, NY_SYMM_EXTERN_CAP_CBC, FakeCipher);
    ASSERT_EQ(NySymmEncCbc(NY_SYMM_EXTERN_2, m_au1Key, m_au1Iv, m_au1In, 32, m_au1Out, &m_u4Len),
              0x1234u);
    EXPECT_EQ(m_lastCall.u4AlgId, NY_SYMM_EXTERN_2);
    EXPECT_EQ(m_lastCall.enCbc, NY_TRUE);
    EXPECT_EQ(m_lastCall.enEncrypt, NY_TRUE);
    EXPECT_EQ(m_lastCall.pu1Key, m_au1Key);
    EXPECT_EQ(m_lastCall.pu1Iv, m_au1Iv);
    EXPECT_EQ(m_lastCall.u4InLen, 32u);
    EXPECT_EQ(m_lastCall.u4OutCapacity, 48u);
    EXPECT_EQ(m_u4Len, 32u);
    EXPECT_EQ(m_au1Out[0], 0x10 ^ 1);

    ASSERT_EQ(NySymmDecEcb(NY_SYMM_EXTERN_2, m_au1Key, m_au1In, 32, m_au1Out, &m_u4Len), 0x1234u);
    EXPECT_EQ(m_lastCall.enCbc, NY_FALSE);
    EXPECT_EQ(m_lastCall.enEncrypt, NY_FALSE);
    EXPECT_EQ(m_lastCall.pu1Iv, nullptr);
}

TEST_F(SymmExtern, LengthChecksComeBeforeTheImplementation) {
    NySymmSetExternImpl(NY_SYMM_EXTERN_1, NY_SYMM_EXTERN_CAP_CBC, FakeCipher);
    EXPECT_EQ(NySymmEncEcb(NY_SYMM_EXTERN_1, m_au1Key, m_au1In, 20, m_au1Out, &m_u4Len),
              NY_ERR_SYMM_NOT_BLOCKS);
    uint32_t u4Len = 0;
    EXPECT_EQ(NySymmEncEcb(NY_SYMM_EXTERN_1, m_au1Key, m_au1In, 32, nullptr, &u4Len), NY_OK);
    EXPECT_EQ(u4Len, 32u);
    u4Len = 16;
    EXPECT_EQ(NySymmEncEcb(NY_SYMM_EXTERN_1, m_au1Key, m_au1In, 32, m_au1Out, &u4Len),
              NY_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(m_lastCall.iCalls, 0);
}

TEST_F(SymmExtern, RegisteringANullFunctionRemovesTheImplementation) {
    NySymmSetExternImpl(NY_SYMM_EXTERN_1, 0, FakeCipher);
    ASSERT_EQ(NySymmEncEcb(NY_SYMM_EXTERN_1, m_au1Key, m_au1In, 32, m_au1Out, &m_u4Len), 0x1234u);
    EXPECT_EQ(NySymmSetExternImpl(NY_SYMM_EXTERN_1, 0, nullptr), NY_OK);
    EXPECT_EQ(NySymmEncEcb(NY_SYMM_EXTERN_1, m_au1Key, m_au1In, 32, m_au1Out, &m_u4Len),
              NY_ERR_SYMM_NO_EXTERN);
}

}  // namespace
