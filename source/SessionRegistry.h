// The names of the interaction sessions this server has open, kept in a small file of its own
// ("/dev/shm/ny.uisessions.<hash of the executable's path>.<pid>"), so that a server that
// starts after one of the same executable was killed can remove the channels it left behind.
#pragma once

#include <string>
#include <vector>

// Replaces this process's list with vNames (an empty list removes the file).
void SessionRegistryWrite(const std::vector<std::string>& vNames);
// Adds one name to this process's list: a single append on a descriptor kept open, so that a
// storm of session starts does not rewrite the whole list at every start.
void SessionRegistryAdd(const std::string& strName);
// For every list of a dead process of this executable: removes each listed session channel
// that no live process holds, then the list. Returns how many channels were removed.
size_t SessionRegistryClearDead();
