// PIN policy verdicts, the rule predicates and the messages for the verdicts.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "CConfig.h"
#include "CPinValidater.h"
#include "runtime/NyResult.h"
#include "support/NyTestConfig.h"

namespace {

// The message of a verdict as the configuration gives it.
std::string Text(CConfig* pCfg, unsigned int u4Id) {
    char sz[1024] = {};
    EXPECT_EQ(pCfg->GetString(u4Id, sz, sizeof(sz)), NY_OK) << std::hex << u4Id;
    return sz;
}

struct BlkValidateCaseTag {
    const char* szOld;
    const char* szNew;
    const char* szConfirm;
    int iExpected;
};

void ExpectVerdicts(CPinValidater* pValidater, const std::vector<BlkValidateCaseTag>& vCases) {
    for (const BlkValidateCaseTag& c : vCases) {
        EXPECT_EQ(pValidater->Validate(c.szOld, c.szNew, c.szConfirm), c.iExpected)
            << "old " << (c.szOld ? c.szOld : "(null)") << " new " << (c.szNew ? c.szNew : "(null)")
            << " confirm " << (c.szConfirm ? c.szConfirm : "(null)");
    }
}

TEST(CPinValidater, VerdictsWhenSingleClassPinsAreAllowed) {
    CNyTestConfig cfg;  // the product allows letters-only and digits-only PINs
    CPinValidater validater(cfg.Get());
    ExpectVerdicts(&validater, {
                                   {"000000", "abc123", "abc12", VALIDATE_RESULT_CONFIRM_DIFFERS},
                                   {"000000", "abc12", "abc123", VALIDATE_RESULT_CONFIRM_DIFFERS},
                                   {"abc123", "abc123", "abc124", VALIDATE_RESULT_CONFIRM_DIFFERS},
                                   {"123456", "123456", "123456", VALIDATE_RESULT_SAME_AS_OLD},
                                   {"1234567", "123456", "123456", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "123456", "123456", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "111111", "111111", VALIDATE_RESULT_SAME_ADJACENT},
                                   {"x", "1234561", "1234561", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "12345", "12345", VALIDATE_RESULT_OK},
                                   {"x", "123457", "123457", VALIDATE_RESULT_OK},
                                   {"x", "890123", "890123", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "567890", "567890", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "890124", "890124", VALIDATE_RESULT_OK},
                                   {"x", "zyxwvu", "zyxwvu", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "654321", "654321", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "210987", "210987", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "cbazyx", "cbazyx", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "xyzabc", "xyzabc", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "XYZABC", "XYZABC", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "qwXYZABCrt", "qwXYZABCrt", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "xyzABC", "xyzABC", VALIDATE_RESULT_OK},
                                   {"x", "789ABC", "789ABC", VALIDATE_RESULT_OK},
                                   {"x", "!\"#$%&", "!\"#$%&", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "9:;<=>", "9:;<=>", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "1aaaaaa", "1aaaaaa", VALIDATE_RESULT_SAME_ADJACENT},
                                   {"x", "aaaaa1", "aaaaa1", VALIDATE_RESULT_OK},
                                   {"x", "a1b2c3", "a1b2c3", VALIDATE_RESULT_OK},
                                   {"x", "qwerty", "qwerty", VALIDATE_RESULT_OK},
                                   {"x", "", "", VALIDATE_RESULT_OK},
                                   {"", "", "", VALIDATE_RESULT_SAME_AS_OLD},
                                   {nullptr, "a1b2c3", "a1b2c3", VALIDATE_RESULT_OK},
                                   {"x", nullptr, "a1b2c3", VALIDATE_RESULT_NULL},
                                   {"x", "a1b2c3", nullptr, VALIDATE_RESULT_CONFIRM_DIFFERS},
                               });
    EXPECT_EQ(validater.Validate(nullptr), VALIDATE_RESULT_NULL);
}

TEST(CPinValidater, SingleClassRuleComesFirstWhenForbidden) {
    CNyTestConfig cfg(CNyTestConfig::With(NY_CFG_PIN_ALLOW_SINGLE_CLASS, 0));
    CPinValidater validater(cfg.Get());
    ExpectVerdicts(&validater, {
                                   {"x", "abcdef", "abcdef", VALIDATE_RESULT_ONLY_CHARS_OR_NUMBERS},
                                   {"x", "123456", "123456", VALIDATE_RESULT_ONLY_CHARS_OR_NUMBERS},
                                   {"x", "12345", "12345", VALIDATE_RESULT_ONLY_CHARS_OR_NUMBERS},
                                   {"x", "qwERty", "qwERty", VALIDATE_RESULT_ONLY_CHARS_OR_NUMBERS},
                                   {"x", "", "", VALIDATE_RESULT_ONLY_CHARS_OR_NUMBERS},
                                   {"abcdef", "abcdef", "abcdef", VALIDATE_RESULT_SAME_AS_OLD},
                                   {"x", "abc123", "abc123", VALIDATE_RESULT_OK},
                                   {"x", "1abcdef", "1abcdef", VALIDATE_RESULT_CONSECUTIVE},
                                   {"x", "1aaaaaa", "1aaaaaa", VALIDATE_RESULT_SAME_ADJACENT},
                                   {"x", "q!w@e#", "q!w@e#", VALIDATE_RESULT_OK},
                               });
}

TEST(CPinValidater, MissingSingleClassSettingAllowsSingleClassPins) {
    CNyTestConfig cfg(CNyTestConfig::Without(NY_CFG_PIN_ALLOW_SINGLE_CLASS));
    CPinValidater validater(cfg.Get());
    EXPECT_EQ(validater.Validate("qwerty"), VALIDATE_RESULT_OK);
    // The message mapping reads the same setting with default 0: it has a text for 12.
    char sz[1024];
    EXPECT_EQ(CPinValidater::ResultToMsgString(VALIDATE_RESULT_ONLY_CHARS_OR_NUMBERS, sz,
                                               sizeof(sz), cfg.Get()),
              NY_OK);
    EXPECT_STREQ(sz, "密码不能全部是数字或全部是字母");
}

TEST(CPinValidater, DefaultConstructionReadsTheBuiltInConfiguration) {
    CPinValidater validater;
    EXPECT_EQ(validater.Validate("qwerty"), VALIDATE_RESULT_OK);
    EXPECT_EQ(validater.Validate("x", "qw1111111", "qw1111111"), VALIDATE_RESULT_SAME_ADJACENT);
}

struct BlkPredicateCaseTag {
    const char* szInput;
    bool bExpected;
};

template <typename Fn>
void ExpectPredicate(const char* szName, Fn fn, const std::vector<BlkPredicateCaseTag>& vCases) {
    for (const BlkPredicateCaseTag& c : vCases) {
        EXPECT_EQ(fn(c.szInput), c.bExpected)
            << szName << "(" << (c.szInput ? c.szInput : "(null)") << ")";
    }
}

TEST(CPinValidater, RunPredicates) {
    CPinValidater v;
    ExpectPredicate("AreThereConsecutiveChars",
                    [&](const char* s) { return v.AreThereConsecutiveChars(s); },
                    {{nullptr, false}, {"", false}, {"12345", false}, {"xx987654", true}});
    ExpectPredicate("AreThereAscendingConsecutiveCharsFromBegin",
                    [&](const char* s) { return v.AreThereAscendingConsecutiveCharsFromBegin(s); },
                    {{"x123456", false},
                     {"123456x", true},
                     {"654321", false},
                     {"9012ab", false},
                     {"yzabcd", true},
                     {"YZABCD", true},
                     {"89:;<=", true},
                     {"8901 3", false}});
    ExpectPredicate(
        "AreThereDescendingConsecutiveCharsFromBegin",
        [&](const char* s) { return v.AreThereDescendingConsecutiveCharsFromBegin(s, 3); },
        {{"123456", false}, {"fedcba", true}, {"BAZYXW", true}, {"x654321", false}});
    ExpectPredicate("AreThereSameAdjacentChars",
                    [&](const char* s) { return v.AreThereSameAdjacentChars(s); },
                    {{"", false}, {"aaaaa", false}, {"abaaaaaa", true}, {"aaaaabaaaaa", false}});
    ExpectPredicate("IsOnlyCharsOrNumbers",
                    [&](const char* s) { return v.IsOnlyCharsOrNumbers(s); },
                    {{nullptr, false},
                     {"", true},
                     {"aBcD", true},
                     {"0123", true},
                     {"a1", false},
                     {"ab!", false},
                     {"12 3", false}});
}

TEST(CPinValidater, WholeStringPredicatesKeepTheirQuirks) {
    CPinValidater v;
    ExpectPredicate("IsSameAdjacentString",
                    [&](const char* s) { return v.IsSameAdjacentString(s); },
                    {{"aaaaaa", true}, {"aaaaaaaa", true}, {"aaaaa", false}, {"aaaaaab", false}});
    ExpectPredicate("IsAscendingConsecutiveString",
                    [&](const char* s) { return v.IsAscendingConsecutiveString(s); },
                    {{"123456", true},
                     {"abcdefgh", true},
                     {"12345", false},
                     {"567890", true},
                     {"5678901", false},
                     {"123457", false}});
    ExpectPredicate("IsOnlySpecialCharaters",
                    [&](const char* s) { return v.IsOnlySpecialCharaters(s); },
                    {{nullptr, false},
                     {"", true},
                     {"!@#$", true},
                     {"!a", false},
                     {"!1", false},
                     {"!A", false},
                     {"!B", false},
                     {"!C", true},
                     {"XYZ", true}});
    ExpectPredicate(
        "IsUnrepeatedCharsTooFew", [&](const char* s) { return v.IsUnrepeatedCharsTooFew(s); },
        {{nullptr, false}, {"", true}, {"aab", true}, {"abc", false}, {"aaaaaaa", true}});
    // The descending whole-string walk peeks at the byte before the string when told it has one.
    const char* szCaller = "098765X";
    EXPECT_TRUE(v.IsDescendingConsecutiveString(szCaller + 1, 1));
    EXPECT_FALSE(v.IsDescendingConsecutiveString(szCaller + 1, 0));
    EXPECT_TRUE(v.IsDescendingConsecutiveString("987654", 0));
    EXPECT_FALSE(v.IsDescendingConsecutiveString("98765", 0));
}

TEST(CPinValidater, DoubledStepPredicates) {
    CPinValidater v;
    ExpectPredicate(
        "AreThereRedupConsecutiveCharsFromBegin ascending",
        [&](const char* s) { return v.AreThereRedupConsecutiveCharsFromBegin(s, true); },
        {{"112233", true},
         {"aabbccd", true},
         {"11223", false},
         {"332211", false},
         {"112234", false},
         {"111111", false}});
    ExpectPredicate(
        "AreThereRedupConsecutiveCharsFromBegin descending",
        [&](const char* s) { return v.AreThereRedupConsecutiveCharsFromBegin(s, false); },
        {{"332211", true}, {"112233", false}});
    ExpectPredicate(
        "AreThereRedupConsecutiveChars",
        [&](const char* s) { return v.AreThereRedupConsecutiveChars(s); },
        {{nullptr, false}, {"", false}, {"x112233", true}, {"x332211y", true}, {"121212", false}});
    ExpectPredicate("IsRedupConsecutiveString ascending",
                    [&](const char* s) { return v.IsRedupConsecutiveString(s, true); },
                    {{"112233", true},
                     {"11223344", true},
                     {"1122334", false},
                     {"1122333", false},
                     {"332211", false},
                     {"aabbccddeeffgghhiijjkkllmmnnoopp", true},
                     {"aabbccddeeffgghhiijjkkllmmnnooppqq", false}});
    // An odd length is padded with 0x01: only a run that ends just before it fits.
    EXPECT_TRUE(v.IsRedupConsecutiveString("\x04\x04\x03\x03\x02\x02\x01", false));
    EXPECT_TRUE(v.IsRedupConsecutiveString("332211", false));
}

TEST(CPinValidater, StrengthFromRunsAndCharacterClasses) {
    CPinValidater v;
    const struct {
        const char* sz;
        int iStrength;
    } aCases[] = {{nullptr, 0},  {"123456", 3}, {"135792", 3}, {"a1c3e5", 2}, {"a!c!e!", 2},
                  {"aB3d5F", 1}, {"aB3!", 1},   {"", 1},       {"qwerty", 3}, {"ZYXWVU", 3}};
    for (const auto& c : aCases) {
        EXPECT_EQ(v.CheckStrength(c.sz), c.iStrength) << (c.sz ? c.sz : "(null)");
    }
    const struct {
        unsigned int u4Mask;
        int iCount;
    } aMasks[] = {{0, 0}, {1, 1}, {0xA, 2}, {0xF, 4}, {0x10, 0}, {0xFFFFFFF7u, 3}};
    for (const auto& c : aMasks) {
        EXPECT_EQ(HowManyTypes(c.u4Mask), c.iCount) << std::hex << c.u4Mask;
    }
}

TEST(CPinValidater, EveryVerdictMapsToItsMessage) {
    CNyTestConfig cfg;
    CNyTestConfig forbidding(CNyTestConfig::With(NY_CFG_PIN_ALLOW_SINGLE_CLASS, 0));
    const struct {
        int iResult;
        unsigned int u4Id;  // 0: no message
        CNyTestConfig* pCfg;
    } aCases[] = {
        {0, 0x00210089, &cfg},  {1, 0, &cfg},
        {2, 0x0021008A, &cfg},  {3, 0x0021008B, &cfg},
        {4, 0x0021008C, &cfg},  {5, 0x0021008D, &cfg},
        {6, 0x0021008E, &cfg},  {7, 0x0021008F, &cfg},
        {8, 0, &cfg},           {9, 0, &cfg},
        {10, 0x00210092, &cfg}, {11, 0x00210093, &cfg},
        {12, 0, &cfg},          {12, 0x00210091, &forbidding},
        {13, 0, &cfg},          {-1, 0, &cfg},
    };
    for (const auto& c : aCases) {
        char sz[1024];
        memset(sz, 'x', sizeof(sz));
        EXPECT_EQ(CPinValidater::ResultToMsgString(c.iResult, sz, sizeof(sz), c.pCfg->Get()),
                  NY_OK);
        EXPECT_EQ(sz, c.u4Id == 0 ? std::string() : Text(c.pCfg->Get(), c.u4Id)) << c.iResult;
    }
    char sz[64];
    ASSERT_EQ(CPinValidater::ResultToMsgString(11, sz, sizeof(sz), cfg.Get()), NY_OK);
    EXPECT_STREQ(sz, "两次输入的新密码不一致，请重新输入！");
}

TEST(CPinValidater, MessageIntoABadOrShortBuffer) {
    CNyTestConfig cfg;
    char sz[16] = "untouched";
    EXPECT_EQ(CPinValidater::ResultToMsgString(11, nullptr, 16, cfg.Get()),
              NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(CPinValidater::ResultToMsgString(11, sz, 0, cfg.Get()), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(CPinValidater::ResultToMsgString(11, sz, sizeof(sz), nullptr),
              NY_ERR_INVALID_ARGUMENT);
    EXPECT_STREQ(sz, "untouched");
    EXPECT_EQ(CPinValidater::ResultToMsgString(11, sz, sizeof(sz), cfg.Get()),
              NY_ERR_BUFFER_TOO_SMALL);
    EXPECT_STREQ(sz, "") << "no partial message";
}

}  // namespace
