// PIN policy verdicts, the rule predicates and the messages for the verdicts.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
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

// New PINs confirmed as typed, against an unrelated old PIN.
void ExpectPinVerdicts(CPinValidater* pValidater,
                       const std::vector<std::pair<const char*, int>>& vCases) {
    for (const auto& c : vCases) {
        EXPECT_EQ(pValidater->Validate("x", c.first, c.first), c.second) << c.first;
    }
}

constexpr int OK = VALIDATE_RESULT_OK;
constexpr int RUN = VALIDATE_RESULT_CONSECUTIVE;
constexpr int SAME = VALIDATE_RESULT_SAME_ADJACENT;
constexpr int OLD = VALIDATE_RESULT_SAME_AS_OLD;
constexpr int DIFFERS = VALIDATE_RESULT_CONFIRM_DIFFERS;
constexpr int ONE_CLASS = VALIDATE_RESULT_ONLY_CHARS_OR_NUMBERS;

TEST(CPinValidater, VerdictsWhenSingleClassPinsAreAllowed) {
    CNyTestConfig cfg;  // the product allows letters-only and digits-only PINs
    CPinValidater validater(cfg.Get());
    // clang-format off
    ExpectPinVerdicts(&validater, {
        {"123456", RUN}, {"111111", SAME}, {"1234561", RUN}, {"12345", OK}, {"123457", OK},
        {"890123", RUN}, {"567890", RUN}, {"890124", OK}, {"zyxwvu", RUN}, {"654321", RUN},
        {"210987", RUN}, {"cbazyx", RUN}, {"xyzabc", RUN}, {"XYZABC", RUN}, {"qwXYZABCrt", RUN},
        {"xyzABC", OK}, {"789ABC", OK}, {"!\"#$%&", RUN}, {"9:;<=>", RUN}, {"1aaaaaa", SAME},
        {"aaaaa1", OK}, {"a1b2c3", OK}, {"qwerty", OK}, {"", OK}});
    // clang-format on
    EXPECT_EQ(validater.Validate(nullptr), VALIDATE_RESULT_NULL);
    // Default construction reads the built-in configuration.
    EXPECT_EQ(CPinValidater().Validate("x", "qw1111111", "qw1111111"), SAME);
}

TEST(CPinValidater, SingleClassRuleComesFirstWhenForbiddenAndAMissingSettingAllowsIt) {
    CNyTestConfig cfg(CNyTestConfig::With(NY_CFG_PIN_ALLOW_SINGLE_CLASS, 0));
    CPinValidater validater(cfg.Get());
    // clang-format off
    ExpectPinVerdicts(&validater, {
        {"abcdef", ONE_CLASS}, {"123456", ONE_CLASS}, {"12345", ONE_CLASS}, {"qwERty", ONE_CLASS},
        {"", ONE_CLASS}, {"abc123", OK}, {"1abcdef", RUN}, {"1aaaaaa", SAME}, {"q!w@e#", OK}});
    // clang-format on
    EXPECT_EQ(validater.Validate("abcdef", "abcdef", "abcdef"), OLD);

    CNyTestConfig cfgMissing(CNyTestConfig::Without(NY_CFG_PIN_ALLOW_SINGLE_CLASS));
    EXPECT_EQ(CPinValidater(cfgMissing.Get()).Validate("qwerty"), OK);
    // The message mapping reads the same setting with default 0: it has a text for 12.
    char sz[1024];
    EXPECT_EQ(CPinValidater::ResultToMsgString(ONE_CLASS, sz, sizeof(sz), cfgMissing.Get()), NY_OK);
    EXPECT_STREQ(sz, "密码不能全部是数字或全部是字母");
}

// A predicate over the inputs it must refuse and those it must accept (nullptr among them);
// fn is a member taking the text and then the given further arguments.
template <typename Fn, typename... Args>
void ExpectPredicate(const char* szName, Fn fn, const std::vector<const char*>& vFalse,
                     const std::vector<const char*>& vTrue, Args... args) {
    CPinValidater v;
    for (bool bExpected : {false, true}) {
        for (const char* sz : bExpected ? vTrue : vFalse) {
            EXPECT_EQ(std::invoke(fn, v, sz, args...), bExpected)
                << szName << "(" << (sz ? sz : "(null)") << ")";
        }
    }
}

TEST(CPinValidater, RunWholeStringAndDoubledStepPredicatesAndStrength) {
    CPinValidater v;
    ExpectPredicate("AreThereConsecutiveChars", &CPinValidater::AreThereConsecutiveChars,
                    {nullptr, "", "12345"}, {"xx987654"});
    ExpectPredicate("AreThereAscendingConsecutiveCharsFromBegin",
                    &CPinValidater::AreThereAscendingConsecutiveCharsFromBegin,
                    {"x123456", "654321", "9012ab", "8901 3"},
                    {"123456x", "yzabcd", "YZABCD", "89:;<="});
    ExpectPredicate("AreThereDescendingConsecutiveCharsFromBegin",
                    &CPinValidater::AreThereDescendingConsecutiveCharsFromBegin,
                    {"123456", "x654321"}, {"fedcba", "BAZYXW"}, 3);
    ExpectPredicate("AreThereSameAdjacentChars", &CPinValidater::AreThereSameAdjacentChars,
                    {"", "aaaaa", "aaaaabaaaaa"}, {"abaaaaaa"});
    ExpectPredicate("IsOnlyCharsOrNumbers", &CPinValidater::IsOnlyCharsOrNumbers,
                    {nullptr, "a1", "ab!", "12 3"}, {"", "aBcD", "0123"});
    // Whole-string predicates keep their quirks.
    ExpectPredicate("IsSameAdjacentString", &CPinValidater::IsSameAdjacentString,
                    {"aaaaa", "aaaaaab"}, {"aaaaaa", "aaaaaaaa"});
    ExpectPredicate("IsAscendingConsecutiveString", &CPinValidater::IsAscendingConsecutiveString,
                    {"12345", "5678901", "123457"}, {"123456", "abcdefgh", "567890"});
    ExpectPredicate("IsOnlySpecialCharaters", &CPinValidater::IsOnlySpecialCharaters,
                    {nullptr, "!a", "!1", "!A", "!B"}, {"", "!@#$", "!C", "XYZ"});
    ExpectPredicate("IsUnrepeatedCharsTooFew", &CPinValidater::IsUnrepeatedCharsTooFew,
                    {nullptr, "abc"}, {"", "aab", "aaaaaaa"});
    // The descending whole-string walk peeks at the byte before the string when told it has one.
    const char* szCaller = "098765X";
    EXPECT_TRUE(v.IsDescendingConsecutiveString(szCaller + 1, 1));
    EXPECT_FALSE(v.IsDescendingConsecutiveString(szCaller + 1, 0));
    EXPECT_TRUE(v.IsDescendingConsecutiveString("987654", 0));
    EXPECT_FALSE(v.IsDescendingConsecutiveString("98765", 0));
    // Doubled steps.
    ExpectPredicate("AreThereRedupConsecutiveCharsFromBegin ascending",
                    &CPinValidater::AreThereRedupConsecutiveCharsFromBegin,
                    {"11223", "332211", "112234", "111111"}, {"112233", "aabbccd"}, true);
    ExpectPredicate("AreThereRedupConsecutiveCharsFromBegin descending",
                    &CPinValidater::AreThereRedupConsecutiveCharsFromBegin, {"112233"}, {"332211"},
                    false);
    ExpectPredicate("AreThereRedupConsecutiveChars", &CPinValidater::AreThereRedupConsecutiveChars,
                    {nullptr, "", "121212"}, {"x112233", "x332211y"});
    ExpectPredicate("IsRedupConsecutiveString ascending", &CPinValidater::IsRedupConsecutiveString,
                    {"1122334", "1122333", "332211", "aabbccddeeffgghhiijjkkllmmnnooppqq"},
                    {"112233", "11223344", "aabbccddeeffgghhiijjkkllmmnnoopp"}, true);
    // An odd length is padded with 0x01: only a run that ends just before it fits.
    EXPECT_TRUE(v.IsRedupConsecutiveString("\x04\x04\x03\x03\x02\x02\x01", false));
    EXPECT_TRUE(v.IsRedupConsecutiveString("332211", false));
    // Strength from runs and character classes.
    const struct {
        const char* sz;
        int iStrength;
    } aCases[] = {{nullptr, 0},  {"123456", 3}, {"135792", 3}, {"a1c3e5", 2}, {"a!c!e!", 2},
                  {"aB3d5F", 1}, {"aB3!", 1},   {"", 1},       {"qwerty", 3}, {"ZYXWVU", 3}};
    for (const auto& c : aCases) {
        EXPECT_EQ(v.CheckStrength(c.sz), c.iStrength) << (c.sz ? c.sz : "(null)");
    }
    const std::pair<unsigned int, int> aMasks[] = {{0, 0},   {1, 1},    {0xA, 2},
                                                   {0xF, 4}, {0x10, 0}, {0xFFFFFFF7u, 3}};
    for (const auto& c : aMasks) {
        EXPECT_EQ(HowManyTypes(c.first), c.second) << std::hex << c.first;
    }
}

TEST(CPinValidater, EveryVerdictMapsToItsMessage) {
    CNyTestConfig cfg;
    CNyTestConfig forbidding(CNyTestConfig::With(NY_CFG_PIN_ALLOW_SINGLE_CLASS, 0));
    // clang-format off
    const struct {
        int iResult;
        unsigned int u4Id;  // 0: no message
        CNyTestConfig* pCfg;
    } aCases[] = {
        {0, 0x00210089, &cfg}, {1, 0, &cfg}, {2, 0x0021008A, &cfg}, {3, 0x0021008B, &cfg},
        {4, 0x0021008C, &cfg}, {5, 0x0021008D, &cfg}, {6, 0x0021008E, &cfg}, {7, 0x0021008F, &cfg},
        {8, 0, &cfg}, {9, 0, &cfg}, {10, 0x00210092, &cfg}, {11, 0x00210093, &cfg}, {12, 0, &cfg},
        {12, 0x00210091, &forbidding}, {13, 0, &cfg}, {-1, 0, &cfg}};
    // clang-format on
    for (const auto& c : aCases) {
        char sz[1024];
        memset(sz, 'x', sizeof(sz));
        EXPECT_EQ(CPinValidater::ResultToMsgString(c.iResult, sz, sizeof(sz), c.pCfg->Get()),
                  NY_OK);
        EXPECT_EQ(sz, c.u4Id == 0 ? std::string() : Text(c.pCfg->Get(), c.u4Id)) << c.iResult;
    }
    // A bad or short buffer: refused, and never a partial message.
    char sz[16] = "untouched";
    EXPECT_EQ(CPinValidater::ResultToMsgString(11, nullptr, 16, cfg.Get()),
              NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(CPinValidater::ResultToMsgString(11, sz, 0, cfg.Get()), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(CPinValidater::ResultToMsgString(11, sz, sizeof(sz), nullptr),
              NY_ERR_INVALID_ARGUMENT);
    EXPECT_STREQ(sz, "untouched");
    EXPECT_EQ(CPinValidater::ResultToMsgString(11, sz, sizeof(sz), cfg.Get()),
              NY_ERR_BUFFER_TOO_SMALL);
    EXPECT_STREQ(sz, "");
}

}  // namespace
