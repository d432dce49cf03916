// The named objects behind a channel (region and mutex files under /dev/shm/com.qorin.ipc/,
// three semaphore sets), seen from outside: for tests that check a channel was cleaned up, or
// that pull it out from under a running server.
#pragma once

#include <string>

// True while any of the channel's files or semaphore sets exists.
bool NyTestChannelObjectsExist(const std::string& strName);

// Removes the channel's files and semaphore sets, whoever holds them.
void NyTestRemoveChannelObjects(const std::string& strName);
