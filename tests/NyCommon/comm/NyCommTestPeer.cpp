#include "NyCommTestPeer.h"

#include <poll.h>
#include <sys/sem.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "ipc/NyIpcName.h"
#include "os/NyOs.h"

BlkCommInitParamTag NyTestCommParam(const std::string& strName, uint32_t u4Capacity) {
    BlkCommInitParamTag blkParam = {};
    blkParam.u4Type = COMM_INIT_TYPE_PLAIN;
    std::strncpy(blkParam.blkShm.szName, strName.c_str(), sizeof(blkParam.blkShm.szName) - 1);
    blkParam.blkShm.u4DataSize = u4Capacity;
    return blkParam;
}

uint32_t NyTestCommConnect(const std::string& strName, uint32_t u4WaitMs,
                           NY_COMM_HANDLE* phSession) {
    BlkCommInitParamTag blkParam = NyTestCommParam(strName);
    uint64_t u8End = NyOsGetTickCount64() + u4WaitMs;
    for (;;) {
        uint32_t u4Result = NyCommConnect(&blkParam, 500, phSession);
        if (u4Result == 0 || NyOsGetTickCount64() >= u8End) {
            return u4Result;
        }
        NyOsSleep(5);
    }
}

std::vector<uint8_t> NyTestCommAnswerFor(const std::vector<uint8_t>& vRequest) {
    std::vector<uint8_t> vAnswer(vRequest.rbegin(), vRequest.rend());
    for (uint8_t& u1 : vAnswer) {
        u1 ^= 0xA5;
    }
    return vAnswer;
}

int NyTestCommServe(const std::string& strName, uint32_t u4Requests, uint32_t u4TimeLimitMs) {
    uint64_t u8End = NyOsGetTickCount64() + u4TimeLimitMs;
    BlkCommInitParamTag blkParam = NyTestCommParam(strName);
    NY_COMM_HANDLE hSession = nullptr;
    if (NyCommConnectAsServer(&blkParam, &hSession) != 0) {
        return 20;
    }
    std::vector<uint8_t> vBuffer(COMM_DEFAULT_DATA_SIZE);
    for (uint32_t u4Served = 0; u4Served < u4Requests;) {
        uint32_t u4Length = static_cast<uint32_t>(vBuffer.size());
        uint32_t u4Result = NyCommListen(hSession, vBuffer.data(), &u4Length);
        if (NyOsGetTickCount64() > u8End) {
            NyCommDisconnect(hSession);
            return 24;
        }
        if (u4Result == static_cast<uint32_t>(EAGAIN)) {
            continue;
        }
        if (u4Result != 0) {
            NyCommDisconnect(hSession);
            return 21;
        }
        std::vector<uint8_t> vAnswer =
            NyTestCommAnswerFor(std::vector<uint8_t>(vBuffer.begin(), vBuffer.begin() + u4Length));
        BlkCommNotifyDataTag blkNotify = {COMM_SIGNAL_RESPONSE, vAnswer.data(),
                                          static_cast<uint32_t>(vAnswer.size())};
        if (NyCommNotify(hSession, &blkNotify) != 0) {
            return 22;
        }
        ++u4Served;
    }
    return NyCommDisconnect(hSession) == 0 ? 0 : 23;
}

std::vector<std::string> NyTestCommLeftovers(const std::string& strName) {
    std::vector<std::string> vLeft;
    std::string strDir = NY_IPC_DIRECTORY;
    for (const std::string& strPath :
         {strDir + "shm." + strName, strDir + "mtx." + strName + "_Mutex_Communication"}) {
        if (access(strPath.c_str(), F_OK) == 0) {
            vLeft.push_back(strPath);
        }
    }
    for (const char* szSuffix : {"_Event_Request", "_Event_Response", "_Event_Connected"}) {
        std::string strEvent = strName + szSuffix;
        key_t key = static_cast<key_t>(UnixName2Key(NY_KEY_KIND_EVENT, strEvent.c_str()));
        if (semget(key, 0, 0) >= 0) {
            vLeft.push_back("semaphore set of " + strEvent);
        }
    }
    return vLeft;
}

CTestGate::CTestGate() : m_aiPipe{-1, -1} {
    if (pipe(m_aiPipe) != 0) {
        m_aiPipe[0] = m_aiPipe[1] = -1;
    }
}

CTestGate::~CTestGate() {
    for (int fd : m_aiPipe) {
        if (fd >= 0) {
            close(fd);
        }
    }
}

void CTestGate::Open() {
    // One byte per waiter is enough for every test here: each gate has at most a few readers.
    const char szBytes[8] = {};
    ssize_t iWritten = write(m_aiPipe[1], szBytes, sizeof(szBytes));
    (void)iWritten;
}

bool CTestGate::WaitOpen(uint32_t u4TimeoutMs) {
    struct pollfd pfd = {m_aiPipe[0], POLLIN, 0};
    if (poll(&pfd, 1, static_cast<int>(u4TimeoutMs)) != 1) {
        return false;
    }
    char c = 0;
    return read(m_aiPipe[0], &c, 1) == 1;
}
