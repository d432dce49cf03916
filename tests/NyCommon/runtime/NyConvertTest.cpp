#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "runtime/NyConvert.h"
#include "runtime/NyResult.h"
#include "support/NyTestLogCapture.h"

TEST(NyConvert, WideAndMultiByteByCodePageBothWays) {
    const std::pair<uint32_t, std::string> aCases[] = {{NY_CP_UTF8_DEFAULT, "A\xE4\xB8\xAD"},
                                                       {NY_CP_UTF8, "A\xE4\xB8\xAD"},
                                                       {NY_CP_GB18030, "A\xD6\xD0"},
                                                       {NY_CP_BIG5, "A\xA4\xA4"}};
    for (const auto& [u4CodePage, strMulti] : aCases) {
        char szOut[16];
        memset(szOut, '#', sizeof(szOut));
        uint32_t u4Len = sizeof(szOut);
        EXPECT_EQ(NyWideCharToMultiByte(L"A\u4E2D", u4CodePage, szOut, &u4Len), NY_OK);
        EXPECT_EQ(std::string(szOut), strMulti) << u4CodePage;
        EXPECT_EQ(u4Len, strMulti.size() + 1) << u4CodePage;
        wchar_t szWide[8];
        wmemset(szWide, L'#', 8);
        u4Len = 8;
        EXPECT_EQ(NyMultiByteToWideChar(strMulti.c_str(), u4CodePage, szWide, &u4Len), NY_OK);
        EXPECT_EQ(std::wstring(szWide), std::wstring(L"A\u4E2D")) << u4CodePage;
        EXPECT_EQ(u4Len, 3u) << u4CodePage;
    }
    std::wstring strWide;  // a long text converts whole
    for (int i = 0; i < 1500; ++i) {
        strWide += L"x\u6587";
    }
    std::vector<char> vOut(3 * 3000 + 1);
    uint32_t u4Len = static_cast<uint32_t>(vOut.size());
    ASSERT_EQ(NyWideCharToMultiByte(strWide.c_str(), NY_CP_GB18030, vOut.data(), &u4Len), NY_OK);
    EXPECT_EQ(u4Len, 1500u * 2 + 1500u + 1);
    std::vector<wchar_t> vBack(3001);
    uint32_t u4Back = 3001;
    ASSERT_EQ(NyMultiByteToWideChar(vOut.data(), NY_CP_GB18030, vBack.data(), &u4Back), NY_OK);
    EXPECT_EQ(std::wstring(vBack.data()), strWide);
}

TEST(NyConvert, SizeQueryAndTooSmallBufferReportTheNeededSize) {
    const wchar_t* szWide = L"\u4E2D\u6587";  // 6 bytes of UTF-8, plus the NUL
    char szOut[7];
    memset(szOut, '#', sizeof(szOut));
    wchar_t szWideOut[4];
    uint32_t au4Len[] = {0, 6, 7, 0, 3};  // capacities: size query, one short, exact; both ways
    EXPECT_EQ(NyWideCharToMultiByte(szWide, NY_CP_UTF8, nullptr, &au4Len[0]), NY_OK);
    EXPECT_EQ(NyWideCharToMultiByte(szWide, NY_CP_UTF8, szOut, &au4Len[1]),
              NY_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(szOut[0], '\0') << "a refused conversion leaves an empty text";
    EXPECT_EQ(szOut[6], '#') << "wrote past the capacity";
    EXPECT_EQ(NyWideCharToMultiByte(szWide, NY_CP_UTF8, szOut, &au4Len[2]), NY_OK);
    EXPECT_EQ(NyMultiByteToWideChar("abc", NY_CP_UTF8, nullptr, &au4Len[3]), NY_OK);
    EXPECT_EQ(NyMultiByteToWideChar("abc", NY_CP_UTF8, szWideOut, &au4Len[4]),
              NY_ERR_BUFFER_TOO_SMALL);
    // The needed size each time; wide sizes count characters, NUL included.
    EXPECT_EQ(std::vector<uint32_t>(au4Len, au4Len + 5), (std::vector<uint32_t>{7, 7, 7, 4, 4}));
}

