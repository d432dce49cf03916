// Enumeration of the ids of a configuration image, in the order they are stored (for tools
// that list or summarise an image; lookups go through a handle).
#pragma once

#include <cstdint>

// Size-query contract over a count of ids: a null pu4Ids asks for the count; a capacity in
// *pu4Count below the count fails with NY_ERR_BUFFER_TOO_SMALL. The entry headers are checked
// as the parser checks them (NY_ERR_BAD_ARGUMENT); string variants are not looked into.
uint32_t NyCfgListIds(const unsigned char* pu1Image, uint32_t u4Length, uint32_t* pu4Ids,
                      uint32_t* pu4Count);
