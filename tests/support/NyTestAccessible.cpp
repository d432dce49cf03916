#include "support/NyTestAccessible.h"

#include <sstream>

#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"

namespace {

std::string Unescape(const std::string& str) {
    std::string strOut;
    for (size_t i = 0; i < str.size(); ++i) {
        if (str[i] != '\\' || i + 1 == str.size()) {
            strOut += str[i];
            continue;
        }
        char ch = str[++i];
        strOut += ch == 't' ? '\t' : ch == 'r' ? '\r' : ch == 'n' ? '\n' : ch;
    }
    return strOut;
}

std::vector<std::string> SplitTabs(const std::string& strLine) {
    std::vector<std::string> vFields;
    std::istringstream in(strLine);
    std::string strField;
    while (std::getline(in, strField, '\t')) {
        vFields.push_back(strField);
    }
    if (!strLine.empty() && strLine.back() == '\t') {
        vFields.push_back("");
    }
    return vFields;
}

}  // namespace

bool BlkTestAccessibleTag::HasState(const std::string& strState) const {
    std::istringstream in(strStates);
    std::string str;
    while (std::getline(in, str, ',')) {
        if (str == strState) {
            return true;
        }
    }
    return false;
}

std::vector<BlkTestAccessibleTag> NyTestAccessibleTree(pid_t pid) {
    // The system interpreter: the bindings are a Debian package.
    std::istringstream lines(NyTestShell("/usr/bin/python3 " NY_TEST_SOURCE_DIR
                                         "/tests/support/ny_atspi_dump.py " +
                                         std::to_string(pid)));
    std::vector<BlkTestAccessibleTag> vTree;
    std::string strLine;

    while (std::getline(lines, strLine)) {
        std::vector<std::string> v = SplitTabs(strLine);
        if (v.size() != 7) {
            continue;
        }
        BlkTestAccessibleTag blk;
        blk.strRole = v[0];
        blk.strName = Unescape(v[1]);
        blk.iX = atoi(v[2].c_str());
        blk.iY = atoi(v[3].c_str());
        blk.iWidth = atoi(v[4].c_str());
        blk.iHeight = atoi(v[5].c_str());
        blk.strStates = v[6];
        vTree.push_back(blk);
    }
    return vTree;
}

std::vector<BlkTestAccessibleTag> NyTestShowingWithRole(
    const std::vector<BlkTestAccessibleTag>& vTree, const std::string& strRole) {
    std::vector<BlkTestAccessibleTag> vFound;
    for (const BlkTestAccessibleTag& blk : vTree) {
        if (blk.strRole == strRole && blk.HasState("showing")) {
            vFound.push_back(blk);
        }
    }
    return vFound;
}

bool NyTestWaitAccessible(pid_t pid, const std::string& strRole, const std::string& strName,
                          unsigned int u4TimeoutMs, BlkTestAccessibleTag* pFound) {
    return NyTestWaitUntil(
        [&] {
            for (const BlkTestAccessibleTag& blk :
                 NyTestShowingWithRole(NyTestAccessibleTree(pid), strRole)) {
                if (blk.strName == strName) {
                    if (pFound != nullptr) {
                        *pFound = blk;
                    }
                    return true;
                }
            }
            return false;
        },
        u4TimeoutMs);
}
