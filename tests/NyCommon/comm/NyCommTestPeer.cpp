#include "NyCommTestPeer.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "os/NyOs.h"
#include "session/NySessionChannel.h"

BlkCommInitParamTag NyTestCommParam(const std::string& strName) {
    BlkCommInitParamTag blkParam;
    NySessionFillInitParam(strName.c_str(), &blkParam);
    return blkParam;
}

uint32_t NyTestCommConnect(const std::string& strName, uint32_t u4WaitMs,
                           NY_COMM_HANDLE* phSession) {
    BlkCommInitParamTag blkParam = NyTestCommParam(strName);
    uint64_t u8End = NyOsGetTickCount64() + u4WaitMs;
    uint32_t u4Result = NyCommConnect(&blkParam, 500, phSession);
    while (u4Result != 0 && NyOsGetTickCount64() < u8End) {
        NyOsSleep(5);
        u4Result = NyCommConnect(&blkParam, 500, phSession);
    }
    return u4Result;
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
    int iResult = 0;
    for (uint32_t u4Served = 0; u4Served < u4Requests && iResult == 0;) {
        uint32_t u4Length = static_cast<uint32_t>(vBuffer.size());
        uint32_t u4Result = NyCommListen(hSession, vBuffer.data(), &u4Length);
        if (NyOsGetTickCount64() > u8End) {
            iResult = 24;
        } else if (u4Result != static_cast<uint32_t>(EAGAIN)) {
            std::vector<uint8_t> vAnswer = NyTestCommAnswerFor(
                std::vector<uint8_t>(vBuffer.begin(), vBuffer.begin() + u4Length));
            BlkCommNotifyDataTag blkNotify = {COMM_SIGNAL_RESPONSE, vAnswer.data(),
                                              static_cast<uint32_t>(vAnswer.size())};
            iResult = u4Result != 0 ? 21 : (NyCommNotify(hSession, &blkNotify) != 0 ? 22 : 0);
            ++u4Served;
        }
    }
    return NyCommDisconnect(hSession) == 0 ? iResult : 23;
}

CTestGate::CTestGate() : m_aiPipe{-1, -1} {
    EXPECT_TRUE(pipe(m_aiPipe) == 0);
}

CTestGate::~CTestGate() {
    close(m_aiPipe[0]);
    close(m_aiPipe[1]);
}

// One byte per waiter: each gate here has at most a few readers.
void CTestGate::Open() {
    const char szBytes[8] = {};
    EXPECT_EQ(static_cast<ssize_t>(sizeof(szBytes)), write(m_aiPipe[1], szBytes, sizeof(szBytes)));
}

bool CTestGate::WaitOpen(uint32_t u4TimeoutMs) {
    struct pollfd pfd = {m_aiPipe[0], POLLIN, 0};
    char c = 0;
    return poll(&pfd, 1, static_cast<int>(u4TimeoutMs)) == 1 && read(m_aiPipe[0], &c, 1) == 1;
}
