#include "crypto/NyCryptoProvider.h"

#include <openssl/crypto.h>
#include <openssl/provider.h>

#include <cstdlib>
#include <cstring>
#include <mutex>

namespace {

// A small name-keyed cache; names are the few literals of the algorithm tables.
template <typename T, void (*Free)(T*)>
class CNyFetchCache {
public:
    T* Find(const char* szName) const {
        for (size_t i = 0; i < m_uCount; ++i) {
            if (std::strcmp(m_aEntries[i].szName, szName) == 0) {
                return m_aEntries[i].p;
            }
        }
        return nullptr;
    }
    void Add(const char* szName, T* p) {
        if (m_uCount < kCapacity) {
            m_aEntries[m_uCount++] = {szName, p};
        } else {
            Free(p);
        }
    }
    void Clear() {
        for (size_t i = 0; i < m_uCount; ++i) {
            Free(m_aEntries[i].p);
        }
        m_uCount = 0;
    }

private:
    static constexpr size_t kCapacity = 48;
    struct Entry {
        const char* szName;
        T* p;
    };
    Entry m_aEntries[kCapacity] = {};
    size_t m_uCount = 0;
};

std::once_flag m_ProvidersOnce;
std::mutex m_CacheMutex;
OSSL_PROVIDER* m_pDefaultProvider = nullptr;
OSSL_PROVIDER* m_pLegacyProvider = nullptr;
CNyFetchCache<EVP_CIPHER, EVP_CIPHER_free> m_Ciphers;
CNyFetchCache<EVP_MD, EVP_MD_free> m_Digests;

// Registered after libcrypto's own exit handler, so it runs first: everything we hold is
// returned while libcrypto can still take it back.
void ReleaseAtExit() {
    std::lock_guard<std::mutex> lock(m_CacheMutex);
    m_Ciphers.Clear();
    m_Digests.Clear();
    OSSL_PROVIDER_unload(m_pLegacyProvider);
    OSSL_PROVIDER_unload(m_pDefaultProvider);
    m_pLegacyProvider = nullptr;
    m_pDefaultProvider = nullptr;
}

// Both are loaded explicitly: once any provider is loaded by hand, libcrypto no longer falls
// back to the default one by itself.
void LoadProviders() {
    OPENSSL_init_crypto(0, nullptr);
    m_pDefaultProvider = OSSL_PROVIDER_load(nullptr, "default");
    m_pLegacyProvider = OSSL_PROVIDER_load(nullptr, "legacy");
    std::atexit(ReleaseAtExit);
}

template <typename T, void (*Free)(T*), T* (*Fetch)(OSSL_LIB_CTX*, const char*, const char*)>
const T* FetchCached(CNyFetchCache<T, Free>& cache, const char* szName) {
    std::call_once(m_ProvidersOnce, LoadProviders);
    std::lock_guard<std::mutex> lock(m_CacheMutex);
    T* p = cache.Find(szName);
    if (p == nullptr) {
        p = Fetch(nullptr, szName, nullptr);
        if (p != nullptr) {
            cache.Add(szName, p);
        }
    }
    return p;
}

}  // namespace

const EVP_CIPHER* NyCryptoCipher(const char* szName) {
    return FetchCached<EVP_CIPHER, EVP_CIPHER_free, EVP_CIPHER_fetch>(m_Ciphers, szName);
}

const EVP_MD* NyCryptoDigest(const char* szName) {
    return FetchCached<EVP_MD, EVP_MD_free, EVP_MD_fetch>(m_Digests, szName);
}
