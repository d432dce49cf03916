#include "support/NyTestCfgImage.h"

#include <gtest/gtest.h>

namespace {

constexpr uint32_t NY_TEST_CFG_ENTRY_HEADER = 8;  // id and value length, both u32

uint32_t ReadU32(const uint8_t* pu1) {
    return uint32_t(pu1[0]) | uint32_t(pu1[1]) << 8 | uint32_t(pu1[2]) << 16 |
           uint32_t(pu1[3]) << 24;
}

// Offset of u4Id's entry, or u4Length when the image lacks it or is malformed.
uint32_t FindEntry(const uint8_t* pu1Image, uint32_t u4Length, uint32_t u4Id) {
    uint32_t u4Offset = 0;
    while (u4Offset + NY_TEST_CFG_ENTRY_HEADER <= u4Length) {
        uint32_t u4ValueLen = ReadU32(pu1Image + u4Offset + 4);
        if (u4ValueLen > u4Length - u4Offset - NY_TEST_CFG_ENTRY_HEADER) {
            break;
        }
        if (ReadU32(pu1Image + u4Offset) == u4Id) {
            return u4Offset;
        }
        u4Offset += NY_TEST_CFG_ENTRY_HEADER + u4ValueLen;
    }
    ADD_FAILURE() << "configuration image has no entry " << std::hex << u4Id;
    return u4Length;
}

}  // namespace

std::vector<uint8_t> NyTestCfgImageWithNumber(const uint8_t* pu1Image, uint32_t u4Length,
                                              uint32_t u4Id, uint32_t u4Value) {
    std::vector<uint8_t> vImage(pu1Image, pu1Image + u4Length);
    uint32_t u4Offset = FindEntry(pu1Image, u4Length, u4Id);
    if (u4Offset == u4Length) {
        return vImage;
    }
    uint32_t u4Width = ReadU32(pu1Image + u4Offset + 4);
    EXPECT_LE(u4Width, 4u) << "entry " << std::hex << u4Id << " is not a number";
    for (uint32_t i = 0; i < u4Width && i < 4; ++i) {
        vImage[u4Offset + NY_TEST_CFG_ENTRY_HEADER + i] = uint8_t(u4Value >> (8 * i));
    }
    return vImage;
}

std::vector<uint8_t> NyTestCfgImageWithout(const uint8_t* pu1Image, uint32_t u4Length,
                                           uint32_t u4Id) {
    std::vector<uint8_t> vImage(pu1Image, pu1Image + u4Length);
    uint32_t u4Offset = FindEntry(pu1Image, u4Length, u4Id);
    if (u4Offset < u4Length) {
        vImage.erase(vImage.begin() + u4Offset, vImage.begin() + u4Offset +
                                                    NY_TEST_CFG_ENTRY_HEADER +
                                                    ReadU32(pu1Image + u4Offset + 4));
    }
    return vImage;
}
