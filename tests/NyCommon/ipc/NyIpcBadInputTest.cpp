// Bad input to every public entry: null or empty names, names too long for a path, null or
// foreign handles (each record's tag is checked), null outputs, global objects. Each gets its
// code; none may crash.
#include <gtest/gtest.h>

#include <functional>
#include <string>
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

TEST_F(NyIpcBadInputTest, RealHandleOfAnotherKindIsRefused) {
    NY_EVENT_HANDLE hEvent = nullptr;
    NY_MUTEX_HANDLE hMutex = nullptr;
    NY_SHM_HANDLE hShm = nullptr;
    ASSERT_EQ(NY_OK, NyEventCreate(NewName("ev").c_str(), &hEvent));
    ASSERT_EQ(NY_OK, NyMutexCreate(NewName("mtx").c_str(), &hMutex));
    ASSERT_EQ(NY_OK, NyShareMemOpen(NewName("shm").c_str(), 8, &hShm));
    EXPECT_EQ(NY_ERR_WRONG_HANDLE, NyEventClose(hMutex));
    EXPECT_EQ(NY_ERR_WRONG_HANDLE, NyMutexDestroy(hShm));
    EXPECT_EQ(NY_ERR_WRONG_HANDLE, NyShareMemClose(hEvent));
    EXPECT_EQ(NY_OK, NyEventClose(hEvent));
    EXPECT_EQ(NY_OK, NyMutexDestroy(hMutex));
    EXPECT_EQ(NY_OK, NyShareMemClose(hShm));
}

TEST_F(NyIpcBadInputTest, NullOutputsAreRefused) {
    std::string strName = NewName("out");
    EnBool enCreated = NY_FALSE;
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyEventCreate(strName.c_str(), nullptr));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyEventCreateEx("", &enCreated, nullptr));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyEventOpen(strName.c_str(), nullptr));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyMutexCreate(strName.c_str(), nullptr));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyMutexCreate("", nullptr));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyMutexOpen(strName.c_str(), nullptr));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyShareMemOpen(strName.c_str(), 8, nullptr));

    NY_SHM_HANDLE hShm = nullptr;
    ASSERT_EQ(NY_OK, NyShareMemOpen(strName.c_str(), 8, &hShm));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyShareMemGetSize(hShm, nullptr));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyShareMemGetData(hShm, nullptr));
    EXPECT_EQ(NY_OK, NyShareMemClose(hShm));
}

TEST_F(NyIpcBadInputTest, NamesThatCannotBeFilesAreRefused) {
    const std::string strTooLong(NY_IPC_PATH_SIZE, 'n');
    NY_MUTEX_HANDLE hMutex = nullptr;
    NY_SHM_HANDLE hShm = nullptr;
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyMutexCreate(strTooLong.c_str(), &hMutex));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyMutexOpen(strTooLong.c_str(), &hMutex));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyMutexOpen("", &hMutex));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyMutexOpen(nullptr, &hMutex));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyShareMemOpen(strTooLong.c_str(), 8, &hShm));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyShareMemOpen("", 8, &hShm));
    EXPECT_EQ(NY_ERR_INVALID_ARGUMENT, NyShareMemOpen(nullptr, 0, &hShm));
    EXPECT_EQ(nullptr, hMutex);
    EXPECT_EQ(nullptr, hShm);

    // An event name only feeds a hash: any length works.
    NY_EVENT_HANDLE hEvent = nullptr;
    const std::string strLongEvent = NewName("ev") + strTooLong;
    ASSERT_EQ(NY_OK, NyEventCreate(strLongEvent.c_str(), &hEvent));
    EXPECT_EQ(NY_OK, NyEventClose(hEvent));
}

TEST_F(NyIpcBadInputTest, GlobalObjectsAreRefusedBeforeAnythingIsMade) {
    std::string strName = NewName("global");
    EnBool enCreated = NY_FALSE;
    NY_EVENT_HANDLE hEvent = nullptr;
    NY_MUTEX_HANDLE hMutex = nullptr;
    NY_SHM_HANDLE hShm = nullptr;
    EXPECT_EQ(NY_ERR_GLOBAL_REFUSED, NyEventCreate2(1, strName.c_str(), &enCreated, &hEvent));
    EXPECT_EQ(NY_ERR_GLOBAL_REFUSED, NyEventOpen2(1, strName.c_str(), &hEvent));
    EXPECT_EQ(NY_ERR_GLOBAL_REFUSED, NyMutexCreate2(1, strName.c_str(), &enCreated, &hMutex));
    EXPECT_EQ(NY_ERR_GLOBAL_REFUSED, NyMutexOpen2(1, strName.c_str(), &hMutex));
    EXPECT_EQ(NY_ERR_GLOBAL_REFUSED, NyShareMemCreate2(nullptr, 1, strName.c_str(), 8, &hShm));
    EXPECT_EQ(NY_ERR_GLOBAL_REFUSED, NyShareMemOpen2(1, strName.c_str(), &hShm));
    EXPECT_EQ(nullptr, hEvent);
    EXPECT_EQ(nullptr, hMutex);
    EXPECT_EQ(nullptr, hShm);
}

TEST_F(NyIpcBadInputTest, LocalVariantsWorkWithGlobalFlagZero) {
    std::string strName = NewName("local");
    EnBool enCreated = NY_FALSE;
    NY_EVENT_HANDLE hEvent = nullptr;
    NY_EVENT_HANDLE hEventOpen = nullptr;
    NY_MUTEX_HANDLE hMutex = nullptr;
    NY_MUTEX_HANDLE hMutexOpen = nullptr;
    NY_SHM_HANDLE hShm = nullptr;
    NY_SHM_HANDLE hShmOpen = nullptr;
    ASSERT_EQ(NY_OK, NyEventCreate2(0, strName.c_str(), &enCreated, &hEvent));
    ASSERT_EQ(NY_OK, NyEventOpen2(0, strName.c_str(), &hEventOpen));
    ASSERT_EQ(NY_OK, NyMutexCreate2(0, strName.c_str(), &enCreated, &hMutex));
    ASSERT_EQ(NY_OK, NyMutexOpen2(0, strName.c_str(), &hMutexOpen));
    ASSERT_EQ(NY_OK, NyShareMemCreate2(nullptr, 0, strName.c_str(), 8, &hShm));
    ASSERT_EQ(NY_OK, NyShareMemOpen2(0, strName.c_str(), &hShmOpen));
    for (NY_EVENT_HANDLE h : {hEvent, hEventOpen}) {
        EXPECT_EQ(NY_OK, NyEventClose(h));
    }
    for (NY_MUTEX_HANDLE h : {hMutex, hMutexOpen}) {
        EXPECT_EQ(NY_OK, NyMutexDestroy(h));
    }
    for (NY_SHM_HANDLE h : {hShm, hShmOpen}) {
        EXPECT_EQ(NY_OK, NyShareMemClose(h));
    }
}

}  // namespace
