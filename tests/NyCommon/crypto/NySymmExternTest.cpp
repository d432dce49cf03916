// External block ciphers behind identifiers 256 and 512: registration and dispatch.
#include <gtest/gtest.h>

#include "crypto/NySymm.h"

namespace {

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

class SymmExtern : public testing::Test {
protected:
    void SetUp() override { m_call = {}; }
    void TearDown() override {
        NySymmSetExternImpl(NY_SYMM_EXTERN_1, 0, nullptr);
        NySymmSetExternImpl(NY_SYMM_EXTERN_2, 0, nullptr);
    }
    uint32_t Enc(uint32_t u4AlgId, const uint8_t* pu1Iv) {
        return pu1Iv ? NySymmEncCbc(u4AlgId, m_au1Key, pu1Iv, m_au1In, 32, m_au1Out, &m_u4Len)
                     : NySymmEncEcb(u4AlgId, m_au1Key, m_au1In, 32, m_au1Out, &m_u4Len);
    }
    uint8_t m_au1Key[16] = {}, m_au1Iv[16] = {}, m_au1In[32] = {}, m_au1Out[48] = {};
    uint32_t m_u4Len = sizeof(m_au1Out);
};

TEST_F(SymmExtern, RegistrationRefusalsAndDispatchOfTheCheckedRequest) {
    EXPECT_EQ(Enc(NY_SYMM_EXTERN_1, nullptr), NY_ERR_SYMM_NO_EXTERN);
    for (uint32_t u4AlgId : {0u, 1u, 128u, 768u, 1024u}) {
        EXPECT_EQ(NySymmSetExternImpl(u4AlgId, 0, FakeCipher), NY_ERR_INVALID_ARGUMENT);
    }
    EXPECT_EQ(NySymmSetExternImpl(NY_SYMM_EXTERN_1, 0, FakeCipher), NY_OK);
    EXPECT_EQ(Enc(NY_SYMM_EXTERN_2, nullptr), NY_ERR_SYMM_NO_EXTERN)
        << "registrations are per identifier";
    EXPECT_EQ(Enc(NY_SYMM_EXTERN_1, m_au1Iv), NY_ERR_SYMM_NO_EXTERN);
    EXPECT_EQ(m_call.iCalls, 0);
    EXPECT_EQ(Enc(NY_SYMM_EXTERN_1, nullptr), 0x1234u);
    NySymmSetExternImpl(NY_SYMM_EXTERN_1, 0, nullptr);
    EXPECT_EQ(Enc(NY_SYMM_EXTERN_1, nullptr), NY_ERR_SYMM_NO_EXTERN);
    EXPECT_EQ(m_call.iCalls, 1);
    // The implementation gets the checked request as asked.
    EXPECT_EQ(NySymmSetExternImpl(NY_SYMM_EXTERN_2, NY_SYMM_EXTERN_CAP_CBC, FakeCipher), NY_OK);
    ASSERT_EQ(Enc(NY_SYMM_EXTERN_2, m_au1Iv), 0x1234u);
    EXPECT_TRUE(m_call.u4AlgId == NY_SYMM_EXTERN_2 && m_call.enCbc == NY_TRUE &&
                m_call.enEncrypt == NY_TRUE && m_call.pu1Key == m_au1Key &&
                m_call.pu1Iv == m_au1Iv && m_call.u4InLen == 32u && m_call.u4Capacity == 48u);
    ASSERT_EQ(NySymmDecEcb(NY_SYMM_EXTERN_2, m_au1Key, m_au1In, 32, m_au1Out, &m_u4Len), 0x1234u);
    EXPECT_EQ(m_call.enCbc, NY_FALSE);
    EXPECT_EQ(m_call.enEncrypt, NY_FALSE);
    EXPECT_EQ(NySymmEncEcb(NY_SYMM_EXTERN_2, m_au1Key, m_au1In, 20, m_au1Out, &m_u4Len),
              NY_ERR_SYMM_NOT_BLOCKS);
    EXPECT_EQ(m_call.iCalls, 3) << "length checks come before the implementation";
}

}  // namespace
