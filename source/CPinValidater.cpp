#include "CPinValidater.h"

#include <cstring>

#include "CConfig.h"
#include "NyConfigImage.h"
#include "config/NyCfgLang.h"
#include "runtime/NyResult.h"

namespace {

constexpr int32_t NY_PIN_RUN_LENGTH = 6;
constexpr int32_t NY_PIN_MIN_DISTINCT = 3;
// The whole-string doubled-step test copies into a buffer of this size (32 bytes and a NUL).
constexpr size_t NY_PIN_REDUP_BUFFER = 33;
constexpr unsigned char NY_PIN_REDUP_PAD = 0x01;

// Character classes, as bits of the mask that CheckStrength counts.
constexpr unsigned int NY_PIN_CLASS_DIGIT = 1;
constexpr unsigned int NY_PIN_CLASS_UPPER = 2;
constexpr unsigned int NY_PIN_CLASS_LOWER = 4;
constexpr unsigned int NY_PIN_CLASS_OTHER = 8;

constexpr int NY_PIN_STRENGTH_NONE = 0;
constexpr int NY_PIN_STRENGTH_FAIR = 1;
constexpr int NY_PIN_STRENGTH_MEDIUM = 2;
constexpr int NY_PIN_STRENGTH_WEAK = 3;

// Message ids of the Validate results (0 where a result has no message).
constexpr unsigned int NY_MSG_INVALID_PIN = 0x00210089;
constexpr unsigned int NY_MSG_CONSECUTIVE = 0x0021008A;
constexpr unsigned int NY_MSG_CONSECUTIVE_NUMBERS = 0x0021008B;
constexpr unsigned int NY_MSG_CONSECUTIVE_LETTERS = 0x0021008C;
constexpr unsigned int NY_MSG_SAME_ADJACENT = 0x0021008D;
constexpr unsigned int NY_MSG_SAME_NUMBERS = 0x0021008E;
constexpr unsigned int NY_MSG_SAME_LETTERS = 0x0021008F;
constexpr unsigned int NY_MSG_ONLY_CHARS_OR_NUMBERS = 0x00210091;
constexpr unsigned int NY_MSG_SAME_AS_OLD = 0x00210092;
constexpr unsigned int NY_MSG_CONFIRM_DIFFERS = 0x00210093;

bool IsDigit(unsigned char u1) {
    return u1 >= '0' && u1 <= '9';
}
bool IsUpper(unsigned char u1) {
    return u1 >= 'A' && u1 <= 'Z';
}
bool IsLower(unsigned char u1) {
    return u1 >= 'a' && u1 <= 'z';
}
bool IsLetter(unsigned char u1) {
    return IsUpper(u1) || IsLower(u1);
}

const unsigned char* Bytes(const char* sz) {
    return reinterpret_cast<const unsigned char*>(sz);
}

// The pairs that continue a run across the end of their range: 9->0, z->a, Z->A ascending.
bool IsAscendingWrap(unsigned char u1Prev, unsigned char u1Cur) {
    return (u1Prev == '9' && u1Cur == '0') || (u1Prev == 'z' && u1Cur == 'a') ||
           (u1Prev == 'Z' && u1Cur == 'A');
}
bool IsDescendingWrap(unsigned char u1Prev, unsigned char u1Cur) {
    return IsAscendingWrap(u1Cur, u1Prev);
}

// A run of iRun characters at the start of pu1 that steps by iStep (+1 or -1), where a wrap
// pair counts as a step and becomes the new base of the run.
bool IsSteppedRunFromBegin(const unsigned char* pu1, int iRun, int iStep) {
    int iBase = 0;
    for (int i = 1; i < iRun; ++i) {
        bool bWrap =
            iStep > 0 ? IsAscendingWrap(pu1[i - 1], pu1[i]) : IsDescendingWrap(pu1[i - 1], pu1[i]);
        if (bWrap) {
            if (i == iRun - 1) {
                return true;
            }
            iBase = i;
            continue;
        }
        if (int(pu1[i]) != int(pu1[iBase]) + iStep * (i - iBase)) {
            return false;
        }
    }
    return true;
}

// The product language, or the system's when the configuration names none.
void SetProductLanguage(CConfig* pCfg) {
    unsigned int u4Language = NY_LANG_ZH_CN;
    if (pCfg->GetProductLanguage(&u4Language) != NY_OK) {
        NyOsGetLanguage(&u4Language);
    }
    pCfg->SetLanguage(u4Language);
}

unsigned int MessageIdOf(int iResult, CConfig* pCfg) {
    switch (iResult) {
        case VALIDATE_RESULT_NULL:
            return NY_MSG_INVALID_PIN;
        case VALIDATE_RESULT_CONSECUTIVE:
            return NY_MSG_CONSECUTIVE;
        case VALIDATE_RESULT_CONSECUTIVE_NUMBERS:
            return NY_MSG_CONSECUTIVE_NUMBERS;
        case VALIDATE_RESULT_CONSECUTIVE_LETTERS:
            return NY_MSG_CONSECUTIVE_LETTERS;
        case VALIDATE_RESULT_SAME_ADJACENT:
            return NY_MSG_SAME_ADJACENT;
        case VALIDATE_RESULT_SAME_NUMBERS:
            return NY_MSG_SAME_NUMBERS;
        case VALIDATE_RESULT_SAME_LETTERS:
            return NY_MSG_SAME_LETTERS;
        case VALIDATE_RESULT_SAME_AS_OLD:
            return NY_MSG_SAME_AS_OLD;
        case VALIDATE_RESULT_CONFIRM_DIFFERS:
            return NY_MSG_CONFIRM_DIFFERS;
        case VALIDATE_RESULT_ONLY_CHARS_OR_NUMBERS:
            return pCfg->GetU4(NY_CFG_PIN_ALLOW_SINGLE_CLASS, 0u) == 0
                       ? NY_MSG_ONLY_CHARS_OR_NUMBERS
                       : 0;
        default:
            return 0;
    }
}

}  // namespace

int HowManyTypes(unsigned int u4Mask) {
    int iCount = 0;
    for (unsigned int u4Bit = 1; u4Bit <= NY_PIN_CLASS_OTHER; u4Bit <<= 1) {
        iCount += (u4Mask & u4Bit) != 0 ? 1 : 0;
    }
    return iCount;
}

CPinValidater::CPinValidater() : CPinValidater(nullptr) {}

CPinValidater::CPinValidater(CConfig* pCfg)
    : m_i4RunLength(NY_PIN_RUN_LENGTH), m_i4MinDistinct(NY_PIN_MIN_DISTINCT), m_pCfg(pCfg) {}

int CPinValidater::Validate(const char* szOldPin, const char* szNewPin, const char* szConfirmPin) {
    if (szNewPin == nullptr) {
        return VALIDATE_RESULT_NULL;
    }
    size_t cchNew = strlen(szNewPin);
    if (szConfirmPin == nullptr || strlen(szConfirmPin) != cchNew ||
        memcmp(szNewPin, szConfirmPin, cchNew) != 0) {
        return VALIDATE_RESULT_CONFIRM_DIFFERS;
    }
    if (szOldPin != nullptr && strlen(szOldPin) == cchNew &&
        memcmp(szNewPin, szOldPin, cchNew) == 0) {
        return VALIDATE_RESULT_SAME_AS_OLD;
    }
    return Validate(szNewPin);
}

int CPinValidater::Validate(const char* szNewPin) {
    if (szNewPin == nullptr) {
        return VALIDATE_RESULT_NULL;
    }
    if (m_pCfg != nullptr) {
        return ValidateWith(szNewPin, m_pCfg);
    }
    CConfig cfg(NyConfigImage(), NyConfigImageLength());
    SetProductLanguage(&cfg);
    return ValidateWith(szNewPin, &cfg);
}

int CPinValidater::ValidateWith(const char* szPin, CConfig* pCfg) {
    // A missing value means single-class PINs are allowed here (the dialogs default to 0).
    if (pCfg->GetU4(NY_CFG_PIN_ALLOW_SINGLE_CLASS, 1u) == 0 && IsOnlyCharsOrNumbers(szPin)) {
        return VALIDATE_RESULT_ONLY_CHARS_OR_NUMBERS;
    }
    if (AreThereConsecutiveChars(szPin)) {
        return VALIDATE_RESULT_CONSECUTIVE;
    }
    if (AreThereSameAdjacentChars(szPin)) {
        return VALIDATE_RESULT_SAME_ADJACENT;
    }
    return VALIDATE_RESULT_OK;
}

bool CPinValidater::AreThereAscendingConsecutiveCharsFromBegin(const char* sz) {
    if (sz == nullptr || strlen(sz) < size_t(m_i4RunLength)) {
        return false;
    }
    return IsSteppedRunFromBegin(Bytes(sz), m_i4RunLength, +1);
}

bool CPinValidater::AreThereDescendingConsecutiveCharsFromBegin(const char* sz, int /*iOffset*/) {
    if (sz == nullptr || strlen(sz) < size_t(m_i4RunLength)) {
        return false;
    }
    return IsSteppedRunFromBegin(Bytes(sz), m_i4RunLength, -1);
}

bool CPinValidater::AreThereConsecutiveChars(const char* sz) {
    if (sz == nullptr) {
        return false;
    }
    for (size_t i = 0; sz[i] != '\0'; ++i) {
        if (AreThereAscendingConsecutiveCharsFromBegin(sz + i) ||
            AreThereDescendingConsecutiveCharsFromBegin(sz + i, int(i))) {
            return true;
        }
    }
    return false;
}

bool CPinValidater::AreThereSameAdjacentCharsFromBegin(const char* sz) {
    if (sz == nullptr || strlen(sz) < size_t(m_i4RunLength)) {
        return false;
    }
    for (int i = 1; i < m_i4RunLength; ++i) {
        if (sz[i] != sz[0]) {
            return false;
        }
    }
    return true;
}

bool CPinValidater::AreThereSameAdjacentChars(const char* sz) {
    if (sz == nullptr) {
        return false;
    }
    for (size_t i = 0; sz[i] != '\0'; ++i) {
        if (AreThereSameAdjacentCharsFromBegin(sz + i)) {
            return true;
        }
    }
    return false;
}

bool CPinValidater::IsOnlyCharsOrNumbers(const char* sz) {
    if (sz == nullptr) {
        return false;
    }
    bool bAllLetters = true;
    bool bAllDigits = true;
    for (const unsigned char* pu1 = Bytes(sz); *pu1 != '\0'; ++pu1) {
        bAllLetters = bAllLetters && IsLetter(*pu1);
        bAllDigits = bAllDigits && IsDigit(*pu1);
    }
    return bAllLetters || bAllDigits;
}

bool CPinValidater::IsSameAdjacentString(const char* sz) {
    if (sz == nullptr || strlen(sz) < size_t(m_i4RunLength)) {
        return false;
    }
    for (size_t i = 1; sz[i] != '\0'; ++i) {
        if (sz[i] != sz[0]) {
            return false;
        }
    }
    return true;
}

bool CPinValidater::IsAscendingConsecutiveString(const char* sz) {
    if (sz == nullptr || strlen(sz) < size_t(m_i4RunLength)) {
        return false;
    }
    const unsigned char* pu1 = Bytes(sz);
    size_t cch = strlen(sz);
    for (size_t i = 1; i < cch; ++i) {
        if (i == cch - 1 && pu1[i - 1] == '9' && pu1[i] == '0') {
            return true;
        }
        if (size_t(pu1[i]) != size_t(pu1[0]) + i) {
            return false;
        }
    }
    return true;
}

bool CPinValidater::IsDescendingConsecutiveString(const char* sz, int iOffset) {
    if (sz == nullptr || strlen(sz) < size_t(m_i4RunLength)) {
        return false;
    }
    const unsigned char* pu1 = Bytes(sz);
    int iLen = int(strlen(sz));
    for (int i = 1; i < iLen; ++i) {
        if (i == iLen - 1 && iOffset >= 1 && pu1[0] == '9' && pu1[1] == '8' && pu1[-1] == '0') {
            return true;
        }
        if (int(pu1[i]) != int(pu1[0]) - i) {
            return false;
        }
    }
    return true;
}

bool CPinValidater::IsOnlySpecialCharaters(const char* sz) {
    if (sz == nullptr) {
        return false;
    }
    for (const unsigned char* pu1 = Bytes(sz); *pu1 != '\0'; ++pu1) {
        // The upper-case range tested here is two letters wide, 'A' to 'B'.
        if (IsLower(*pu1) || IsDigit(*pu1) || (*pu1 >= 'A' && *pu1 <= 'B')) {
            return false;
        }
    }
    return true;
}

bool CPinValidater::IsUnrepeatedCharsTooFew(const char* sz) {
    if (sz == nullptr) {
        return false;
    }
    bool abSeen[256] = {};
    int iDistinct = 0;
    for (const unsigned char* pu1 = Bytes(sz); *pu1 != '\0'; ++pu1) {
        if (!abSeen[*pu1]) {
            abSeen[*pu1] = true;
            ++iDistinct;
        }
    }
    return iDistinct < m_i4MinDistinct;
}

// True when pu1[i] minus the i-th doubled step (0,0,1,1,2,2,... or its reverse) is the same
// for all cb bytes; cb is even.
bool CPinValidater::DoubledStepsEqual(const unsigned char* pu1, size_t cb, bool bAscending) const {
    size_t cPairs = cb / 2;
    int iFirst = 0;
    for (size_t i = 0; i < cb; ++i) {
        int iStep = int(bAscending ? i / 2 : cPairs - 1 - i / 2);
        int iDiff = int(pu1[i]) - iStep;
        if (i == 0) {
            iFirst = iDiff;
        } else if (iDiff != iFirst) {
            return false;
        }
    }
    return true;
}

bool CPinValidater::AreThereRedupConsecutiveCharsFromBegin(const char* sz, bool bAscending) {
    if (sz == nullptr || strlen(sz) < size_t(m_i4RunLength)) {
        return false;
    }
    return DoubledStepsEqual(Bytes(sz), size_t(m_i4RunLength / 2) * 2, bAscending);
}

bool CPinValidater::AreThereRedupConsecutiveChars(const char* sz) {
    if (sz == nullptr) {
        return false;
    }
    for (size_t i = 0; sz[i] != '\0'; ++i) {
        if (AreThereRedupConsecutiveCharsFromBegin(sz + i, true) ||
            AreThereRedupConsecutiveCharsFromBegin(sz + i, false)) {
            return true;
        }
    }
    return false;
}

bool CPinValidater::IsRedupConsecutiveString(const char* sz, bool bAscending) {
    if (sz == nullptr || strlen(sz) < size_t(m_i4RunLength)) {
        return false;
    }
    size_t cch = strlen(sz);
    size_t cb = cch + cch % 2;
    if (cb >= NY_PIN_REDUP_BUFFER) {
        return false;
    }
    unsigned char au1Copy[NY_PIN_REDUP_BUFFER] = {};
    memcpy(au1Copy, sz, cch);
    if (cch % 2 != 0) {
        au1Copy[cch] = NY_PIN_REDUP_PAD;
    }
    return DoubledStepsEqual(au1Copy, cb, bAscending);
}

int CPinValidater::CheckStrength(const char* sz) {
    if (sz == nullptr) {
        return NY_PIN_STRENGTH_NONE;
    }
    if (AreThereConsecutiveChars(sz)) {
        return NY_PIN_STRENGTH_WEAK;
    }
    unsigned int u4Mask = 0;
    for (const unsigned char* pu1 = Bytes(sz); *pu1 != '\0'; ++pu1) {
        if (IsDigit(*pu1)) {
            u4Mask |= NY_PIN_CLASS_DIGIT;
        } else if (IsUpper(*pu1)) {
            u4Mask |= NY_PIN_CLASS_UPPER;
        } else if (IsLower(*pu1)) {
            u4Mask |= NY_PIN_CLASS_LOWER;
        } else {
            u4Mask |= NY_PIN_CLASS_OTHER;
        }
    }
    switch (HowManyTypes(u4Mask)) {
        case 1:
            return NY_PIN_STRENGTH_WEAK;
        case 2:
            return NY_PIN_STRENGTH_MEDIUM;
        default:
            return NY_PIN_STRENGTH_FAIR;
    }
}

unsigned int CPinValidater::ResultToMsgString(int iResult, char* szBuf, int iSize, CConfig* pCfg) {
    if (szBuf == nullptr || iSize < 1 || pCfg == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    szBuf[0] = '\0';
    unsigned int u4Id = MessageIdOf(iResult, pCfg);
    if (u4Id == 0) {
        return NY_OK;
    }
    unsigned int u4Result = pCfg->GetString(u4Id, szBuf, unsigned(iSize));
    if (u4Result != NY_OK) {
        szBuf[0] = '\0';
    }
    return u4Result;
}
