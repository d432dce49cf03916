#include "NyLogViewOptions.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "NyLogViewFormat.h"
#include "log/CNyShmLogger.h"
#include "runtime/NyResult.h"

namespace {

const char cg_szHelp[] =
    "Usage: ukey-logview [OPTION]...\n"
    "Reads the records that processes of the UKey middleware write into the shared-memory log\n"
    "queue and prints them, oldest first. Records are taken out of the queue as they are\n"
    "read. Without -f, prints what is waiting and exits.\n"
    "\n"
    "Each text line shows: local time with milliseconds, level, [process id:thread id],\n"
    "source file:line, message.\n"
    "\n"
    "  -f, --follow         keep running and print records as they arrive, until Ctrl-C\n"
    "                       (or SIGTERM) detaches the viewer cleanly\n"
    "  -l, --level LEVEL    print only records of LEVEL or more severe; LEVEL is trace,\n"
    "                       info, error or a number (1 trace, 2 info, 3 error)\n"
    "  -p, --pid PID        print only records of process PID; repeat for several\n"
    "  -j, --json           print one JSON object per line with the fields time (local,\n"
    "                       ISO 8601), time100ns (100 ns units since 1601-01-01 UTC), level,\n"
    "                       levelName, pid, tid, source, line, message\n"
    "  -q, --queue NAME     read the queue NAME instead of /NyShmLog-4b1a (for test rigs)\n"
    "  -c, --capacity N     number of record slots of that queue (default 32768)\n"
    "  -h, --help           print this help and exit\n"
    "\n"
    "While it runs the viewer counts as a listening consumer: producers that find the queue\n"
    "full wait for it instead of dropping records, as long as it keeps reading.\n"
    "Exit status: 0 success, 1 the queue could not be attached, 2 bad command line.\n";

bool ParseNumber(const char* sz, uint32_t& u4Value) {
    if (sz == nullptr || *sz < '0' || *sz > '9') {
        return false;
    }
    char* pEnd = nullptr;
    errno = 0;
    unsigned long long u8 = strtoull(sz, &pEnd, 10);
    if (errno != 0 || *pEnd != '\0' || u8 > UINT32_MAX) {
        return false;
    }
    u4Value = static_cast<uint32_t>(u8);
    return true;
}

bool ParseLevel(const char* sz, uint32_t& u4Level) {
    return NyLogViewLevelFromName(sz, u4Level) || ParseNumber(sz, u4Level);
}

bool ParsePid(const char* sz, std::vector<uint32_t>& vPids) {
    uint32_t u4Pid = 0;
    if (!ParseNumber(sz, u4Pid) || u4Pid == 0) {
        return false;
    }
    vPids.push_back(u4Pid);
    return true;
}

bool ParseCapacity(const char* sz, uint32_t& u4Capacity) {
    uint32_t u4Value = 0;
    if (!ParseNumber(sz, u4Value) || u4Value < NY_SHMLOG_MIN_CAPACITY ||
        (u4Value & (u4Value - 1)) != 0) {
        return false;
    }
    u4Capacity = u4Value;
    return true;
}

bool ParseQueue(const char* sz, std::string& strQueue) {
    size_t cch = strlen(sz);
    if (cch < 2 || cch >= NY_SHMLOG_NAME_SIZE || sz[0] != '/' || strchr(sz + 1, '/') != nullptr) {
        return false;
    }
    strQueue = sz;
    return true;
}

// Options that take a value: the short and long spelling, and how the value is stored.
enum EnValueOption { EN_OPT_LEVEL, EN_OPT_PID, EN_OPT_QUEUE, EN_OPT_CAPACITY };
struct BlkValueOptionTag {
    const char* szShort;
    const char* szLong;
    EnValueOption enOption;
    const char* szExpect;
};
const BlkValueOptionTag cg_aValueOptions[] = {
    {"-l", "--level", EN_OPT_LEVEL, "trace, info, error or a number"},
    {"-p", "--pid", EN_OPT_PID, "a process id"},
    {"-q", "--queue", EN_OPT_QUEUE, "a name of the form /NAME"},
    {"-c", "--capacity", EN_OPT_CAPACITY, "a power of two, at least 4"},
};

bool StoreValue(EnValueOption enOption, const char* szValue, BlkLogViewOptionsTag& opts) {
    switch (enOption) {
        case EN_OPT_LEVEL:
            return ParseLevel(szValue, opts.u4MinLevel);
        case EN_OPT_PID:
            return ParsePid(szValue, opts.vPids);
        case EN_OPT_QUEUE:
            return ParseQueue(szValue, opts.strQueue);
        case EN_OPT_CAPACITY:
            return ParseCapacity(szValue, opts.u4Capacity);
    }
    return false;
}

// Matches "-x", "--long" (value in the next argument) or "--long=value".
const BlkValueOptionTag* FindValueOption(const char* szArg, const char*& szInlineValue) {
    szInlineValue = nullptr;
    for (const BlkValueOptionTag& opt : cg_aValueOptions) {
        size_t cchLong = strlen(opt.szLong);
        if (strcmp(szArg, opt.szShort) == 0 || strcmp(szArg, opt.szLong) == 0) {
            return &opt;
        }
        if (strncmp(szArg, opt.szLong, cchLong) == 0 && szArg[cchLong] == '=') {
            szInlineValue = szArg + cchLong + 1;
            return &opt;
        }
    }
    return nullptr;
}

bool ParseFlag(const char* szArg, BlkLogViewOptionsTag& opts) {
    if (strcmp(szArg, "-f") == 0 || strcmp(szArg, "--follow") == 0) {
        opts.bFollow = true;
    } else if (strcmp(szArg, "-j") == 0 || strcmp(szArg, "--json") == 0) {
        opts.bJson = true;
    } else if (strcmp(szArg, "-h") == 0 || strcmp(szArg, "--help") == 0) {
        opts.bHelp = true;
    } else {
        return false;
    }
    return true;
}

}  // namespace

BlkLogViewOptionsTag::BlkLogViewOptionsTag()
    : strQueue(NY_SHMLOG_QUEUE_NAME), u4Capacity(NY_SHMLOG_CAPACITY) {}

uint32_t NyLogViewParseOptions(int iArgc, const char* const* pszArgv, BlkLogViewOptionsTag& opts,
                               std::string& strError) {
    for (int i = 1; i < iArgc; ++i) {
        const char* szArg = pszArgv[i];
        if (ParseFlag(szArg, opts)) {
            continue;
        }
        const char* szValue = nullptr;
        const BlkValueOptionTag* pOption = FindValueOption(szArg, szValue);
        if (pOption == nullptr) {
            strError = std::string("unknown option '") + szArg + "'";
            return NY_ERR_INVALID_ARGUMENT;
        }
        if (szValue == nullptr && ++i < iArgc) {
            szValue = pszArgv[i];
        }
        if (szValue == nullptr || !StoreValue(pOption->enOption, szValue, opts)) {
            strError = std::string("option ") + pOption->szLong + " needs " + pOption->szExpect;
            return NY_ERR_INVALID_ARGUMENT;
        }
    }
    return NY_OK;
}

bool NyLogViewAccepts(const BlkLogViewOptionsTag& opts, const tagBlkLogItem& item) {
    if (item.u4Level < opts.u4MinLevel) {
        return false;
    }
    return opts.vPids.empty() ||
           std::find(opts.vPids.begin(), opts.vPids.end(), item.u4Pid) != opts.vPids.end();
}

const char* NyLogViewHelpText() {
    return cg_szHelp;
}
