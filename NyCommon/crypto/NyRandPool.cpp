#include "crypto/NyRandPool.h"

#include <errno.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <mutex>

namespace tinycrypto {
namespace {

constexpr size_t NY_RAND_POLL_SIZE = 48;

// One digest over several pieces; false when libcrypto fails.
class CNyRandDigest {
public:
    CNyRandDigest() : m_pCtx(EVP_MD_CTX_new()) {
        m_bOk = m_pCtx != nullptr && EVP_DigestInit_ex(m_pCtx, EVP_sha256(), nullptr) == 1;
    }
    ~CNyRandDigest() { EVP_MD_CTX_free(m_pCtx); }
    CNyRandDigest(const CNyRandDigest&) = delete;
    CNyRandDigest& operator=(const CNyRandDigest&) = delete;

    void Update(const void* pv, size_t cb) {
        m_bOk = m_bOk && (cb == 0 || EVP_DigestUpdate(m_pCtx, pv, cb) == 1);
    }
    // Feeds cb bytes of the state ring starting at uIndex, wrapping at its end.
    void UpdateRing(const uint8_t* pu1Ring, size_t uIndex, size_t cb) {
        size_t cbFirst = std::min(cb, NY_RAND_STATE_SIZE - uIndex);
        Update(pu1Ring + uIndex, cbFirst);
        Update(pu1Ring, cb - cbFirst);
    }
    bool Final(uint8_t* pu1Md) {
        unsigned int u4Len = 0;
        m_bOk = m_bOk && EVP_DigestFinal_ex(m_pCtx, pu1Md, &u4Len) == 1 && u4Len == NY_RAND_MD_SIZE;
        return m_bOk;
    }

private:
    EVP_MD_CTX* m_pCtx;
    bool m_bOk;
};

// XORs cb bytes into the state ring at *puIndex and advances the index.
void NyRandXorIntoRing(ny_rand_state_st* pState, size_t* puIndex, const uint8_t* pu1, size_t cb) {
    for (size_t i = 0; i < cb; ++i) {
        pState->au1State[*puIndex] ^= pu1[i];
        *puIndex = (*puIndex + 1) % NY_RAND_STATE_SIZE;
    }
}

ny_rand_state_st m_blkPool = {};
std::mutex m_poolMutex;

}  // namespace

int md_rand_init(ny_rand_state_st* pState) {
    OPENSSL_cleanse(pState, sizeof(*pState));
    return 1;
}

void md_rand_deinit(ny_rand_state_st* pState) {
    OPENSSL_cleanse(pState, sizeof(*pState));
}

int md_rand_add(ny_rand_state_st* pState, const void* pvBuf, int iNum, double dEntropy) {
    if (pvBuf == nullptr || iNum < 0) {
        return 0;
    }
    const uint8_t* pu1Buf = static_cast<const uint8_t*>(pvBuf);
    uint8_t au1LocalMd[NY_RAND_MD_SIZE];
    memcpy(au1LocalMd, pState->au1Md, sizeof(au1LocalMd));
    size_t cbTotal = static_cast<size_t>(iNum);
    for (size_t i = 0; i < cbTotal; i += NY_RAND_MD_SIZE) {
        size_t cb = std::min(cbTotal - i, NY_RAND_MD_SIZE);
        CNyRandDigest digest;
        digest.Update(au1LocalMd, sizeof(au1LocalMd));
        digest.UpdateRing(pState->au1State, pState->uStateIndex, cb);
        digest.Update(pu1Buf + i, cb);
        digest.Update(pState->au8MdCount, sizeof(pState->au8MdCount));
        if (!digest.Final(au1LocalMd)) {
            OPENSSL_cleanse(au1LocalMd, sizeof(au1LocalMd));
            return 0;
        }
        pState->au8MdCount[1]++;
        NyRandXorIntoRing(pState, &pState->uStateIndex, au1LocalMd, cb);
    }
    for (size_t k = 0; k < NY_RAND_MD_SIZE; ++k) {
        pState->au1Md[k] ^= au1LocalMd[k];
    }
    OPENSSL_cleanse(au1LocalMd, sizeof(au1LocalMd));
    pState->dEntropy += std::min(std::max(dEntropy, 0.0), static_cast<double>(iNum));
    return 1;
}

// Caller material stirs the pool but counts as no entropy: only the kernel's does.
int md_rand_seed(ny_rand_state_st* pState, const void* pvBuf, int iNum) {
    return md_rand_add(pState, pvBuf, iNum, 0.0);
}

int md_rand_poll(ny_rand_state_st* pState) {
    uint8_t au1Seed[NY_RAND_POLL_SIZE];
    size_t cbHave = 0;
    while (cbHave < sizeof(au1Seed)) {
        ssize_t cbGot = getrandom(au1Seed + cbHave, sizeof(au1Seed) - cbHave, 0);
        if (cbGot < 0 && errno == EINTR) {
            continue;
        }
        if (cbGot <= 0) {
            OPENSSL_cleanse(au1Seed, sizeof(au1Seed));
            return 0;
        }
        cbHave += static_cast<size_t>(cbGot);
    }
    int iOk = md_rand_add(pState, au1Seed, sizeof(au1Seed), sizeof(au1Seed));
    OPENSSL_cleanse(au1Seed, sizeof(au1Seed));
    return iOk;
}

int md_rand_bytes(ny_rand_state_st* pState, unsigned char* pu1Out, int iNum) {
    if (pu1Out == nullptr || iNum < 0) {
        return 0;
    }
    if (!pState->bInitialised) {
        if (md_rand_poll(pState) != 1) {
            return 0;
        }
        pState->bInitialised = true;
    }
    if (pState->dEntropy < NY_RAND_ENTROPY_NEEDED) {
        return 0;
    }
    pState->au8MdCount[0]++;
    // The process id keeps a forked child from repeating its parent's output.
    const pid_t pid = getpid();
    uint8_t au1LocalMd[NY_RAND_MD_SIZE];
    memcpy(au1LocalMd, pState->au1Md, sizeof(au1LocalMd));
    constexpr size_t cbHalf = NY_RAND_MD_SIZE / 2;
    size_t cbLeft = static_cast<size_t>(iNum);
    int iOk = 1;
    while (cbLeft > 0 && iOk == 1) {
        size_t cb = std::min(cbLeft, cbHalf);
        CNyRandDigest digest;
        digest.Update(au1LocalMd, sizeof(au1LocalMd));
        digest.Update(pState->au8MdCount, sizeof(pState->au8MdCount));
        digest.Update(&pid, sizeof(pid));
        digest.UpdateRing(pState->au1State, pState->uStateIndex, cbHalf);
        if (!digest.Final(au1LocalMd)) {
            iOk = 0;
            break;
        }
        // First half feeds back into the state, second half is output.
        NyRandXorIntoRing(pState, &pState->uStateIndex, au1LocalMd, cbHalf);
        memcpy(pu1Out, au1LocalMd + cbHalf, cb);
        pu1Out += cb;
        cbLeft -= cb;
        pState->au8MdCount[1]++;
    }
    CNyRandDigest digest;
    digest.Update(pState->au8MdCount, sizeof(pState->au8MdCount));
    digest.Update(au1LocalMd, sizeof(au1LocalMd));
    digest.Update(pState->au1Md, sizeof(pState->au1Md));
    if (!digest.Final(pState->au1Md)) {
        iOk = 0;
    }
    OPENSSL_cleanse(au1LocalMd, sizeof(au1LocalMd));
    return iOk;
}

int RAND_bytes(unsigned char* pu1Out, int iNum) {
    std::lock_guard<std::mutex> lock(m_poolMutex);
    return md_rand_bytes(&m_blkPool, pu1Out, iNum);
}

int RAND_seed(const void* pvBuf, int iNum) {
    std::lock_guard<std::mutex> lock(m_poolMutex);
    return md_rand_seed(&m_blkPool, pvBuf, iNum);
}

int RAND_add(const void* pvBuf, int iNum, double dEntropy) {
    std::lock_guard<std::mutex> lock(m_poolMutex);
    return md_rand_add(&m_blkPool, pvBuf, iNum, dEntropy);
}

int RAND_status() {
    std::lock_guard<std::mutex> lock(m_poolMutex);
    if (!m_blkPool.bInitialised && md_rand_poll(&m_blkPool) == 1) {
        m_blkPool.bInitialised = true;
    }
    return m_blkPool.dEntropy >= NY_RAND_ENTROPY_NEEDED ? 1 : 0;
}

}  // namespace tinycrypto
