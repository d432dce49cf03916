#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "runtime/NyResult.h"
#include "runtime/NySafe.h"
#include "support/NyTestLogCapture.h"

namespace {

const char* const NO_REPORT = nullptr;

// Widens ASCII test text so that one table drives the narrow and the wide routines.
std::wstring Wide(const std::string& str) {
    return std::wstring(str.begin(), str.end());
}

// The error reports logged while pfn ran.
template <typename F>
std::vector<std::string> ReportsOf(F pfn) {
    CNyTestLogCapture capture;
    pfn();
    return capture.MessagesAt(LOG_ERROR);
}

std::vector<std::string> Expected(const char* szRoutine, const char* szReason) {
    return szReason
               ? std::vector<std::string>{std::string(szRoutine) + " failed due to " + szReason}
               : std::vector<std::string>{};
}

// One row of a copy or cat table: the destination holds szInitial (nullptr: no NUL within its
// capacity) before szSrc is copied or appended; the call succeeds exactly when it reports nothing.
struct BlkStrCaseTag {
    size_t cchDest;
    const char* szInitial;
    const char* szSrc;
    const char* szExpected;
    const char* szReason;
};

const char* const CUT_COPY = "srclen > (cchDest-1)";
const char* const CUT_CAT = "srclen > (cchDest - dstlen - 1)";
const BlkStrCaseTag g_aCopyCases[] = {{8, nullptr, "0123456", "0123456", NO_REPORT},
                                      {8, nullptr, "01234567", "0123456", CUT_COPY},
                                      {8, nullptr, "", "", NO_REPORT},
                                      {1, nullptr, "", "", NO_REPORT},
                                      {1, nullptr, "a", "", CUT_COPY}};
const BlkStrCaseTag g_aCatCases[] = {
    {8, "abc", "defg", "abcdefg", NO_REPORT},
    {8, "abc", "defgh", "abcdefg", CUT_CAT},
    {8, "abcdefg", "x", "abcdefg", CUT_CAT},
    {8, "", "0123456789", "0123456", CUT_CAT},
    {8, nullptr, "y", "########", "cchDest <= dstlen"},
    {8, nullptr, "", "########", NO_REPORT}};  // empty source: done before any check

// How a routine reports: its name for refused parameters and for a cut (nullptr: the narrow
// printf names no readable routine, so only the reason is compared), and the reason of a cut
// where it differs from the table's.
struct RoutineTag {
    const char* szName;
    const char* szCutName;
    const char* szCutReason;
};

void ExpectReports(const std::vector<std::string>& vReports, const char* szName,
                   const char* szReason) {
    if (szName != nullptr) {
        EXPECT_EQ(vReports, Expected(szName, szReason));
        return;
    }
    ASSERT_EQ(vReports.size(), szReason ? 1u : 0u);
    for (const std::string& str : vReports) {
        EXPECT_EQ(str.substr(std::min(str.find(" failed"), str.size())),
                  std::string(" failed due to ") + szReason);
        EXPECT_NE(str.rfind("NyStr", 0), 0u) << str;
    }
}

template <typename T, size_t N>
void RunCases(bool (*pfn)(T*, size_t, const T*), const RoutineTag& r,
              std::basic_string<T> (*pfnText)(const std::string&),
              const BlkStrCaseTag (&aCases)[N]) {
    for (const BlkStrCaseTag& c : aCases) {
        std::vector<T> vDest(c.cchDest + 4, T('#'));
        vDest.back() = 0;  // lets the test read an unterminated destination as text
        if (c.szInitial != nullptr) {
            std::basic_string<T> strInitial = pfnText(c.szInitial);
            std::copy(strInitial.c_str(), strInitial.c_str() + strInitial.size() + 1,
                      vDest.begin());
        }
        std::basic_string<T> strSrc = pfnText(c.szSrc);
        std::vector<std::string> vReports = ReportsOf([&] {
            EXPECT_EQ(pfn(vDest.data(), c.cchDest, strSrc.c_str()), c.szReason == NO_REPORT)
                << r.szName << " " << c.szSrc;
        });
        EXPECT_EQ(std::basic_string<T>(vDest.data(), c.cchDest).c_str(), pfnText(c.szExpected))
            << r.szName << " " << c.szSrc;
        ExpectReports(vReports, r.szCutName,
                      c.szReason && r.szCutReason ? r.szCutReason : c.szReason);
        EXPECT_EQ(std::basic_string<T>(vDest.data() + c.cchDest), std::basic_string<T>(3, T('#')))
            << r.szName << " wrote past its capacity";
    }
    T szDest[4] = {T('#'), T('#'), T('#'), 0};  // invalid parameters: refused, nothing written
    const T szSrc[] = {T('a'), 0};
    for (int i = 0; i < 3; ++i) {
        bool bResult = true;
        std::vector<std::string> vReports = ReportsOf([&] {
            bResult = pfn(i == 0 ? nullptr : szDest, i == 2 ? 0 : 4, i == 1 ? nullptr : szSrc);
        });
        EXPECT_FALSE(bResult) << r.szName;
        EXPECT_EQ(vReports, Expected(r.szName, "paramters are invalid"));
        EXPECT_EQ(szDest[0], T('#')) << r.szName << " wrote despite invalid parameters";
    }
}

std::string Narrow(const std::string& str) {
    return str;
}

}  // namespace

// Printing "%s" must cut and report like a copy (the source standing in for the format
// argument; a missing one stands in for a missing format).
TEST(NySafeStrings, CopyCatAndPrintfCutAtCapacityReportAndRejectInvalidParameters) {
    const char* const szPrintCut = "buffer may be too small";
    RunCases<char>(NyStrCopy, {"NyStrCopy", "NyStrCopy", nullptr}, Narrow, g_aCopyCases);
    RunCases<wchar_t>(NyWcsCopy, {"NyWcsCopy", "NyWcsCopy", nullptr}, Wide, g_aCopyCases);
    RunCases<char>(NyStrCat, {"NyStrCat", "NyStrCat", nullptr}, Narrow, g_aCatCases);
    RunCases<wchar_t>(NyWcsCat, {"NyWcsCat", "NyWcsCat", nullptr}, Wide, g_aCatCases);
    RunCases<char>(
        [](char* sz, size_t cch, const char* szArg) {
            return szArg ? NyStrPrintf(sz, cch, "%s", szArg) : NyStrPrintf(sz, cch, szArg);
        },
        {"NyStrVPrintf", nullptr, szPrintCut}, Narrow, g_aCopyCases);
    RunCases<wchar_t>(
        [](wchar_t* sz, size_t cch, const wchar_t* szArg) {
            return szArg ? NyWcsPrintf(sz, cch, L"%ls", szArg) : NyWcsPrintf(sz, cch, szArg);
        },
        {"NyWcsVPrintf", "NyWcsVPrintf", szPrintCut}, Wide, g_aCopyCases);
}

TEST(NySafeMemory, MemCpyResultsAndClearing) {
    struct {
        const char* szName;
        bool bNullDest;
        bool bNullSrc;
        size_t cchCount;  // into an 8-byte destination
        uint32_t u4Result;
        const char* szReason;
        const char* szDestAfter;  // the first 8 bytes of the destination afterwards
    } aCases[] = {
        {"copy", false, false, 5, NY_OK, NO_REPORT, "hello###"},
        {"exact", false, false, 8, NY_OK, NO_REPORT, "hello!!!"},
        {"count 0", false, true, 0, NY_OK, NO_REPORT, "########"},
        {"count 0 no dest", true, true, 0, NY_OK, NO_REPORT, "########"},
        {"no dest", true, false, 5, NY_ERR_INVALID_ARGUMENT, "NULL == pvDest", "########"},
        {"no src", false, true, 5, NY_ERR_BAD_ARGUMENT, "NULL == pvSrc", nullptr},
        {"too small", false, false, 10, NY_ERR_MEM_TOO_SMALL, "cchDest < cchCount", nullptr},
    };
    const char szSrc[] = "hello!!!xy";
    for (const auto& c : aCases) {
        char au1Dest[9];
        memset(au1Dest, '#', sizeof(au1Dest));
        uint32_t u4Result = 0;
        bool bCopy = false;
        std::vector<std::string> vReports = ReportsOf([&] {
            u4Result = NyMemCpy(c.bNullDest ? nullptr : au1Dest, 8, c.bNullSrc ? nullptr : szSrc,
                                c.cchCount);
        });
        ReportsOf([&] {
            bCopy = NyMemCopy(c.bNullDest ? nullptr : au1Dest, 8, c.bNullSrc ? nullptr : szSrc,
                              c.cchCount);
        });
        EXPECT_EQ(u4Result, c.u4Result) << c.szName;
        EXPECT_EQ(bCopy, c.u4Result == NY_OK) << c.szName;
        EXPECT_EQ(vReports, Expected("NyMemCpy", c.szReason)) << c.szName;
        std::string strExpected = c.szDestAfter ? c.szDestAfter : std::string(8, '\0');
        EXPECT_EQ(std::string(au1Dest, 8), strExpected) << c.szName;
        EXPECT_EQ(au1Dest[8], '#') << c.szName;
    }
    char szOverlap[] = "0123456789";  // overlapping ranges: as if through a temporary
    EXPECT_EQ(NyMemCpy(szOverlap, 10, szOverlap + 3, 6), NY_OK);
    EXPECT_STREQ(szOverlap, "3456786789");
}
