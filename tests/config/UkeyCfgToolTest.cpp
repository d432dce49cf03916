// ukey-cfg as support staff run it: outputs and exit codes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "NyVersion.h"
#include "support/NyTestProcess.h"
#include "support/NyTestRun.h"

namespace {

std::string Usage(const std::string& strReason) {
    return "ukey-cfg: " + strReason + "\nTry 'ukey-cfg --help'.\n";
}

BlkTestRunTag RunTool(std::vector<std::string> vArgs) {
    vArgs.insert(vArgs.begin(), NyTestBinPath("ukey-cfg"));
    return NyTestRun(vArgs, 10000);
}

TEST(UkeyCfgTool, ShowsEntriesAndSummaryOrWhyNotWithItsExitStatus) {
    struct {
        std::vector<std::string> vArgs;
        int iExit;
        std::string strOutput;
    } const aCases[] = {
        {{"info"},
         0,
         "image: 33896 bytes, 330 entries\n"
         "group 0: 72 text, 8 u8, 2 u32, 3 raw\n"
         "group 1: 5 text, 26 u8, 34 u32, 1 raw\n"
         "group 2: 171 text, 5 u8, 1 u16, 2 u32\n"},
        {{"--lang=en", "get", "0x0021007E"}, 0, "Please input UKey PIN (6-16 chars)\n"},
        {{"get", "0x0021007E"}, 0, "请输入UKey密码（6-16字符）\n"},
        {{"get", "0021007e", "--raw", "--lang", "zh-TW"},
         0,
         "請輸入$(0x00010002)$(0x00010003)（$(0x00020010)-$(0x00020011)字符）\n"},
        {{"get", "0x00020011"}, 0, "16\n"},
        {{"get", "0x00220008", "--raw"}, 0, "1\n"},
        {{"get", "0x0000001C"}, 0, "A0 00 00 06 47 48 4C 55 4B 01\n"},
        {{"get", "0x00010999"}, 1, "ukey-cfg: no entry 0x00010999\n"},
        {{"get", "0x00040010"}, 1, "ukey-cfg: 0x00040010 is stored with another type\n"},
        {{"get", "0x00820001"}, 1, "ukey-cfg: no entry 0x00820001\n"},
        {{"--version"}, 0, "ukey-cfg " NY_VERSION_STRING "\n"},
        // Malformed command lines: one line and a hint.
        {{}, 2, Usage("no command given")},
        {{"frobnicate"}, 2, Usage("unknown command 'frobnicate'")},
        {{"get"}, 2, Usage("get needs an id")},
        {{"get", "zz"}, 2, Usage("bad id 'zz' (expected hexadecimal such as 0x0021007E)")},
        {{"get", "0x"}, 2, Usage("bad id '0x' (expected hexadecimal such as 0x0021007E)")},
        {{"get", "0x100210070"},
         2,
         Usage("bad id '0x100210070' (expected hexadecimal such as 0x0021007E)")},
        {{"get", "0x0021007E", "--lang", "fr"}, 2, Usage("--lang takes zh-CN, en or zh-TW")},
        {{"get", "0x0021007E", "extra"}, 2, Usage("unexpected argument 'extra'")},
        {{"list", "--raw"}, 2, Usage("--raw is for get only")},
        {{"info", "--lang", "en"}, 2, Usage("info takes no --lang")},
    };
    for (const auto& c : aCases) {
        BlkTestRunTag run = RunTool(c.vArgs);
        EXPECT_EQ(c.iExit, run.iExit) << c.vArgs.back();
        EXPECT_EQ(c.strOutput, run.strOutput);
    }
}

}  // namespace
