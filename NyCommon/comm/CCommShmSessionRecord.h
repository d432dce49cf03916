// This process's table of open channels: channel handle -> BlkCommShmInfoTag, with lookup by
// name so that a second start or connect under one name reuses the open channel. Every
// operation holds the table's in-process lock for its whole duration and returns false when the
// lock cannot be taken or released. Lookups hand out copies, never references into the table.
//
// Besides the plain map operations the table counts the users of each channel: a channel that
// is closed (Detach) while other threads still work on it stays alive, out of sight of the
// lookups, until its last user has left (Release), so no thread uses a closed object.
#pragma once

#include <cstdint>
#include <map>

#include "comm/BlkCommShmInfo.h"
#include "comm/CLock.h"

class CCommShmSessionRecord {
public:
    // Copy of the record under the handle (pInfo may be null).
    bool Find(void* hSession, BlkCommShmInfoTag* pInfo);
    // The first entry, in ascending handle order, whose name equals szName.
    bool Find(const char* szName, void** phSession, BlkCommShmInfoTag* pInfo);
    // Stores the record under the handle, unless the first entry of its name already is that
    // handle (then nothing changes). Two handles may carry one name.
    bool Insert(void* hSession, const BlkCommShmInfoTag& blkInfo);
    // Stores the record under the handle, provided an entry with the record's name exists.
    bool Update(void* hSession, const BlkCommShmInfoTag& blkInfo);
    // Removes the handle's entry; a handle that is not there is not an error.
    bool Delete(void* hSession);

    // Find and count one more user of the channel; each success is paired with Release.
    bool Acquire(void* hSession, BlkCommShmInfoTag* pInfo);
    bool Acquire(const char* szName, void** phSession, BlkCommShmInfoTag* pInfo);
    // Takes the channel out of the lookups; false if it was not there (already closed).
    bool Detach(void* hSession);
    // One user less. True when the channel was detached and this was its last user: the caller
    // then destroys *pToDestroy.
    bool Release(void* hSession, BlkCommShmInfoTag* pToDestroy);

    // Around fork(): the table is locked while the process is copied; the child then forgets
    // every channel, since the objects' locks and holds stay with the parent (handles are
    // dropped, not closed).
    void ForkPrepare();
    void ForkParent();
    void ForkChild();

private:
    struct BlkEntryTag {
        BlkCommShmInfoTag blkInfo;
        uint32_t u4Users;
    };
    typedef std::map<uintptr_t, BlkEntryTag> MapEntries;

    template <typename Fn>
    bool Locked(Fn fnBody);
    MapEntries::iterator FindName(const char* szName);
    static void Store(MapEntries::iterator it, void* hSession, BlkCommShmInfoTag* pInfo,
                      void** phSession);

    MapEntries m_mapLive;
    MapEntries m_mapClosing;  // detached, still in use
    CLock m_lock;
};
