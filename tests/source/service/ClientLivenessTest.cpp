// The liveness rule of a session's client process.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "ClientLiveness.h"
#include "support/NyTestProcess.h"

namespace {

// The pid of a process that has ended and been reaped.
uint32_t DeadPid() {
    pid_t pid = NyTestForkChild([]() { return 0; });
    NyTestWaitChild(pid, 5000);
    return static_cast<uint32_t>(pid);
}

// A directory standing in for /proc with the given entries.
class CFakeProcDir {
public:
    explicit CFakeProcDir(const std::vector<std::string>& vEntries) {
        char szTemplate[] = "/tmp/nyproc-XXXXXX";
        m_strDir = mkdtemp(szTemplate);
        for (const std::string& str : vEntries) {
            mkdir((m_strDir + "/" + str).c_str(), 0700);
        }
        m_vEntries = vEntries;
    }
    ~CFakeProcDir() {
        for (const std::string& str : m_vEntries) {
            rmdir((m_strDir + "/" + str).c_str());
        }
        rmdir(m_strDir.c_str());
    }
    const char* Path() const { return m_strDir.c_str(); }

private:
    std::string m_strDir;
    std::vector<std::string> m_vEntries;
};

TEST(ClientLivenessTest, LiveProcessIsAliveWhateverTheProcessDirectory) {
    EXPECT_TRUE(IsClientProcessAlive(static_cast<uint32_t>(getpid())));
    CFakeProcDir empty({});
    EXPECT_TRUE(IsClientProcessAliveIn(empty.Path(), static_cast<uint32_t>(getpid())));
}

TEST(ClientLivenessTest, GoneProcessLivesOnlyThroughIdsThatContainItsId) {
    uint32_t u4Dead = DeadPid();
    std::string strDead = std::to_string(u4Dead);
    struct {
        const char* szName;
        std::vector<std::string> vEntries;
        bool bAlive;
    } aCases[] = {
        {"no process contains the id", {"1", "self", "net"}, false},
        {"a longer id contains it", {"1", "9" + strDead + "1"}, true},
        {"a non-numeric entry containing it does not count", {"x" + strDead}, false},
        {"a prefix of the id does not count", {strDead.substr(0, strDead.size() - 1)}, false},
    };
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.szName);
        CFakeProcDir dir(c.vEntries);
        EXPECT_EQ(c.bAlive, IsClientProcessAliveIn(dir.Path(), u4Dead));
    }
}

TEST(ClientLivenessTest, CheckThatCannotRunCountsAsAlive) {
    EXPECT_TRUE(IsClientProcessAliveIn("/nonexistent/proc", DeadPid()));
}

}  // namespace
