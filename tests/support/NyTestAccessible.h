// Reading what a screen reader would read: the accessibility tree of a process, over AT-SPI
// (the python3-pyatspi bindings, on the D-Bus session of NyTestDisplay).
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

struct BlkTestAccessibleTag {
    std::string strRole;  // "push button", "label", "password text", "frame", ...
    std::string strName;
    int iX = -1;
    int iY = -1;
    int iWidth = -1;
    int iHeight = -1;
    std::string strStates;  // comma-separated: "enabled,sensitive,showing,..."

    bool HasState(const std::string& strState) const;
    int CentreX() const { return iX + iWidth / 2; }
    int CentreY() const { return iY + iHeight / 2; }
};

// The objects of process pid's tree in depth-first order; empty when it is not registered.
std::vector<BlkTestAccessibleTag> NyTestAccessibleTree(pid_t pid);

// Waits until an object of that role and name is showing; false after u4TimeoutMs.
bool NyTestWaitAccessible(pid_t pid, const std::string& strRole, const std::string& strName,
                          unsigned int u4TimeoutMs, BlkTestAccessibleTag* pFound = nullptr);

// Objects of that role among the showing ones.
std::vector<BlkTestAccessibleTag> NyTestShowingWithRole(
    const std::vector<BlkTestAccessibleTag>& vTree, const std::string& strRole);
