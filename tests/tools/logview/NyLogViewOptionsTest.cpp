#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "NyLogViewOptions.h"
#include "runtime/NyResult.h"

namespace {

uint32_t Parse(std::vector<const char*> vArgs, BlkLogViewOptionsTag& opts, std::string& strError) {
    vArgs.insert(vArgs.begin(), "ukey-logview");
    return NyLogViewParseOptions(static_cast<int>(vArgs.size()), vArgs.data(), opts, strError);
}

}  // namespace

TEST(NyLogViewOptions, DefaultsReadTheMachineWideQueueOnceAsText) {
    BlkLogViewOptionsTag opts;
    std::string strError;
    ASSERT_EQ(Parse({}, opts, strError), NY_OK);
    EXPECT_FALSE(opts.bFollow);
    EXPECT_FALSE(opts.bJson);
    EXPECT_FALSE(opts.bHelp);
    EXPECT_EQ(opts.u4MinLevel, 0u);
    EXPECT_TRUE(opts.vPids.empty());
    EXPECT_EQ(opts.strQueue, "/NyShmLog-4b1a");
    EXPECT_EQ(opts.u4Capacity, 32768u);
}

TEST(NyLogViewOptions, ShortLongAndInlineSpellingsAreAccepted) {
    BlkLogViewOptionsTag opts;
    std::string strError;
    ASSERT_EQ(Parse({"-f", "--json", "--level=Error", "-p", "12", "--pid=34", "--pid", "56", "-q",
                     "/NyTestQueue", "--capacity=64", "-h"},
                    opts, strError),
              NY_OK)
        << strError;
    EXPECT_TRUE(opts.bFollow);
    EXPECT_TRUE(opts.bJson);
    EXPECT_TRUE(opts.bHelp);
    EXPECT_EQ(opts.u4MinLevel, 3u);
    EXPECT_EQ(opts.vPids, (std::vector<uint32_t>{12, 34, 56}));
    EXPECT_EQ(opts.strQueue, "/NyTestQueue");
    EXPECT_EQ(opts.u4Capacity, 64u);

    const struct {
        const char* szLevel;
        uint32_t u4Level;
    } aLevels[] = {{"trace", 1}, {"INFO", 2}, {"error", 3}, {"7", 7}, {"0", 0}};
    for (const auto& c : aLevels) {
        BlkLogViewOptionsTag optsLevel;
        ASSERT_EQ(Parse({"-l", c.szLevel}, optsLevel, strError), NY_OK) << c.szLevel;
        EXPECT_EQ(optsLevel.u4MinLevel, c.u4Level) << c.szLevel;
    }
}

TEST(NyLogViewOptions, BadCommandLinesAreRefusedWithAReason) {
    const struct {
        std::vector<const char*> vArgs;
        const char* szReason;
    } aCases[] = {
        {{"--what"}, "unknown option '--what'"},
        {{"-x"}, "unknown option '-x'"},
        {{"-l"}, "--level needs"},
        {{"-l", "loud"}, "--level needs"},
        {{"-l", "-1"}, "--level needs"},
        {{"-p", "0"}, "--pid needs"},
        {{"-p", "12x"}, "--pid needs"},
        {{"--pid="}, "--pid needs"},
        {{"-p", "4294967296"}, "--pid needs"},
        {{"-c", "48"}, "--capacity needs"},
        {{"-c", "2"}, "--capacity needs"},
        {{"-q", "NoSlash"}, "--queue needs"},
        {{"-q", "/a/b"}, "--queue needs"},
        {{"-q", "/"}, "--queue needs"},
    };
    for (const auto& c : aCases) {
        BlkLogViewOptionsTag opts;
        std::string strError;
        EXPECT_EQ(Parse(c.vArgs, opts, strError), NY_ERR_INVALID_ARGUMENT) << c.szReason;
        EXPECT_NE(strError.find(c.szReason), std::string::npos) << strError;
    }
}

TEST(NyLogViewOptions, FiltersSelectByMinimumLevelAndByProcess) {
    BlkLogViewOptionsTag opts;
    opts.u4MinLevel = LOG_INFO;
    opts.vPids = {100, 200};
    const struct {
        uint32_t u4Level;
        uint32_t u4Pid;
        bool bShown;
    } aCases[] = {
        {LOG_TRACE, 100, false}, {LOG_INFO, 100, true},   {LOG_ERROR, 200, true},
        {9, 200, true},          {LOG_ERROR, 300, false},
    };
    for (const auto& c : aCases) {
        tagBlkLogItem item = {};
        item.u4Level = c.u4Level;
        item.u4Pid = c.u4Pid;
        EXPECT_EQ(NyLogViewAccepts(opts, item), c.bShown) << c.u4Level << "/" << c.u4Pid;
    }
    BlkLogViewOptionsTag all;
    tagBlkLogItem item = {};
    EXPECT_TRUE(NyLogViewAccepts(all, item));
}
