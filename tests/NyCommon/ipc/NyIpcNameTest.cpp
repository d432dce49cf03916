// Object names to System V keys and to file paths: other programs compute the same keys and
// paths, so the values are pinned here.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "ipc/NyIpcName.h"

namespace {

TEST(NyIpcNameTest, KeysHashThePrefixAndTheNameAsUnsignedBytes) {
    const std::string strLong = "{8A2004A0-F603-4236-A2AB-66-MxProject}_Event_Connected";
    // clang-format off
    const struct {
        uint32_t u4Kind;
        const char* szName;
        uint32_t u4Key;
    } aCases[] = {
        {NY_KEY_KIND_NONE, "a", 0x61}, {NY_KEY_KIND_SEM, "a", 0x1E34F6},
        {NY_KEY_KIND_EVENT, "a", 0x1A8A78}, {NY_KEY_KIND_MUTEX, "a", 0x1CA2C0}, {7, "a", 0x61},
        {NY_KEY_KIND_EVENT, "Global_Event_Request", 0x6DC90543},
        {NY_KEY_KIND_NONE, "\xff\x80", 0x82FD}, {NY_KEY_KIND_EVENT, "\xff\x80", 0xD952CC2},
        {NY_KEY_KIND_NONE, strLong.c_str(), 0x1C8E1990},
        {NY_KEY_KIND_EVENT, strLong.c_str(), 0x76281FA5}, {NY_KEY_KIND_EVENT, "", 0},
        {NY_KEY_KIND_EVENT, nullptr, 0}};
    // clang-format on
    for (const auto& c : aCases) {
        EXPECT_EQ(c.u4Key, UnixName2Key(c.u4Kind, c.szName))
            << "kind " << c.u4Kind << " name " << (c.szName != nullptr ? c.szName : "(null)");
    }
}

TEST(NyIpcNameTest, PathsCarryTheKindPrefixReplaceSeparatorsAndFitTheBuffer) {
    // clang-format off
    const struct {
        const char* szName;
        uint32_t u4Kind;
        const char* szTail;  // after the directory; null: the call fails
    } aCases[] = {
        {"chan", NY_FILE_KIND_MUTEX, "mtx.chan"}, {"chan", NY_FILE_KIND_SHM, "shm.chan"},
        {"chan", 0, "chan"}, {"chan", 9, "chan"}, {"a/b\\c d", NY_FILE_KIND_SHM, "shm.a_b_c_d"},
        {"  ", NY_FILE_KIND_MUTEX, "mtx.__"}, {"", NY_FILE_KIND_SHM, nullptr},
        {nullptr, NY_FILE_KIND_SHM, nullptr}};
    // clang-format on
    for (const auto& c : aCases) {
        char szPath[NY_IPC_PATH_SIZE] = "untouched";
        bool bOk = FileName2Path(c.szName, c.u4Kind, szPath, sizeof(szPath));
        ASSERT_EQ(c.szTail != nullptr, bOk) << (c.szName != nullptr ? c.szName : "(null)");
        if (bOk) {
            EXPECT_EQ(std::string(NY_IPC_DIRECTORY) + c.szTail, szPath);
        }
    }
    const std::string strDir = NY_IPC_DIRECTORY;
    const uint32_t cchExact = static_cast<uint32_t>(strDir.size() + 4 + 4 + 1);
    char szPath[NY_IPC_PATH_SIZE];
    EXPECT_TRUE(FileName2Path("n123", NY_FILE_KIND_SHM, szPath, cchExact));
    EXPECT_EQ(strDir + "shm.n123", szPath);
    EXPECT_FALSE(FileName2Path("n123", NY_FILE_KIND_SHM, szPath, cchExact - 1));
    EXPECT_FALSE(FileName2Path("n123", NY_FILE_KIND_SHM, nullptr, cchExact));
    std::string strHuge(NY_IPC_PATH_SIZE, 'x');
    EXPECT_FALSE(FileName2Path(strHuge.c_str(), NY_FILE_KIND_SHM, szPath, sizeof(szPath)));
    struct stat st = {};
    ASSERT_EQ(0, stat(NY_IPC_DIRECTORY, &st));
    EXPECT_TRUE(S_ISDIR(st.st_mode));
    EXPECT_EQ(0777u, st.st_mode & 0777u) << "open to every user";
}

}  // namespace
