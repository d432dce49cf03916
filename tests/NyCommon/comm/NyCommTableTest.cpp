#include <gtest/gtest.h>

#include <cstring>

#include "comm/CCommShmSessionRecord.h"
#include "comm/CLock.h"
#include "support/NyTestNames.h"

namespace {

void* Handle(uintptr_t u8Value) {
    return reinterpret_cast<void*>(u8Value);
}

BlkCommShmInfoTag Record(const char* szName, uintptr_t u8Marker) {
    BlkCommShmInfoTag blkInfo = {};
    std::strncpy(blkInfo.szName, szName, sizeof(blkInfo.szName) - 1);
    blkInfo.hMutex = Handle(u8Marker);
    return blkInfo;
}

}  // namespace

TEST(CCommShmSessionRecord, EmptyTableFindsNothingAndDeletesAnything) {
    CCommShmSessionRecord table;
    void* hFound = nullptr;
    EXPECT_FALSE(table.Find("a", &hFound, nullptr));
    EXPECT_FALSE(table.Find(Handle(0x10), nullptr));
    EXPECT_TRUE(table.Delete(Handle(0x10)));
    EXPECT_FALSE(table.Update(Handle(0x10), Record("a", 1)));
    EXPECT_FALSE(table.Find(Handle(0x10), nullptr));
}

TEST(CCommShmSessionRecord, InsertingOneHandleAndNameTwiceKeepsTheFirstRecord) {
    CCommShmSessionRecord table;
    EXPECT_TRUE(table.Insert(Handle(0x10), Record("chan", 1)));
    EXPECT_TRUE(table.Insert(Handle(0x10), Record("chan", 2)));
    BlkCommShmInfoTag blkOut = {};
    ASSERT_TRUE(table.Find(Handle(0x10), &blkOut));
    EXPECT_EQ(blkOut.hMutex, Handle(1));
    // What a lookup hands out is a copy.
    blkOut.hMutex = Handle(7);
    ASSERT_TRUE(table.Find("chan", nullptr, &blkOut));
    EXPECT_EQ(blkOut.hMutex, Handle(1));
    EXPECT_TRUE(table.Delete(Handle(0x10)));
    EXPECT_FALSE(table.Find("chan", nullptr, nullptr));
}

TEST(CCommShmSessionRecord, NameLookupReturnsTheLowestHandleCarryingExactlyThatName) {
    CCommShmSessionRecord table;
    ASSERT_TRUE(table.Insert(Handle(0x30), Record("chan", 3)));
    ASSERT_TRUE(table.Insert(Handle(0x20), Record("chan", 2)));
    ASSERT_TRUE(table.Insert(Handle(0x10), Record("channel", 1)));
    void* hFound = nullptr;
    BlkCommShmInfoTag blkOut = {};
    ASSERT_TRUE(table.Find("chan", &hFound, &blkOut));
    EXPECT_EQ(hFound, Handle(0x20));
    EXPECT_EQ(blkOut.hMutex, Handle(2));
    EXPECT_FALSE(table.Find("cha", &hFound, nullptr));
}

TEST(CCommShmSessionRecord, UpdateIsAllowedByTheNameNotByTheHandle) {
    CCommShmSessionRecord table;
    ASSERT_TRUE(table.Insert(Handle(0x10), Record("chan", 1)));
    EXPECT_FALSE(table.Update(Handle(0x10), Record("other", 9)));
    BlkCommShmInfoTag blkOut = {};
    ASSERT_TRUE(table.Find(Handle(0x10), &blkOut));
    EXPECT_STREQ(blkOut.szName, "chan");
    // A known name under a handle not yet in the table creates its entry.
    EXPECT_TRUE(table.Update(Handle(0x40), Record("chan", 4)));
    ASSERT_TRUE(table.Find(Handle(0x40), &blkOut));
    EXPECT_EQ(blkOut.hMutex, Handle(4));
}

TEST(CCommShmSessionRecord, DetachedChannelIsHiddenUntilItsLastUserReleasesIt) {
    CCommShmSessionRecord table;
    ASSERT_TRUE(table.Insert(Handle(0x10), Record("chan", 1)));
    BlkCommShmInfoTag blkOut = {};
    ASSERT_TRUE(table.Acquire(Handle(0x10), &blkOut));
    void* hFound = nullptr;
    ASSERT_TRUE(table.Acquire("chan", &hFound, &blkOut));
    EXPECT_EQ(hFound, Handle(0x10));

    ASSERT_TRUE(table.Detach(Handle(0x10)));
    EXPECT_FALSE(table.Detach(Handle(0x10)));
    EXPECT_FALSE(table.Find(Handle(0x10), nullptr));
    EXPECT_FALSE(table.Acquire("chan", &hFound, nullptr));

    // A live channel is never handed back for destruction.
    ASSERT_TRUE(table.Insert(Handle(0x20), Record("live", 2)));
    ASSERT_TRUE(table.Acquire(Handle(0x20), nullptr));
    BlkCommShmInfoTag blkDead = {};
    EXPECT_FALSE(table.Release(Handle(0x20), &blkDead));

    EXPECT_FALSE(table.Release(Handle(0x10), &blkDead));
    ASSERT_TRUE(table.Release(Handle(0x10), &blkDead));
    EXPECT_EQ(blkDead.hMutex, Handle(1));
    EXPECT_FALSE(table.Release(Handle(0x10), &blkDead));
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
