#include "config/CNyCfgExpander.h"

#include <cstring>
#include <new>
#include <utility>

#include "config/NyCfgId.h"
#include "runtime/NyResult.h"
#include "runtime/NySafe.h"

namespace {

constexpr char NY_CFG_REF_OPEN[] = "$(0x";
constexpr size_t NY_CFG_REF_OPEN_LEN = sizeof(NY_CFG_REF_OPEN) - 1;
constexpr size_t NY_CFG_MIN_WORK_SIZE = 1024;
constexpr unsigned int NY_CFG_SCRATCH_SIZE = 1024;
constexpr unsigned int NY_CFG_MAX_PASSES = 5;

int CfgHexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Reads the hexadecimal digits in [pBegin, pEnd); more than eight keep the last eight.
bool CfgParseHexId(const char* pBegin, const char* pEnd, uint32_t* pu4Id) {
    uint32_t u4Id = 0;
    for (const char* p = pBegin; p < pEnd; ++p) {
        int iDigit = CfgHexDigit(*p);
        if (iDigit < 0) {
            return false;
        }
        u4Id = (u4Id << 4) | uint32_t(iDigit);
    }
    *pu4Id = u4Id;
    return true;
}

// The decimal text of a stored number of the given type (32-bit values print signed).
void CfgFormatNumber(uint32_t u4Type, const unsigned char* pu1Value, char* szOut, size_t cch) {
    int32_t i4Value = 0;
    switch (u4Type) {
        case NY_CFG_TYPE_U1:
            i4Value = pu1Value[0];
            break;
        case NY_CFG_TYPE_U2:
            i4Value = NyCfgReadU16(pu1Value);
            break;
        default:
            i4Value = static_cast<int32_t>(NyCfgReadU32(pu1Value));
            break;
    }
    NyStrPrintf(szOut, cch, "%d", i4Value);
}

// Length of what a failed or unusable lookup left in the scratch buffer, less a final NUL.
size_t CfgLeftoverLength(const unsigned char* pu1Scratch, unsigned int u4Length) {
    size_t cb = u4Length;
    if (cb > 0 && pu1Scratch[cb - 1] == 0) {
        --cb;
    }
    return cb;
}

}  // namespace

CNyCfgExpander::CNyCfgExpander(BlkCfgHandleTag* hCfg) : m_hCfg(hCfg) {}

CNyCfgExpander::~CNyCfgExpander() {
    delete[] m_szIn;
    delete[] m_szOut;
}

uint32_t CNyCfgExpander::Expand(const char* szRaw) {
    size_t cchRaw = strlen(szRaw);
    m_cbCapacity = cchRaw * 2 > NY_CFG_MIN_WORK_SIZE ? cchRaw * 2 : NY_CFG_MIN_WORK_SIZE;
    m_szIn = new (std::nothrow) char[m_cbCapacity]();
    m_szOut = new (std::nothrow) char[m_cbCapacity]();
    if (m_szIn == nullptr || m_szOut == nullptr) {
        return NY_ERR_OUT_OF_MEMORY;
    }
    NyMemCpy(m_szIn, m_cbCapacity, szRaw, cchRaw);
    for (unsigned int u4Pass = 1;; ++u4Pass) {
        m_szResult = m_szIn;
        if (m_szIn[0] == '\0') {
            return NY_OK;
        }
        uint32_t u4Result = RunPass(m_szIn);
        if (m_bAborted || !m_bSubstituted) {
            return u4Result;
        }
        if (u4Pass == NY_CFG_MAX_PASSES) {
            m_szResult = m_szOut;
            return u4Result;
        }
        std::swap(m_szIn, m_szOut);
    }
}

uint32_t CNyCfgExpander::RunPass(const char* szIn) {
    m_cbOut = 0;
    m_szOut[0] = '\0';
    m_bSubstituted = false;
    const char* pCursor = szIn;
    while (*pCursor != '\0') {
        const char* pRef = strstr(pCursor, NY_CFG_REF_OPEN);
        const char* pClose = pRef != nullptr ? strchr(pRef + 1, ')') : nullptr;
        if (pClose == nullptr) {
            return Emit(pCursor, strlen(pCursor), nullptr, 0);
        }
        uint32_t u4Result = ExpandReference(&pCursor, pRef, pClose);
        if (u4Result != NY_OK) {
            return u4Result;
        }
    }
    return NY_OK;
}

uint32_t CNyCfgExpander::ExpandReference(const char** ppCursor, const char* pRef,
                                         const char* pClose) {
    const char* pCursor = *ppCursor;
    const char* pDigits = pRef + NY_CFG_REF_OPEN_LEN;
    // Whatever is not substituted stays literal up to and including "$(0x"; the digits and
    // the closing parenthesis follow as text.
    *ppCursor = pDigits;
    uint32_t u4Id = 0;
    if (!CfgParseHexId(pDigits, pClose, &u4Id)) {
        return Emit(pCursor, size_t(pDigits - pCursor), nullptr, 0);
    }
    unsigned char au1Scratch[NY_CFG_SCRATCH_SIZE] = {};
    unsigned int u4Length = NY_CFG_SCRATCH_SIZE;
    uint32_t u4Result = NyCfgGetValue(m_hCfg, u4Id, au1Scratch, &u4Length);
    if (u4Result == NY_ERR_BUFFER_TOO_SMALL) {
        m_bAborted = true;
        return u4Result;
    }
    uint32_t u4Type = NyCfgIdType(u4Id);
    if (u4Result != NY_OK || u4Type < NY_CFG_TYPE_TEXT || u4Type > NY_CFG_TYPE_U4) {
        return Emit(pCursor, size_t(pDigits - pCursor), reinterpret_cast<char*>(au1Scratch),
                    CfgLeftoverLength(au1Scratch, u4Length));
    }
    char szNumber[16];
    const char* pReplacement = szNumber;
    size_t cbReplacement = 0;
    if (u4Type == NY_CFG_TYPE_TEXT) {
        pReplacement = reinterpret_cast<char*>(au1Scratch);
        cbReplacement = strnlen(pReplacement, u4Length);
    } else {
        CfgFormatNumber(u4Type, au1Scratch, szNumber, sizeof(szNumber));
        cbReplacement = strlen(szNumber);
    }
    u4Result = Emit(pCursor, size_t(pRef - pCursor), pReplacement, cbReplacement);
    if (u4Result == NY_OK) {
        m_bSubstituted = true;
        *ppCursor = pClose + 1;
    }
    return u4Result;
}

uint32_t CNyCfgExpander::Emit(const char* pLiteral, size_t cbLiteral, const char* pReplacement,
                              size_t cbReplacement) {
    if (m_cbOut + cbLiteral + cbReplacement + 1 > m_cbCapacity) {
        return NY_ERR_BUFFER_TOO_SMALL;
    }
    NyMemCpy(m_szOut + m_cbOut, m_cbCapacity - m_cbOut, pLiteral, cbLiteral);
    m_cbOut += cbLiteral;
    NyMemCpy(m_szOut + m_cbOut, m_cbCapacity - m_cbOut, pReplacement, cbReplacement);
    m_cbOut += cbReplacement;
    m_szOut[m_cbOut] = '\0';
    return NY_OK;
}
