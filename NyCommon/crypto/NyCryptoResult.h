// Result codes of the cipher and hash facade. Most are the library's common codes under the
// meaning they carry here.
#pragma once

#include <cstdint>

#include "runtime/NyResult.h"

// The primitive (libcrypto routine) failed.
constexpr uint32_t NY_ERR_SYMM_PRIMITIVE = NY_ERR_BAD_ARGUMENT;
// The input length is not a whole number of cipher blocks.
constexpr uint32_t NY_ERR_SYMM_NOT_BLOCKS = NY_ERR_MEM_TOO_SMALL;
// External block cipher not registered, or asked for CBC without the capability.
constexpr uint32_t NY_ERR_SYMM_NO_EXTERN = NY_ERR_GLOBAL_REFUSED;
// RC4 is a stream cipher and refuses an IV.
constexpr uint32_t NY_ERR_SYMM_RC4_IV = 0xFFFFFFFF;
