// Whether the client process behind an interaction session still runs.
#pragma once

#include <cstdint>

// Alive while any live process's id contains u4Pid as a decimal substring (process 1234 keeps
// the session of client 123 alive, on purpose). A check that cannot be made counts as alive.
bool IsClientProcessAlive(uint32_t u4Pid);

// The same rule over a given process directory (normally "/proc"), for tests.
bool IsClientProcessAliveIn(const char* szProcDir, uint32_t u4Pid);
