// The one option parser of the tools: spellings, operands, built-ins and the usage-error text.
#include <gtest/gtest.h>

#include "NyToolArgs.h"
#include "support/NyTestRun.h"

namespace {

const std::vector<BlkToolOptionTag> s_vOptions = {
    {"level", 'l', "LEVEL", "x"}, {"json", 'j', nullptr, "x"}, {"queue", 0, "NAME", "x"}};

// "R", "H", "V" (run, help, version) then the options applied ("name=value;", "name;" for flags)
// and "|operand" each; or "B" and the error. A value "bad" is refused.
std::string Parse(const std::vector<std::string>& vArgs) {
    CNyTestArgv argv(vArgs);
    std::string strSeen;
    std::vector<std::string> vOperands;
    std::string strError;
    EnToolParse enParse = NyToolParseArgs(
        argv.Argc(), argv.Argv(), s_vOptions,
        [&strSeen](size_t uIndex, const char* szValue, std::string* pstrError) {
            *pstrError = "refused";
            strSeen += std::string(s_vOptions[uIndex].szLong) +
                       (szValue != nullptr ? std::string("=") + szValue : "") + ";";
            return szValue == nullptr || std::string(szValue) != "bad";
        },
        &vOperands, &strError);
    for (const std::string& str : vOperands) {
        strSeen += "|" + str;
    }
    return enParse == NY_TOOL_BAD ? "B " + strError : std::string(1, "RHV"[enParse]) + strSeen;
}

TEST(NyToolArgs, EverySpellingOfAnOptionOperandsAnywhereAndOneSentenceForAMistake) {
    const std::pair<std::vector<std::string>, const char*> aCases[] = {
        {{"--level=a", "op1", "--level", "b", "-lc", "-l", "d", "-j", "--json", "--queue", "/q",
          "op2"},
         "Rlevel=a;level=b;level=c;level=d;json;json;queue=/q;|op1|op2"},
        {{"-j", "--", "--level", "x"}, "Rjson;|--level|x"},
        {{"-j", "--help", "--version"}, "Hjson;"},
        {{"--version"}, "V"},
        {{"--what=1"}, "B unknown option '--what'"},
        {{"-x"}, "B unknown option '-x'"},
        {{"--level"}, "B option --level needs a value"},
        {{"-l"}, "B option --level needs a value"},
        {{"--json=1"}, "B option --json takes no value"},
        {{"--level", "bad"}, "B refused"},
    };
    for (const auto& c : aCases) {
        EXPECT_EQ(c.second, Parse(c.first));
    }
}

TEST(NyToolArgs, HelpAndUsageErrorLines) {
    EXPECT_EQ(
        "  -l, --level LEVEL        x\n  -j, --json               x\n"
        "      --queue NAME         x\n"
        "  -h, --help               print this help and exit\n"
        "      --version            print the name and version and exit\n",
        NyToolOptionHelp(s_vOptions));
    testing::internal::CaptureStderr();
    EXPECT_EQ(2, NyToolUsageError("tool", "it went wrong"));
    EXPECT_EQ("tool: it went wrong\nTry 'tool --help'.\n", testing::internal::GetCapturedStderr());
}

}  // namespace
