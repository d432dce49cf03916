#include "NyLogViewOptions.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "NyLogViewFormat.h"
#include "NyToolArgs.h"
#include "log/CNyShmLogger.h"
#include "runtime/NyResult.h"

namespace {

const char cg_szHelpHead[] =
    "Usage: ukey-logview [OPTION]...\n"
    "Prints the records that processes of the UKey middleware write into the shared-memory log\n"
    "queue, oldest first. Without -f, prints what is waiting and exits.\n"
    "By default the viewer takes the records out of the queue as it prints them, and while it\n"
    "follows it counts as a listening consumer: producers that find the queue full wait for it\n"
    "instead of dropping records. With --peek, and whenever -l or -p filter the records unless\n"
    "--take is given, it only reads: the queue is left as it was, for other viewers.\n"
    "\n"
    "Each text line shows: local time with milliseconds (\"-\" when the record has none),\n"
    "level, [process id:thread id], source file:line, message (line breaks shown as \\n).\n"
    "\n";

const char cg_szHelpTail[] =
    "\n"
    "LEVEL is trace, info, error or a number (1 trace, 2 info, 3 error). JSON lines carry the\n"
    "fields time (local, ISO 8601), time100ns (100 ns units since 1601-01-01 UTC), level,\n"
    "levelName, pid, tid, source, line, message.\n"
    "Exit status: 0 success, 1 the queue could not be attached, 2 bad command line.\n";

// The options in the order of cg_vOptions.
enum EnLogViewOption {
    OPT_FOLLOW,
    OPT_LEVEL,
    OPT_PID,
    OPT_JSON,
    OPT_PEEK,
    OPT_TAKE,
    OPT_QUEUE,
    OPT_CREATE,
    OPT_CAPACITY
};
const std::vector<BlkToolOptionTag> cg_vOptions = {
    {"follow", 'f', nullptr, "keep printing records as they arrive, until Ctrl-C"},
    {"level", 'l', "LEVEL", "print only records of LEVEL or more severe"},
    {"pid", 'p', "PID", "print only records of process PID; repeat for several"},
    {"json", 'j', nullptr, "print one JSON object per line"},
    {"peek", 0, nullptr, "read the records without taking them out of the queue"},
    {"take", 0, nullptr, "take the records out of the queue even when filtering"},
    {"queue", 'q', "NAME", "read the existing queue NAME instead of /NyShmLog-4b1a"},
    {"create", 0, nullptr, "create the queue named with --queue if it does not exist"},
    {"capacity", 'c', "N", "number of record slots of that queue (default 32768)"},
};

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

// Stores the option at uIndex of cg_vOptions; false for a bad value.
bool StoreOption(size_t uIndex, const char* szValue, BlkLogViewOptionsTag& opts) {
    switch (uIndex) {
        case OPT_LEVEL:
            return ParseLevel(szValue, opts.u4MinLevel);
        case OPT_PID:
            return ParsePid(szValue, opts.vPids);
        case OPT_QUEUE:
            return ParseQueue(szValue, opts.strQueue);
        case OPT_CAPACITY:
            return ParseCapacity(szValue, opts.u4Capacity);
        case OPT_FOLLOW:
            return opts.bFollow = true;
        case OPT_JSON:
            return opts.bJson = true;
        case OPT_PEEK:
            return opts.bPeek = true;
        case OPT_TAKE:
            return opts.bTake = true;
        default:
            return opts.bCreate = true;
    }
}

const char* const cg_aszExpected[] = {nullptr,
                                      "trace, info, error or a number",
                                      "a process id",
                                      nullptr,
                                      nullptr,
                                      nullptr,
                                      "a name of the form /NAME",
                                      nullptr,
                                      "a power of two, at least 4"};

}  // namespace

BlkLogViewOptionsTag::BlkLogViewOptionsTag()
    : strQueue(NY_SHMLOG_QUEUE_NAME), u4Capacity(NY_SHMLOG_CAPACITY) {}

uint32_t NyLogViewParseOptions(int iArgc, char** pszArgv, BlkLogViewOptionsTag& opts,
                               std::string& strError) {
    std::vector<std::string> vOperands;
    EnToolParse enParse = NyToolParseArgs(
        iArgc, pszArgv, cg_vOptions,
        [&opts](size_t uIndex, const char* szValue, std::string* pstrError) {
            if (StoreOption(uIndex, szValue, opts)) {
                return true;
            }
            *pstrError = std::string("option --") + cg_vOptions[uIndex].szLong + " needs " +
                         cg_aszExpected[uIndex];
            return false;
        },
        &vOperands, &strError);
    opts.bHelp = enParse == NY_TOOL_HELP;
    opts.bVersion = enParse == NY_TOOL_VERSION;
    if (enParse == NY_TOOL_BAD) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (!vOperands.empty()) {
        strError = "unexpected argument '" + vOperands[0] + "'";
    } else if (opts.bPeek && opts.bTake) {
        strError = "--peek and --take exclude each other";
    } else if (opts.bCreate && opts.strQueue == NY_SHMLOG_QUEUE_NAME) {
        strError = "--create needs --queue";
    } else {
        return NY_OK;
    }
    return NY_ERR_INVALID_ARGUMENT;
}

bool NyLogViewPeeks(const BlkLogViewOptionsTag& opts) {
    bool bFiltering = opts.u4MinLevel != 0 || !opts.vPids.empty();
    return opts.bPeek || (bFiltering && !opts.bTake);
}

bool NyLogViewAccepts(const BlkLogViewOptionsTag& opts, const tagBlkLogItem& item) {
    if (item.u4Level < opts.u4MinLevel) {
        return false;
    }
    return opts.vPids.empty() ||
           std::find(opts.vPids.begin(), opts.vPids.end(), item.u4Pid) != opts.vPids.end();
}

std::string NyLogViewHelpText() {
    return cg_szHelpHead + NyToolOptionHelp(cg_vOptions) + cg_szHelpTail;
}
