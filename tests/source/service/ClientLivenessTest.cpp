// The liveness rule of a session's client process, over stand-ins for /proc.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ClientLiveness.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"

TEST(ClientLivenessTest, GoneProcessLivesOnlyThroughIdsThatContainItsId) {
    pid_t pidDead = NyTestForkChild([]() { return 0; });
    NyTestWaitChild(pidDead, 5000);
    uint32_t u4Self = static_cast<uint32_t>(getpid());
    uint32_t u4Dead = static_cast<uint32_t>(pidDead);
    std::string strDead = std::to_string(u4Dead);
    struct {
        const char* szName;
        std::vector<std::string> vEntries;  // none: the directory cannot be read
        uint32_t u4Pid;
        bool bAlive;
    } aCases[] = {
        {"a live process, whatever the directory says", {"1"}, u4Self, true},
        {"no process contains the id", {"1", "self", "net"}, u4Dead, false},
        {"a longer id contains it", {"1", "9" + strDead + "1"}, u4Dead, true},
        {"a non-numeric entry containing it does not count", {"x" + strDead}, u4Dead, false},
        {"a prefix of the id does not count",
         {strDead.substr(0, strDead.size() - 1)},
         u4Dead,
         false},
        {"a check that cannot run counts as alive", {}, u4Dead, true},
    };
    EXPECT_TRUE(IsClientProcessAlive(u4Self));
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.szName);
        std::filesystem::path dir = "/tmp/" + NyTestUniqueName("nyproc");
        for (const std::string& strEntry : c.vEntries) {
            std::filesystem::create_directories(dir / strEntry);
        }
        EXPECT_EQ(c.bAlive, IsClientProcessAliveIn(dir.c_str(), c.u4Pid));
        std::filesystem::remove_all(dir);
    }
}
