#include <gtest/gtest.h>

#include "NyLogViewOptions.h"
#include "runtime/NyResult.h"
#include "support/NyTestRun.h"

namespace {

uint32_t Parse(const std::vector<std::string>& vArgs, BlkLogViewOptionsTag& opts,
               std::string& strError) {
    CNyTestArgv argv(vArgs);
    return NyLogViewParseOptions(argv.Argc(), argv.Argv(), opts, strError);
}

TEST(NyLogViewOptions, ValuesAreStoredAndFiltersPeekUnlessToldToTake) {
    BlkLogViewOptionsTag opts;
    std::string strError;
    ASSERT_EQ(NY_OK, Parse({}, opts, strError));
    EXPECT_EQ("/NyShmLog-4b1a", opts.strQueue);
    EXPECT_EQ(32768u, opts.u4Capacity);
    EXPECT_FALSE(NyLogViewPeeks(opts));
    ASSERT_EQ(NY_OK, Parse({"-f", "-j", "--level=Error", "-p", "12", "--pid=34", "-q",
                            "/NyTestQueue", "--capacity=64", "--create"},
                           opts, strError))
        << strError;
    EXPECT_TRUE(opts.bFollow && opts.bJson && opts.bCreate);
    EXPECT_EQ(3u, opts.u4MinLevel);
    EXPECT_EQ((std::vector<uint32_t>{12, 34}), opts.vPids);
    EXPECT_EQ("/NyTestQueue", opts.strQueue);
    EXPECT_EQ(64u, opts.u4Capacity);
    EXPECT_TRUE(NyLogViewPeeks(opts));
    opts.bTake = true;
    EXPECT_FALSE(NyLogViewPeeks(opts));
    BlkLogViewOptionsTag peek;
    ASSERT_EQ(NY_OK, Parse({"--peek", "-l", "7"}, peek, strError));
    EXPECT_TRUE(NyLogViewPeeks(peek));
    EXPECT_EQ(7u, peek.u4MinLevel);
}

TEST(NyLogViewOptions, BadValuesAreRefusedWithAReason) {
    const std::pair<std::vector<std::string>, const char*> aCases[] = {
        {{"-l", "loud"}, "--level needs"},
        {{"-l", "-1"}, "--level needs"},
        {{"-p", "0"}, "--pid needs"},
        {{"-p", "12x"}, "--pid needs"},
        {{"-p", "4294967296"}, "--pid needs"},
        {{"-c", "48"}, "--capacity needs"},
        {{"-c", "2"}, "--capacity needs"},
        {{"-q", "NoSlash"}, "--queue needs"},
        {{"-q", "/a/b"}, "--queue needs"},
        {{"-q", "/"}, "--queue needs"},
        {{"stray"}, "unexpected argument"},
        {{"--peek", "--take"}, "exclude each other"},
        {{"--create"}, "--create needs --queue"},
        {{"--bogus"}, "unknown option '--bogus'"},
    };
    for (const auto& c : aCases) {
        BlkLogViewOptionsTag opts;
        std::string strError;
        EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, Parse(c.first, opts, strError)) << c.second;
        EXPECT_TRUE(NyTestContains(strError, c.second)) << strError;
    }
}

TEST(NyLogViewOptions, FiltersSelectByMinimumLevelAndByProcess) {
    BlkLogViewOptionsTag opts;
    tagBlkLogItem item = {};
    EXPECT_TRUE(NyLogViewAccepts(opts, item));
    opts.u4MinLevel = LOG_INFO;
    opts.vPids = {100, 200};
    // level, pid, shown
    const uint32_t aCases[][3] = {{LOG_TRACE, 100, 0},
                                  {LOG_INFO, 100, 1},
                                  {LOG_ERROR, 200, 1},
                                  {9, 200, 1},
                                  {LOG_ERROR, 300, 0}};
    for (const auto& c : aCases) {
        item.u4Level = c[0];
        item.u4Pid = c[1];
        EXPECT_EQ(c[2] != 0, NyLogViewAccepts(opts, item)) << c[0] << "/" << c[1];
    }
}

}  // namespace
