// Parsing of configuration images: what is accepted, and that anything malformed fails whole.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CfgTestImage.h"
#include "config/NyCfgIds.h"
#include "config/NyCfgParse.h"
#include "runtime/NyResult.h"
#include "support/NyTestLogCapture.h"

namespace {

// A small valid image: a text, a byte and a raw value.
CCfgTestImage ValidImage() {
    CCfgTestImage image;
    image.Text(0x00010002, "UKey", "UKey").U1(0x00020010, 6).Entry(0x00000001, {0xAA, 0xBB});
    return image;
}

TEST(NyCfgParse, MalformedImagesFailWholeWithNullHandle) {
    std::vector<uint8_t> vTrailing = CCfgTestImage::VariantBytes(0, "ok");
    vTrailing.insert(vTrailing.end(), {1, 0, 0, 0, 0});
    std::vector<std::pair<const char*, CCfgTestImage>> vCases = {
        {"five bytes", CCfgTestImage().Bytes({1, 0, 0, 0, 0})},
        {"header only", CCfgTestImage().Header(0x00000001, 0)},
        {"first entry runs past the end", CCfgTestImage().Header(0x00000001, 2).Bytes({1})},
        {"later entry runs past the end", ValidImage().Header(0x00000002, 5).Bytes({1, 2, 3, 4})},
        {"length that wraps 32 bits",
         ValidImage().Header(0x00000002, 0xFFFFFFFF).Bytes({1, 2, 3, 4})},
        {"same slot under two types", CCfgTestImage().Text(0x00010002, "a", "b").U4(0x00040002, 1)},
        {"same slot twice", CCfgTestImage().U1(0x00020010, 1).U1(0x00020010, 2)},
        {"group 8", CCfgTestImage().U1(0x00820001, 1)},
        {"group 15", CCfgTestImage().Entry(0x00F00001, {1})},
        {"variant index 64", CCfgTestImage().Variants(0x00010002, {{64, "x"}})},
        {"same variant twice", CCfgTestImage().Variants(0x00010002, {{0, "a"}, {0, "b"}})},
        {"string value of 5 bytes", CCfgTestImage().Entry(0x00010002, {0, 1, 0, 0, 0})},
        {"string value of 1 byte", CCfgTestImage().Entry(0x00010002, {0})},
        {"variant runs past its value", CCfgTestImage().Entry(0x00010002, {0, 9, 0, 0, 0, 'a', 0})},
        {"string value with stray bytes", CCfgTestImage().Entry(0x00010002, vTrailing)}};
    for (uint8_t u1Stray = 1; u1Stray <= 8; ++u1Stray) {
        vCases.push_back({"stray bytes after the last entry",
                          ValidImage().Bytes(std::vector<uint8_t>(u1Stray, 0))});
    }
    for (const auto& c : vCases) {
        SCOPED_TRACE(c.first);
        BlkCfgHandleTag* hCfg = reinterpret_cast<BlkCfgHandleTag*>(1);
        EXPECT_EQ(NyCfgInit(c.second.Data().data(), c.second.Size(), &hCfg), NY_ERR_BAD_ARGUMENT);
        EXPECT_EQ(hCfg, nullptr);
        BlkCfgTreeTag* pTree = reinterpret_cast<BlkCfgTreeTag*>(1);
        EXPECT_EQ(CfgTreeParse(c.second.Data().data(), c.second.Size(), &pTree),
                  NY_ERR_BAD_ARGUMENT);
        EXPECT_EQ(pTree, nullptr);
    }
}

TEST(NyCfgParse, EdgeValuesThatAreAccepted) {
    // A string of length 0 has no variants; an empty raw value is a value; types 5-15 are
    // stored as they are; variant 63 is the last slot.
    CCfgTestImage image;
    image.Entry(0x00010007, {})
        .Entry(0x00000009, {})
        .Entry(0x00050003, {7})
        .Variants(0x00010008, {{63, "last"}});
    CCfgTestHandle handle{image};
    ASSERT_EQ(handle.InitResult(), NY_OK);
    unsigned int u4Length = 0;
    EXPECT_EQ(NyCfgGetValue(handle.Get(), 0x00010007, nullptr, &u4Length), NY_ERR_NOT_FOUND);
    u4Length = 4;
    unsigned char au1[8] = {};
    EXPECT_EQ(NyCfgGetValue(handle.Get(), 0x00000009, au1, &u4Length), NY_OK);
    EXPECT_EQ(u4Length, 0u);
    u4Length = 4;
    EXPECT_EQ(NyCfgGetValue(handle.Get(), 0x00050003, au1, &u4Length), NY_OK);
    EXPECT_EQ(au1[0], 7);
    handle.Get()->u1Lang = 63;
    u4Length = sizeof(au1);
    EXPECT_EQ(NyCfgGetValue(handle.Get(), 0x00010008, au1, &u4Length), NY_OK);
    EXPECT_STREQ(reinterpret_cast<char*>(au1), "last");
}

TEST(NyCfgParse, TreeAddValueWritesASlotOnceAndChecksBounds) {
    BlkCfgTreeTag* pTree = nullptr;
    ASSERT_EQ(CfgTreeCreate(&pTree), NY_OK);
    EXPECT_EQ(pTree->u4Count, 0u);
    const unsigned char au1[] = {'a', 'b'};
    EXPECT_EQ(CfgTreeAddValue(pTree, 7, 4095, 63, 0, au1, 2), NY_OK);
    EXPECT_EQ(pTree->u4Count, 8u);
    EXPECT_EQ(CfgTreeAddValue(pTree, 7, 4095, 63, 4, au1, 1), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(CfgTreeAddValue(pTree, 8, 0, 0, 0, au1, 1), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(CfgTreeAddValue(pTree, 0, 4096, 0, 0, au1, 1), NY_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(CfgTreeAddValue(pTree, 0, 0, 64, 0, au1, 1), NY_ERR_INVALID_ARGUMENT);
    uint32_t u4Type = 99;
    unsigned char au1Out[4] = {};
    uint32_t u4Length = sizeof(au1Out);
    ASSERT_EQ(CfgTreeGetValue(pTree, 7, 4095, 63, &u4Type, au1Out, &u4Length), NY_OK);
    EXPECT_EQ(u4Type, 0u);
    EXPECT_EQ(u4Length, 2u);
    EXPECT_EQ(pTree->pGroups[7].pItems[4095].pLeaves[63].pu1Value[2], 0) << "NUL appended";
    EXPECT_EQ(CfgTreeGetValue(pTree, 7, 4095, 62, &u4Type, au1Out, &u4Length), NY_ERR_NOT_FOUND);
    EXPECT_EQ(CfgTreeGetValue(pTree, 7, 4095, 64, &u4Type, au1Out, &u4Length), NY_ERR_NOT_FOUND);
    EXPECT_EQ(CfgTreeGetValue(pTree, 6, 0, 0, &u4Type, au1Out, &u4Length), NY_ERR_NOT_FOUND);
    CfgTreeDestroy(pTree);
}

TEST(NyCfgParse, ListIdsFollowsTheImageOrderAndTheSizeQueryContract) {
    CCfgTestImage image = ValidImage();
    uint32_t u4Count = 0;
    ASSERT_EQ(NyCfgListIds(image.Data().data(), image.Size(), nullptr, &u4Count), NY_OK);
    EXPECT_EQ(u4Count, 3u);
    uint32_t au4Ids[3] = {};
    u4Count = 2;
    EXPECT_EQ(NyCfgListIds(image.Data().data(), image.Size(), au4Ids, &u4Count),
              NY_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(u4Count, 3u);
    ASSERT_EQ(NyCfgListIds(image.Data().data(), image.Size(), au4Ids, &u4Count), NY_OK);
    EXPECT_EQ(std::vector<uint32_t>(au4Ids, au4Ids + 3),
              (std::vector<uint32_t>{0x00010002u, 0x00020010u, 0x00000001u}));
    image.Bytes({0, 0, 0});
    EXPECT_EQ(NyCfgListIds(image.Data().data(), image.Size(), au4Ids, &u4Count),
              NY_ERR_BAD_ARGUMENT);
    u4Count = 5;
    EXPECT_EQ(NyCfgListIds(nullptr, 0, au4Ids, &u4Count), NY_OK);
    EXPECT_EQ(u4Count, 0u);
}

}  // namespace
