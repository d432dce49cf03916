#include "NyIpcTestSupport.h"

#include <dirent.h>
#include <poll.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "ipc/NyIpcAnchor.h"
#include "ipc/NyIpcName.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"

CIpcSignal::CIpcSignal() {
    if (pipe(m_aiPipe) != 0) {
        m_aiPipe[0] = m_aiPipe[1] = -1;
    }
}

CIpcSignal::~CIpcSignal() {
    close(m_aiPipe[0]);
    close(m_aiPipe[1]);
}

void CIpcSignal::Post() {
    ssize_t cb = write(m_aiPipe[1], "x", 1);
    (void)cb;
}

bool CIpcSignal::Await(unsigned int u4TimeoutMs) {
    struct pollfd stPoll = {m_aiPipe[0], POLLIN, 0};
    if (poll(&stPoll, 1, static_cast<int>(u4TimeoutMs)) != 1) {
        return false;
    }
    char ch = 0;
    return read(m_aiPipe[0], &ch, 1) == 1;
}

std::string CIpcTest::NewName(const std::string& strWhat) {
    m_vNames.push_back(NyTestUniqueName("ipct-" + strWhat));
    return m_vNames.back();
}

pid_t CIpcTest::Fork(const std::function<int()>& fn) {
    pid_t pid = NyTestForkChild(fn);
    m_vChildren.push_back(pid);
    return pid;
}

int CIpcTest::Join(pid_t pid) {
    int iCode = NyTestWaitChild(pid, 10000);
    if (iCode == -1) {
        NyTestKillChild(pid);
        ADD_FAILURE() << "child " << pid << " did not end";
    }
    return iCode;
}

void CIpcTest::TearDown() {
    for (pid_t pid : m_vChildren) {
        if (NyTestWaitChild(pid, 0) == -1) {
            NyTestKillChild(pid);
        }
    }
    for (const std::string& strName : m_vNames) {
        EXPECT_FALSE(IpcPathExists(IpcMutexPath(strName))) << "left behind: mutex " << strName;
        EXPECT_FALSE(IpcPathExists(IpcShmPath(strName))) << "left behind: region " << strName;
        EXPECT_EQ(-1, IpcEventHolders(strName)) << "left behind: semaphore set of " << strName;
    }
    char szOwn[NY_ANCHOR_NAME_SIZE];
    ASSERT_TRUE(GetSHDataName(szOwn, sizeof(szOwn)));
    std::string strPrefix(szOwn, strrchr(szOwn, '.') + 1);
    for (pid_t pid : m_vChildren) {
        std::string strAnchor = "/dev/shm" + strPrefix + std::to_string(pid);
        EXPECT_FALSE(IpcPathExists(strAnchor)) << "left behind: anchor " << strAnchor;
    }
}

std::string IpcMutexPath(const std::string& strName) {
    return std::string(NY_IPC_DIRECTORY) + "mtx." + strName;
}

std::string IpcShmPath(const std::string& strName) {
    return std::string(NY_IPC_DIRECTORY) + "shm." + strName;
}

bool IpcPathExists(const std::string& strPath) {
    struct stat st = {};
    return stat(strPath.c_str(), &st) == 0;
}

int IpcEventHolders(const std::string& strName) {
    int iSemId = semget(static_cast<key_t>(UnixName2Key(NY_KEY_KIND_EVENT, strName.c_str())), 0, 0);
    return iSemId < 0 ? -1 : semctl(iSemId, 1, GETVAL);
}

int IpcOpenDescriptors(const std::string& strPath) {
    int iCount = 0;
    DIR* pDir = opendir("/proc/self/fd");
    if (pDir == nullptr) {
        return -1;
    }
    while (struct dirent* pEntry = readdir(pDir)) {
        std::string strLink = std::string("/proc/self/fd/") + pEntry->d_name;
        char szTarget[4096] = {};
        if (readlink(strLink.c_str(), szTarget, sizeof(szTarget) - 1) > 0 && strPath == szTarget) {
            ++iCount;
        }
    }
    closedir(pDir);
    return iCount;
}
