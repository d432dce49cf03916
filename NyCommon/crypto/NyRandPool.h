// The tinycrypto entropy pool: a message-digest pool of the md_rand kind. Material is stirred
// into a state array with SHA-256 (libcrypto EVP); output is drawn by hashing the pool state;
// the kernel (getrandom) seeds it on first use. One pool per process, safe from any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tinycrypto {

constexpr size_t NY_RAND_STATE_SIZE = 1023;
constexpr size_t NY_RAND_MD_SIZE = 32;         // SHA-256
constexpr double NY_RAND_ENTROPY_NEEDED = 32;  // bytes of kernel entropy before output is given

struct ny_rand_state_st {
    uint8_t au1State[NY_RAND_STATE_SIZE];
    uint8_t au1Md[NY_RAND_MD_SIZE];
    size_t uStateIndex;
    uint64_t au8MdCount[2];
    double dEntropy;
    bool bInitialised;
};

// 1 on success, 0 on failure (hash failure, or no kernel entropy could be had).
int md_rand_init(ny_rand_state_st* pState);
int md_rand_poll(ny_rand_state_st* pState);
int md_rand_add(ny_rand_state_st* pState, const void* pvBuf, int iNum, double dEntropy);
int md_rand_seed(ny_rand_state_st* pState, const void* pvBuf, int iNum);
int md_rand_bytes(ny_rand_state_st* pState, unsigned char* pu1Out, int iNum);
void md_rand_deinit(ny_rand_state_st* pState);

// The process-wide pool. 1 on success, 0 on failure.
int RAND_bytes(unsigned char* pu1Out, int iNum);
int RAND_seed(const void* pvBuf, int iNum);
int RAND_add(const void* pvBuf, int iNum, double dEntropy);
// 1 when the pool holds enough kernel entropy to deliver.
int RAND_status();

}  // namespace tinycrypto
