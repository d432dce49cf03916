// The one option parser of the tools: spellings, operands, built-ins and the usage-error text.
#include <gtest/gtest.h>

#include "NyToolArgs.h"
#include "NyVersion.h"
#include "support/NyTestRun.h"

namespace {

const std::vector<BlkToolOptionTag> s_vOptions = {
    {"level", 'l', "LEVEL", "x"}, {"json", 'j', nullptr, "x"}, {"queue", 0, "NAME", "x"}};

// The options applied, "name=value;" ("name;" for flags), then "|operand" each; or the error.
std::string Parse(const std::vector<std::string>& vArgs, EnToolParse enExpected) {
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
    EXPECT_EQ(enExpected, enParse) << strError;
    for (const std::string& str : vOperands) {
        strSeen += "|" + str;
    }
    return enParse == NY_TOOL_BAD ? strError : strSeen;
}

TEST(NyToolArgs, EverySpellingOfAnOptionAndOperandsAnywhere) {
    EXPECT_EQ("level=a;level=b;level=c;level=d;json;json;queue=/q;|op1|op2",
              Parse({"--level=a", "op1", "--level", "b", "-lc", "-l", "d", "-j", "--json",
                     "--queue", "/q", "op2"},
                    NY_TOOL_RUN));
    EXPECT_EQ("json;|--level|x", Parse({"-j", "--", "--level", "x"}, NY_TOOL_RUN));
    EXPECT_EQ("level=x;", Parse({"--lev", "x"}, NY_TOOL_RUN));  // a unique prefix
    EXPECT_EQ("json;", Parse({"-j", "--help", "--version"}, NY_TOOL_HELP));
    EXPECT_EQ("", Parse({"--version"}, NY_TOOL_VERSION));
    const std::pair<std::vector<std::string>, const char*> aBad[] = {
        {{"--what=1"}, "unknown option '--what'"},      {{"-x"}, "unknown option '-x'"},
        {{"--level"}, "option --level needs a value"},  {{"-l"}, "option --level needs a value"},
        {{"--json=1"}, "option --json takes no value"}, {{"--level", "bad"}, "refused"}};
    for (const auto& c : aBad) {
        EXPECT_EQ(c.second, Parse(c.first, NY_TOOL_BAD)) << c.first[0];
    }
}

TEST(NyToolArgs, HelpVersionAndUsageErrorLines) {
    EXPECT_EQ(
        "  -l, --level LEVEL        x\n  -j, --json               x\n"
        "      --queue NAME         x\n"
        "  -h, --help               print this help and exit\n"
        "      --version            print the name and version and exit\n",
        NyToolOptionHelp(s_vOptions));
    EXPECT_EQ(std::string("tool ") + NY_VERSION_STRING + "\n", NyToolVersionLine("tool"));
    testing::internal::CaptureStderr();
    EXPECT_EQ(2, NyToolUsageError("tool", "it went wrong"));
    EXPECT_EQ("tool: it went wrong\nTry 'tool --help'.\n", testing::internal::GetCapturedStderr());
}

}  // namespace
