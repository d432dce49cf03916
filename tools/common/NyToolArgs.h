// The command line of every ukey tool, parsed the same way: getopt_long with "--opt=value" and
// "--opt value" (and "-xVALUE", "-x VALUE" for short ones), options and operands in any order,
// "--" ending the options, --help and --version built in. After a usage error a tool prints one
// line and a hint to --help, and exits with NY_TOOL_EXIT_USAGE.
#pragma once

#include <functional>
#include <string>
#include <vector>

constexpr int NY_TOOL_EXIT_USAGE = 2;

// One option of a tool's table.
struct BlkToolOptionTag {
    const char* szLong;       // "level"
    char chShort;             // 'l', or 0 when it has no short form
    const char* szValueName;  // "LEVEL"; null for a flag
    const char* szHelp;       // one line
};

// What the command line asked for.
enum EnToolParse { NY_TOOL_RUN, NY_TOOL_HELP, NY_TOOL_VERSION, NY_TOOL_BAD };

// Applies option vOptions[uIndex] with its value (null for a flag). False with a sentence in
// *pstrError when the value is not acceptable.
typedef std::function<bool(size_t uIndex, const char* szValue, std::string* pstrError)>
    FnToolOption;

// Parses argv[1..argc-1] (argv[0] names the tool or the subcommand). Operands are appended to
// *pvOperands. NY_TOOL_BAD comes with a sentence in *pstrError. argv may be reordered.
EnToolParse NyToolParseArgs(int argc, char** argv, const std::vector<BlkToolOptionTag>& vOptions,
                            const FnToolOption& fnApply, std::vector<std::string>* pvOperands,
                            std::string* pstrError);

// Help lines of the options, "  -l, --level LEVEL   text", --help and --version included.
std::string NyToolOptionHelp(const std::vector<BlkToolOptionTag>& vOptions);

// "NAME VERSION\n", the version of the build.
std::string NyToolVersionLine(const char* szTool);

// Prints "TOOL: ERROR" and "Try 'TOOL --help'." on stderr; returns NY_TOOL_EXIT_USAGE.
int NyToolUsageError(const char* szTool, const std::string& strError);
