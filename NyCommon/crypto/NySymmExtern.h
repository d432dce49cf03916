// The registry of external block ciphers behind identifiers 256 and 512.
#pragma once

#include "crypto/NySymm.h"

// A copy of the registration for u4AlgId; false when none is registered.
bool NySymmFindExternImpl(uint32_t u4AlgId, BlkSymmExternImplTag* pImpl);
