// Programs and command lines in tests: a program run with its output (stdout and stderr together)
// captured in a file that goes with the object (a program still running then is killed), an
// argv for parsers run in-process, and the lines of an output.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

class CNyTestRun {
public:
    // Starts vArgs (argv[0] is the path).
    explicit CNyTestRun(const std::vector<std::string>& vArgs);
    ~CNyTestRun();
    CNyTestRun(const CNyTestRun&) = delete;
    CNyTestRun& operator=(const CNyTestRun&) = delete;

    pid_t Pid() const { return m_pid; }
    // Waits for the end: the exit code (128 + signal), or -1 when it did not end in time (it is
    // then killed).
    int Wait(unsigned int u4TimeoutMs = 30000);
    // What it printed so far.
    std::string Output() const;

private:
    std::string m_strPath;
    pid_t m_pid;
};

// Runs a program to its end: its exit code and its output.
struct BlkTestRunTag {
    int iExit;
    std::string strOutput;
};
BlkTestRunTag NyTestRun(const std::vector<std::string>& vArgs, unsigned int u4TimeoutMs = 30000);

// A writable argv: "prog" followed by vArgs; Argc()/Argv() for a parser that may reorder it.
class CNyTestArgv {
public:
    explicit CNyTestArgv(std::vector<std::string> vArgs);
    int Argc() const { return static_cast<int>(m_vArgs.size()); }
    char** Argv() { return m_vPointers.data(); }

private:
    std::vector<std::string> m_vArgs;
    std::vector<char*> m_vPointers;
};

std::vector<std::string> NyTestLines(const std::string& strText);
bool NyTestContains(const std::string& strText, const std::string& strPart);
