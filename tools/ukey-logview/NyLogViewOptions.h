// Command line of ukey-logview: what to read, which records to show, how to print them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "log/NyLogRecord.h"

struct BlkLogViewOptionsTag {
    bool bFollow = false;  // keep reading as records arrive, until interrupted
    bool bJson = false;    // one JSON object per line instead of text
    bool bHelp = false;
    bool bVersion = false;
    bool bPeek = false;           // read without taking, and without counting as a listener
    bool bTake = false;           // take the records even when filters hide some of them
    bool bCreate = false;         // create the queue named with -q when it does not exist
    uint32_t u4MinLevel = 0;      // show records of this level and above
    std::vector<uint32_t> vPids;  // show only these processes (empty: all)
    std::string strQueue;         // shared-memory object to read
    uint32_t u4Capacity;          // its number of slots
    BlkLogViewOptionsTag();
};

// 0, or NY_ERR_INVALID_ARGUMENT with a one-line reason in strError. pszArgv may be reordered.
uint32_t NyLogViewParseOptions(int iArgc, char** pszArgv, BlkLogViewOptionsTag& opts,
                               std::string& strError);
// Whether the viewer peeks: asked to, or filtering without being told to take.
bool NyLogViewPeeks(const BlkLogViewOptionsTag& opts);
// Whether a record passes the level and process filters.
bool NyLogViewAccepts(const BlkLogViewOptionsTag& opts, const tagBlkLogItem& item);
// Usage text, one paragraph per option.
std::string NyLogViewHelpText();
