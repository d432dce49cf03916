// The one option parser of the tools: spellings, operands, built-ins and the usage-error text.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "NyToolArgs.h"
#include "NyVersion.h"

namespace {

const std::vector<BlkToolOptionTag> s_vOptions = {
    {"level", 'l', "LEVEL", "x"}, {"json", 'j', nullptr, "x"}, {"queue", 0, "NAME", "x"}};

// Parses vArgs; the applied options as "name=value;" (flags "name;"), the operands after a '|'.
std::string Parse(std::vector<std::string> vArgs, EnToolParse enExpected) {
    vArgs.insert(vArgs.begin(), "tool");
    std::vector<char*> vArgv;
    for (std::string& str : vArgs) {
        vArgv.push_back(&str[0]);
    }
    std::string strSeen;
    std::vector<std::string> vOperands;
    std::string strError;
    EnToolParse enParse = NyToolParseArgs(
        static_cast<int>(vArgv.size()), vArgv.data(), s_vOptions,
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
}

TEST(NyToolArgs, MistakesGiveOneSentence) {
    const struct {
        std::vector<std::string> vArgs;
        const char* szError;
    } aCases[] = {
        {{"--what"}, "unknown option '--what'"},  {{"--what=1"}, "unknown option '--what'"},
        {{"-x"}, "unknown option '-x'"},          {{"--level"}, "option --level needs a value"},
        {{"-l"}, "option --level needs a value"}, {{"--json=1"}, "option --json takes no value"},
        {{"--level", "bad"}, "refused"},
    };
    for (const auto& c : aCases) {
        EXPECT_EQ(c.szError, Parse(c.vArgs, NY_TOOL_BAD)) << c.vArgs[0];
    }
}

TEST(NyToolArgs, HelpVersionAndUsageErrorLines) {
    std::string strHelp = NyToolOptionHelp(s_vOptions);
    EXPECT_NE(std::string::npos, strHelp.find("  -l, --level LEVEL"));
    EXPECT_NE(std::string::npos, strHelp.find("      --queue NAME"));
    EXPECT_NE(std::string::npos, strHelp.find("  -h, --help"));
    EXPECT_NE(std::string::npos, strHelp.find("      --version"));
    EXPECT_EQ(std::string("tool ") + NY_VERSION_STRING + "\n", NyToolVersionLine("tool"));
    testing::internal::CaptureStderr();
    EXPECT_EQ(2, NyToolUsageError("tool", "it went wrong"));
    EXPECT_EQ("tool: it went wrong\nTry 'tool --help'.\n", testing::internal::GetCapturedStderr());
}

}  // namespace
