// Memory for secrets (typed PINs, UI blocks that carry them): whole pages of their own, locked
// in RAM so they are never swapped out, left out of core dumps, and wiped before they are
// given back. When the pages cannot be locked (RLIMIT_MEMLOCK), the memory still works: it is
// then only kept out of core dumps and wiped.
#pragma once

#include <cstddef>

// At least cbSize zeroed bytes; null only when no memory is left at all.
void* NySecureAlloc(size_t cbSize);
// Wipes and frees memory from NySecureAlloc (null is ignored).
void NySecureFree(void* pv);
// Whether that memory is locked in RAM.
bool NySecureIsLocked(const void* pv);

// Memory for one object of type T, zeroed; freed (wiped) with the holder.
template <typename T>
class CNySecure {
public:
    CNySecure() : m_p(static_cast<T*>(NySecureAlloc(sizeof(T)))) {}
    ~CNySecure() { NySecureFree(m_p); }
    CNySecure(const CNySecure&) = delete;
    CNySecure& operator=(const CNySecure&) = delete;
    T& operator*() const { return *m_p; }
    T* Get() const { return m_p; }
    bool IsLocked() const { return NySecureIsLocked(m_p); }

private:
    T* m_p;
};
