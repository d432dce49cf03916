// Variants of a configuration image for tests that need a setting the product image does not
// have: the bytes are copied entry by entry with one numeric value changed or one entry left out.
#pragma once

#include <cstdint>
#include <vector>

// A copy of the image with the value of u4Id replaced by u4Value (little-endian, in the
// entry's own width). Fails the calling test when the image is malformed or lacks the id.
std::vector<uint8_t> NyTestCfgImageWithNumber(const uint8_t* pu1Image, uint32_t u4Length,
                                              uint32_t u4Id, uint32_t u4Value);
// A copy of the image without the entry of u4Id (fails the test when there is none).
std::vector<uint8_t> NyTestCfgImageWithout(const uint8_t* pu1Image, uint32_t u4Length,
                                           uint32_t u4Id);
