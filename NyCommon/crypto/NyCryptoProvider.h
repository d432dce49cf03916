// libcrypto primitives by name. The first call loads the default and the legacy provider (DES,
// RC2 and RC4 live in the latter); fetched primitives are kept for the life of the process.
#pragma once

#include <openssl/evp.h>

// Null when libcrypto has no such primitive.
const EVP_CIPHER* NyCryptoCipher(const char* szName);
const EVP_MD* NyCryptoDigest(const char* szName);
