// Child processes for multi-process tests: fork a function or spawn a program, wait with a
// time-out, kill -9.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

// Runs pfn in a forked child; the child _exit()s with pfn's return value (no atexit handlers,
// no gtest teardown in the child). Returns the child's pid, or -1.
pid_t NyTestForkChild(const std::function<int()>& pfn);

// Starts a program (argv[0] is the path) with stdout/stderr optionally captured into a file.
// With pfnAcceptId, a child whose process id it refuses ends before running the program and
// another one is started in its place.
pid_t NyTestSpawn(const std::vector<std::string>& vArgs, const std::string& strOutputFile = "",
                  const std::function<bool(pid_t)>& pfnAcceptId = nullptr);

// Waits for a child. Returns its exit code (128 + signal number if it was killed), or -1 when it
// did not end within u4TimeoutMs (the child is then left running).
int NyTestWaitChild(pid_t pid, unsigned int u4TimeoutMs);

// kill -9 and reap.
void NyTestKillChild(pid_t pid);

// Path of a program built into build/bin (for example "ukey-uiserver").
std::string NyTestBinPath(const std::string& strName);

// Polls pfnCondition every 5 ms until it is true or u4TimeoutMs passes; returns the last value.
bool NyTestWaitUntil(const std::function<bool()>& pfnCondition, unsigned int u4TimeoutMs);
