#include <gtest/gtest.h>

#include <cstring>

#include "comm/CCommShmSessionRecord.h"
#include "comm/CLock.h"
#include "support/NyTestNames.h"

namespace {

void* H(uintptr_t u8Value) {
    return reinterpret_cast<void*>(u8Value);
}

// A record named szName whose mutex handle carries a marker, to tell records apart.
BlkCommShmInfoTag Record(const char* szName, uintptr_t u8Marker) {
    BlkCommShmInfoTag blkInfo = {};
    std::strncpy(blkInfo.szName, szName, sizeof(blkInfo.szName) - 1);
    blkInfo.hMutex = H(u8Marker);
    return blkInfo;
}

}  // namespace

TEST(CCommShmSessionRecord, LookupsInsertsAndUpdatesFollowHandlesAndExactNames) {
    CCommShmSessionRecord table;
    void* hFound = nullptr;
    BlkCommShmInfoTag blkOut = {};
    EXPECT_FALSE(table.Find("chan", &hFound, nullptr));
    EXPECT_FALSE(table.Find(H(0x10), nullptr));
    EXPECT_TRUE(table.Delete(H(0x10)));
    EXPECT_FALSE(table.Update(H(0x10), Record("chan", 1)));
    // One handle and name inserted twice keeps the first record; lookups hand out copies.
    EXPECT_TRUE(table.Insert(H(0x30), Record("chan", 3)));
    EXPECT_TRUE(table.Insert(H(0x30), Record("chan", 9)));
    ASSERT_TRUE(table.Find(H(0x30), &blkOut));
    EXPECT_EQ(blkOut.hMutex, H(3));
    blkOut.hMutex = H(7);
    ASSERT_TRUE(table.Find(H(0x30), &blkOut));
    EXPECT_EQ(blkOut.hMutex, H(3));
    // A name finds the lowest handle that carries exactly that name.
    ASSERT_TRUE(table.Insert(H(0x20), Record("chan", 2)));
    ASSERT_TRUE(table.Insert(H(0x10), Record("channel", 1)));
    ASSERT_TRUE(table.Find("chan", &hFound, &blkOut));
    EXPECT_EQ(hFound, H(0x20));
    EXPECT_EQ(blkOut.hMutex, H(2));
    EXPECT_FALSE(table.Find("cha", &hFound, nullptr));
    // An update is allowed by the record's name, and creates the entry of a new handle.
    EXPECT_FALSE(table.Update(H(0x20), Record("other", 9)));
    ASSERT_TRUE(table.Find(H(0x20), &blkOut));
    EXPECT_STREQ(blkOut.szName, "chan");
    EXPECT_TRUE(table.Update(H(0x40), Record("chan", 4)));
    ASSERT_TRUE(table.Find(H(0x40), &blkOut));
    EXPECT_EQ(blkOut.hMutex, H(4));
    EXPECT_TRUE(table.Delete(H(0x20)));
    EXPECT_TRUE(table.Delete(H(0x30)));
    EXPECT_TRUE(table.Delete(H(0x40)));
    EXPECT_FALSE(table.Find("chan", nullptr, nullptr));
}

TEST(CCommShmSessionRecord, DetachedChannelIsHiddenUntilItsLastUserReleasesIt) {
    CCommShmSessionRecord table;
    ASSERT_TRUE(table.Insert(H(0x10), Record("chan", 1)));
    BlkCommShmInfoTag blkOut = {};
    ASSERT_TRUE(table.Acquire(H(0x10), &blkOut));
    void* hFound = nullptr;
    ASSERT_TRUE(table.Acquire("chan", &hFound, &blkOut));
    EXPECT_EQ(hFound, H(0x10));

    ASSERT_TRUE(table.Detach(H(0x10)));
    EXPECT_FALSE(table.Detach(H(0x10)));
    EXPECT_FALSE(table.Find(H(0x10), nullptr));
    EXPECT_FALSE(table.Acquire("chan", &hFound, nullptr));

    // A live channel is never handed back for destruction.
    ASSERT_TRUE(table.Insert(H(0x20), Record("live", 2)));
    ASSERT_TRUE(table.Acquire(H(0x20), nullptr));
    BlkCommShmInfoTag blkDead = {};
    EXPECT_FALSE(table.Release(H(0x20), &blkDead));

    EXPECT_FALSE(table.Release(H(0x10), &blkDead));
    ASSERT_TRUE(table.Release(H(0x10), &blkDead));
    EXPECT_EQ(blkDead.hMutex, H(1));
    EXPECT_FALSE(table.Release(H(0x10), &blkDead));
}

TEST(CLock, IsRecursiveAndRefusesAnUnlockItDoesNotOwe) {
    for (const std::string& strName : {std::string(), NyTestUniqueName("comm-clock")}) {
        CLock lock(strName.c_str());
        EXPECT_TRUE(lock.Lock());
        EXPECT_TRUE(lock.Lock());
        EXPECT_TRUE(lock.Unlock());
        EXPECT_TRUE(lock.Unlock());
        EXPECT_FALSE(lock.Unlock()) << strName;
    }
}
