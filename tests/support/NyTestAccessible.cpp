#include "support/NyTestAccessible.h"

#include <sstream>

#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"

namespace {

// The dump escapes tabs, returns and newlines in names with a backslash.
std::string Unescape(const std::string& str) {
    std::string strOut;
    for (size_t i = 0; i < str.size(); ++i) {
        char ch = str[i];
        if (ch == '\\' && i + 1 < str.size()) {
            ch = str[++i];
            ch = ch == 't' ? '\t' : ch == 'r' ? '\r' : ch == 'n' ? '\n' : ch;
        }
        strOut += ch;
    }
    return strOut;
}

}  // namespace

bool BlkTestAccessibleTag::HasState(const std::string& strState) const {
    return ("," + strStates + ",").find("," + strState + ",") != std::string::npos;
}

std::vector<BlkTestAccessibleTag> NyTestAccessibleTree(pid_t pid) {
    // The system interpreter: the bindings are a Debian package. One line per object: role,
    // name, x, y, width, height and states, separated by tabs.
    std::istringstream lines(NyTestShell("/usr/bin/python3 " NY_TEST_SOURCE_DIR
                                         "/tests/support/ny_atspi_dump.py " +
                                         std::to_string(pid)));
    std::vector<BlkTestAccessibleTag> vTree;
    for (std::string strLine; std::getline(lines, strLine);) {
        std::istringstream fields(strLine);
        BlkTestAccessibleTag blk;
        std::string strName;
        if (std::getline(fields, blk.strRole, '\t') && std::getline(fields, strName, '\t') &&
            fields >> blk.iX >> blk.iY >> blk.iWidth >> blk.iHeight) {
            fields.ignore(1);  // the tab before the states, which may be empty
            std::getline(fields, blk.strStates);
            blk.strName = Unescape(strName);
            vTree.push_back(blk);
        }
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
    BlkTestAccessibleTag blkFound;
    pFound = pFound != nullptr ? pFound : &blkFound;
    return NyTestWaitUntil(
        [&] {
            for (const BlkTestAccessibleTag& blk :
                 NyTestShowingWithRole(NyTestAccessibleTree(pid), strRole)) {
                if (blk.strName == strName) {
                    return *pFound = blk, true;
                }
            }
            return false;
        },
        u4TimeoutMs);
}
