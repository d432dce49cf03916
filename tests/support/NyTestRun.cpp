#include "support/NyTestRun.h"

#include <unistd.h>

#include <fstream>
#include <sstream>
#include <utility>

#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"

CNyTestRun::CNyTestRun(const std::vector<std::string>& vArgs)
    : m_strPath("/tmp/" + NyTestUniqueName("run") + ".out"), m_pid(NyTestSpawn(vArgs, m_strPath)) {}

CNyTestRun::~CNyTestRun() {
    if (m_pid > 0) {
        NyTestKillChild(m_pid);
    }
    unlink(m_strPath.c_str());
}

int CNyTestRun::Wait(unsigned int u4TimeoutMs) {
    if (m_pid <= 0) {
        return -1;
    }
    int iExit = NyTestWaitChild(m_pid, u4TimeoutMs);
    if (iExit < 0) {
        NyTestKillChild(m_pid);
    }
    m_pid = -1;
    return iExit;
}

std::string CNyTestRun::Output() const {
    std::stringstream ss;
    ss << std::ifstream(m_strPath).rdbuf();
    return ss.str();
}

BlkTestRunTag NyTestRun(const std::vector<std::string>& vArgs, unsigned int u4TimeoutMs) {
    CNyTestRun run(vArgs);
    return {run.Wait(u4TimeoutMs), run.Output()};
}

CNyTestArgv::CNyTestArgv(std::vector<std::string> vArgs) : m_vArgs(std::move(vArgs)) {
    m_vArgs.insert(m_vArgs.begin(), "prog");
    for (std::string& str : m_vArgs) {
        m_vPointers.push_back(&str[0]);
    }
    m_vPointers.push_back(nullptr);
}

std::vector<std::string> NyTestLines(const std::string& strText) {
    std::vector<std::string> vLines;
    std::istringstream ss(strText);
    for (std::string str; std::getline(ss, str);) {
        vLines.push_back(str);
    }
    return vLines;
}

bool NyTestContains(const std::string& strText, const std::string& strPart) {
    return strText.find(strPart) != std::string::npos;
}
