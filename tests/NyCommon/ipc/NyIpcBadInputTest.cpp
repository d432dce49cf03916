// Bad input to every public entry: null or empty names, names too long for a path, null or
// foreign handles (each record's tag is checked), null outputs, global objects. Each gets its
// code; none may crash.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "NyIpcTestSupport.h"
#include "ipc/NyEvent.h"
#include "ipc/NyIpcName.h"
#include "ipc/NyIpcResult.h"
#include "ipc/NyMutex.h"
#include "ipc/NyShareMem.h"
#include "runtime/NyResult.h"

namespace {

typedef std::function<uint32_t(void* h)> PFN_HANDLE_CALL;

struct HandleCall {
    const char* szWhat;
    uint32_t u4OwnTag;  // calls accept only handles whose record carries this tag
    PFN_HANDLE_CALL pfn;
};

std::vector<HandleCall> AllHandleCalls() {
    static uint8_t s_au1Buf[8];
    static uint32_t s_u4Size;
    static void* s_pvData;
    return {
        {"NyEventSet", NY_EVENT_TAG, [](void* h) { return NyEventSet(h); }},
        {"NyEventReset", NY_EVENT_TAG, [](void* h) { return NyEventReset(h); }},
        {"NyEventWait", NY_EVENT_TAG, [](void* h) { return NyEventWait(h, 0); }},
        {"NyEventClose", NY_EVENT_TAG, [](void* h) { return NyEventClose(h); }},
        {"NyMutexWait", NY_MUTEX_TAG, [](void* h) { return NyMutexWait(h, 0); }},
        {"NyMutexRelease", NY_MUTEX_TAG, [](void* h) { return NyMutexRelease(h); }},
        {"NyMutexDestroy", NY_MUTEX_TAG, [](void* h) { return NyMutexDestroy(h); }},
        {"NyShareMemLock", NY_SHM_TAG, [](void* h) { return NyShareMemLock(h); }},
        {"NyShareMemLockTimeout", NY_SHM_TAG, [](void* h) { return NyShareMemLockTimeout(h, 0); }},
        {"NyShareMemUnlock", NY_SHM_TAG, [](void* h) { return NyShareMemUnlock(h); }},
        {"NyShareMemRead", NY_SHM_TAG, [](void* h) { return NyShareMemRead(h, 0, s_au1Buf, 1); }},
        {"NyShareMemWrite", NY_SHM_TAG, [](void* h) { return NyShareMemWrite(h, 0, s_au1Buf, 1); }},
        {"NyShareMemGetSize", NY_SHM_TAG, [](void* h) { return NyShareMemGetSize(h, &s_u4Size); }},
        {"NyShareMemGetData", NY_SHM_TAG, [](void* h) { return NyShareMemGetData(h, &s_pvData); }},
        {"NyShareMemClose", NY_SHM_TAG, [](void* h) { return NyShareMemClose(h); }},
    };
}

class NyIpcBadInputTest : public CIpcTest {};

TEST_F(NyIpcBadInputTest, NullAndForeignHandlesAreRefusedByEveryCall) {
    // Records that start with another kind's tag, or with no tag at all.
    struct {
        uint32_t u4Tag;
        uint8_t au1Rest[60];
    } aFakes[] = {{NY_EVENT_TAG, {}}, {NY_MUTEX_TAG, {}}, {NY_SHM_TAG, {}}, {0, {}}};
    for (const HandleCall& call : AllHandleCalls()) {
        SCOPED_TRACE(call.szWhat);
        EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, call.pfn(nullptr));
        for (auto& fake : aFakes) {
            if (fake.u4Tag != call.u4OwnTag) {
                EXPECT_EQ(NY_ERR_WRONG_HANDLE, call.pfn(&fake)) << "tag " << fake.u4Tag;
            }
        }
    }
}

// Null outputs, names that cannot be files (an event name only feeds a hash: any length works)
// and global objects, which are refused before anything is made.
TEST_F(NyIpcBadInputTest, BadNamesOutputsAndGlobalObjectsAreRefused) {
    const std::string strName = NewName("bad");
    const char* szName = strName.c_str();
    const std::string strTooLong(NY_IPC_PATH_SIZE, 'n');
    const char* szLong = strTooLong.c_str();
    EnBool enCreated = NY_FALSE;
    NY_EVENT_HANDLE hEvent = nullptr;
    NY_MUTEX_HANDLE hMutex = nullptr;
    NY_SHM_HANDLE hShm = nullptr;
    const uint32_t INVALID = NY_ERR_INVALID_ARGUMENT;
    const uint32_t GLOBAL = NY_ERR_GLOBAL_REFUSED;
    const std::pair<uint32_t, std::function<uint32_t()>> aCalls[] = {
        {INVALID, [&] { return NyEventCreate(szName, nullptr); }},
        {INVALID, [&] { return NyEventCreateEx("", &enCreated, nullptr); }},
        {INVALID, [&] { return NyEventOpen(szName, nullptr); }},
        {INVALID, [&] { return NyMutexCreate(szName, nullptr); }},
        {INVALID, [&] { return NyMutexCreate("", nullptr); }},
        {INVALID, [&] { return NyMutexOpen(szName, nullptr); }},
        {INVALID, [&] { return NyShareMemOpen(szName, 8, nullptr); }},
        {INVALID, [&] { return NyMutexCreate(szLong, &hMutex); }},
        {INVALID, [&] { return NyMutexOpen(szLong, &hMutex); }},
        {INVALID, [&] { return NyMutexOpen("", &hMutex); }},
        {INVALID, [&] { return NyMutexOpen(nullptr, &hMutex); }},
        {INVALID, [&] { return NyShareMemOpen(szLong, 8, &hShm); }},
        {INVALID, [&] { return NyShareMemOpen("", 8, &hShm); }},
        {INVALID, [&] { return NyShareMemOpen(nullptr, 0, &hShm); }},
        {GLOBAL, [&] { return NyEventCreate2(1, szName, &enCreated, &hEvent); }},
        {GLOBAL, [&] { return NyEventOpen2(1, szName, &hEvent); }},
        {GLOBAL, [&] { return NyMutexCreate2(1, szName, &enCreated, &hMutex); }},
        {GLOBAL, [&] { return NyMutexOpen2(1, szName, &hMutex); }},
        {GLOBAL, [&] { return NyShareMemCreate2(nullptr, 1, szName, 8, &hShm); }},
        {GLOBAL, [&] { return NyShareMemOpen2(1, szName, &hShm); }}};
    for (size_t i = 0; i < sizeof(aCalls) / sizeof(aCalls[0]); ++i) {
        EXPECT_EQ(aCalls[i].first, aCalls[i].second()) << "call " << i;
    }
    EXPECT_EQ(nullptr, hEvent);
    EXPECT_EQ(nullptr, hMutex);
    EXPECT_EQ(nullptr, hShm);

    ASSERT_EQ(NY_OK, NyShareMemCreate2(nullptr, 0, szName, 8, &hShm));
    EXPECT_EQ(INVALID, NyShareMemGetSize(hShm, nullptr));
    EXPECT_EQ(INVALID, NyShareMemGetData(hShm, nullptr));
    EXPECT_EQ(NY_OK, NyShareMemClose(hShm));
    ASSERT_EQ(NY_OK, NyEventCreate2(0, (strName + strTooLong).c_str(), &enCreated, &hEvent));
    EXPECT_EQ(NY_OK, NyEventClose(hEvent));
}

}  // namespace
