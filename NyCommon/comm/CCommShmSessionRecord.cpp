#include "comm/CCommShmSessionRecord.h"

#include <cstring>
#include <new>

namespace {

uintptr_t Key(void* hSession) {
    return reinterpret_cast<uintptr_t>(hSession);
}

}  // namespace

template <typename Fn>
bool CCommShmSessionRecord::Locked(Fn fnBody) {
    if (!m_lock.Lock()) {
        return false;
    }
    bool bResult = false;
    try {
        bResult = fnBody();
    } catch (const std::bad_alloc&) {
        bResult = false;
    }
    return m_lock.Unlock() && bResult;
}

CCommShmSessionRecord::MapEntries::iterator CCommShmSessionRecord::FindName(const char* szName) {
    for (auto it = m_mapLive.begin(); it != m_mapLive.end(); ++it) {
        if (std::strcmp(it->second.blkInfo.szName, szName) == 0) {
            return it;
        }
    }
    return m_mapLive.end();
}

void CCommShmSessionRecord::Store(MapEntries::iterator it, void* hSession, BlkCommShmInfoTag* pInfo,
                                  void** phSession) {
    if (pInfo != nullptr) {
        *pInfo = it->second.blkInfo;
    }
    if (phSession != nullptr) {
        *phSession = hSession;
    }
}

bool CCommShmSessionRecord::Find(void* hSession, BlkCommShmInfoTag* pInfo) {
    return Locked([&] {
        auto it = m_mapLive.find(Key(hSession));
        if (it == m_mapLive.end()) {
            return false;
        }
        Store(it, hSession, pInfo, nullptr);
        return true;
    });
}

bool CCommShmSessionRecord::Find(const char* szName, void** phSession, BlkCommShmInfoTag* pInfo) {
    return szName != nullptr && Locked([&] {
               auto it = FindName(szName);
               if (it == m_mapLive.end()) {
                   return false;
               }
               Store(it, reinterpret_cast<void*>(it->first), pInfo, phSession);
               return true;
           });
}

bool CCommShmSessionRecord::Insert(void* hSession, const BlkCommShmInfoTag& blkInfo) {
    return Locked([&] {
        auto itName = FindName(blkInfo.szName);
        if (itName != m_mapLive.end() && itName->first == Key(hSession)) {
            return true;
        }
        BlkEntryTag& entry = m_mapLive[Key(hSession)];
        entry.blkInfo = blkInfo;
        return true;
    });
}

bool CCommShmSessionRecord::Update(void* hSession, const BlkCommShmInfoTag& blkInfo) {
    return Locked([&] {
        if (FindName(blkInfo.szName) == m_mapLive.end()) {
            return false;
        }
        m_mapLive[Key(hSession)].blkInfo = blkInfo;
        return true;
    });
}

bool CCommShmSessionRecord::Delete(void* hSession) {
    return Locked([&] {
        m_mapLive.erase(Key(hSession));
        return true;
    });
}

bool CCommShmSessionRecord::Acquire(void* hSession, BlkCommShmInfoTag* pInfo) {
    return Locked([&] {
        auto it = m_mapLive.find(Key(hSession));
        if (it == m_mapLive.end()) {
            return false;
        }
        ++it->second.u4Users;
        Store(it, hSession, pInfo, nullptr);
        return true;
    });
}

bool CCommShmSessionRecord::Acquire(const char* szName, void** phSession,
                                    BlkCommShmInfoTag* pInfo) {
    return szName != nullptr && Locked([&] {
               auto it = FindName(szName);
               if (it == m_mapLive.end()) {
                   return false;
               }
               ++it->second.u4Users;
               Store(it, reinterpret_cast<void*>(it->first), pInfo, phSession);
               return true;
           });
}

bool CCommShmSessionRecord::Detach(void* hSession) {
    return Locked([&] {
        auto it = m_mapLive.find(Key(hSession));
        if (it == m_mapLive.end()) {
            return false;
        }
        m_mapClosing[it->first] = it->second;
        m_mapLive.erase(it);
        return true;
    });
}

bool CCommShmSessionRecord::Release(void* hSession, BlkCommShmInfoTag* pToDestroy) {
    return Locked([&] {
        auto it = m_mapLive.find(Key(hSession));
        if (it != m_mapLive.end()) {
            if (it->second.u4Users > 0) {
                --it->second.u4Users;
            }
            return false;
        }
        it = m_mapClosing.find(Key(hSession));
        if (it == m_mapClosing.end()) {
            return false;
        }
        if (it->second.u4Users > 1) {
            --it->second.u4Users;
            return false;
        }
        Store(it, hSession, pToDestroy, nullptr);
        m_mapClosing.erase(it);
        return true;
    });
}

void CCommShmSessionRecord::ForkPrepare() {
    m_lock.Lock();
}

void CCommShmSessionRecord::ForkParent() {
    m_lock.Unlock();
}

void CCommShmSessionRecord::ForkChild() {
    m_mapLive.clear();
    m_mapClosing.clear();
    m_lock.ResetAfterFork();
}
