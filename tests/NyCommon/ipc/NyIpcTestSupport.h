// Shared pieces of the named-object tests: names that are checked for leftovers after each
// test, parent/child signalling over pipes, and probes of the files and semaphore sets behind
// the objects.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

// One-way signal between processes: a pipe created before fork, so both sides hold it.
class CIpcSignal {
public:
    CIpcSignal();
    ~CIpcSignal();
    CIpcSignal(const CIpcSignal&) = delete;
    CIpcSignal& operator=(const CIpcSignal&) = delete;
    void Post();
    // True when a Post arrived within u4TimeoutMs.
    bool Await(unsigned int u4TimeoutMs);

private:
    int m_aiPipe[2];
};

// Fixture of every test here. TearDown fails the test when anything named through NewName is
// still in the directory of shared files or among the semaphore sets, or when a child forked
// through Fork left a process anchor behind.
class CIpcTest : public ::testing::Test {
protected:
    std::string NewName(const std::string& strWhat);
    // Forks fn (its return value is the exit code) and remembers the child for the checks.
    pid_t Fork(const std::function<int()>& fn);
    // Exit code of a child, failing the test after 10 s.
    int Join(pid_t pid);
    void TearDown() override;

private:
    std::vector<std::string> m_vNames;
    std::vector<pid_t> m_vChildren;
};

std::string IpcMutexPath(const std::string& strName);
std::string IpcShmPath(const std::string& strName);
bool IpcPathExists(const std::string& strPath);
// Number of processes holding the named event's set, or -1 when the set does not exist.
int IpcEventHolders(const std::string& strName);
// Descriptors of this process open on strPath.
int IpcOpenDescriptors(const std::string& strPath);

// Inside a forked child: leave with the given code when a condition fails.
#define IPC_CHILD_CHECK(cond, code) \
    do {                            \
        if (!(cond)) {              \
            return (code);          \
        }                           \
    } while (0)
