// Decides whether a newly chosen PIN is acceptable: runs of consecutive or identical
// characters, letters-only or digits-only PINs (when the product forbids them), a new PIN equal
// to the old one, a confirmation that differs. Works on bytes and compares character codes.
//
// Usage (the PIN dialogs): CPinValidater validater(pCfg); int r = validater.Validate(old, new,
// confirm); then CPinValidater::ResultToMsgString(r, ...) for the message shown to the user.
#pragma once

#include <cstddef>
#include <cstdint>

class CConfig;

// Verdict of Validate. 3, 4, 6 to 9 are never produced but have messages of their own.
enum EnValidateResult : int32_t {
    VALIDATE_RESULT_NULL = 0,  // no PIN given
    VALIDATE_RESULT_OK = 1,
    VALIDATE_RESULT_CONSECUTIVE = 2,          // a run of ascending or descending characters
    VALIDATE_RESULT_CONSECUTIVE_NUMBERS = 3,  // a run of consecutive digits
    VALIDATE_RESULT_CONSECUTIVE_LETTERS = 4,  // a run of consecutive letters
    VALIDATE_RESULT_SAME_ADJACENT = 5,        // a run of identical characters
    VALIDATE_RESULT_SAME_NUMBERS = 6,         // a run of identical digits
    VALIDATE_RESULT_SAME_LETTERS = 7,         // a run of identical letters
    VALIDATE_RESULT_RESERVED_8 = 8,
    VALIDATE_RESULT_RESERVED_9 = 9,
    VALIDATE_RESULT_SAME_AS_OLD = 10,
    VALIDATE_RESULT_CONFIRM_DIFFERS = 11,
    VALIDATE_RESULT_ONLY_CHARS_OR_NUMBERS = 12,
};

// Configuration values of the PIN policy (8-bit numbers of the built-in image).
// Non-zero: PINs of letters only or digits only are allowed.
constexpr unsigned int NY_CFG_PIN_ALLOW_SINGLE_CLASS = 0x00220005;
// Non-zero: weak PINs (runs) are warnings the change-PIN dialog lets pass.
constexpr unsigned int NY_CFG_PIN_ALLOW_WEAK = 0x00220008;

// Number of set bits among the low four bits of u4Mask (the character classes present).
int HowManyTypes(unsigned int u4Mask);

class CPinValidater {
public:
    // Each Validate opens its own accessor on the built-in configuration.
    CPinValidater();
    // Each Validate reads the policy from pCfg (already set to its language); the caller keeps
    // ownership. A null pCfg behaves like the default constructor.
    explicit CPinValidater(CConfig* pCfg);
    ~CPinValidater() = default;

    // The rules for one PIN, in order: null -> 0; letters/digits only while forbidden -> 12;
    // consecutive run -> 2; identical run -> 5; otherwise 1.
    int Validate(const char* szNewPin);
    // Confirmation differs -> 11; new equals old -> 10; then Validate(szNewPin). A null new PIN
    // gives 0, a null confirmation 11; a null old PIN equals nothing.
    int Validate(const char* szOldPin, const char* szNewPin, const char* szConfirmPin);

    // Rules that Validate applies. Null strings answer false.
    bool AreThereConsecutiveChars(const char* sz);
    bool AreThereAscendingConsecutiveCharsFromBegin(const char* sz);
    // iOffset is where sz starts within the caller's string; it does not change the answer.
    bool AreThereDescendingConsecutiveCharsFromBegin(const char* sz, int iOffset);
    bool AreThereSameAdjacentChars(const char* sz);
    bool AreThereSameAdjacentCharsFromBegin(const char* sz);
    bool IsOnlyCharsOrNumbers(const char* sz);

    // Rules kept for other policies; Validate does not apply them. Null strings answer false.
    bool IsSameAdjacentString(const char* sz);
    bool IsAscendingConsecutiveString(const char* sz);
    // When iOffset >= 1 the byte before sz is read (sz must point into a larger string).
    bool IsDescendingConsecutiveString(const char* sz, int iOffset);
    // Only 'A' and 'B' of the upper-case letters count as non-special (a kept quirk).
    bool IsOnlySpecialCharaters(const char* sz);
    bool IsUnrepeatedCharsTooFew(const char* sz);
    bool AreThereRedupConsecutiveChars(const char* sz);
    bool AreThereRedupConsecutiveCharsFromBegin(const char* sz, bool bAscending);
    // Over the whole string; strings of more than 32 bytes answer false.
    bool IsRedupConsecutiveString(const char* sz, bool bAscending);
    // 0 for null; 3 weak (a consecutive run, or one character class); 2 two classes; 1 none,
    // three or four classes.
    int CheckStrength(const char* sz);

    // The message for a Validate result, from the configuration: an empty string for results
    // without a message (1, 8, 9, above 12, and 12 while single-class PINs are allowed).
    // NY_ERR_INVALID_ARGUMENT for a null buffer, a size below 1 or a null pCfg; otherwise the
    // text lookup's code (an empty string when it failed).
    static unsigned int ResultToMsgString(int iResult, char* szBuf, int iSize, CConfig* pCfg);

private:
    int ValidateWith(const char* szPin, CConfig* pCfg);
    bool DoubledStepsEqual(const unsigned char* pu1, size_t cb, bool bAscending) const;

    int32_t m_i4RunLength;    // a run this long makes a PIN weak
    int32_t m_i4MinDistinct;  // fewest different characters a PIN should have
    CConfig* m_pCfg;          // shared accessor, or null to open the built-in one
};
