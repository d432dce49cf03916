// The channel between real processes: a forked child plays the server or the client.
// Children are forked before the test process opens any channel of its own.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <mutex>
#include <random>
#include <thread>

#include "NyCommTestPeer.h"
#include "comm/BlkShmCommHeader.h"
#include "comm/NyCommunication.h"
#include "ipc/NyShareMem.h"
#include "log/NyLog.h"
#include "os/NyCommonLib.h"
#include "os/NyOs.h"
#include "support/NyTestNames.h"
#include "support/NyTestProcess.h"

namespace {

constexpr uint32_t EAGAIN_CODE = static_cast<uint32_t>(EAGAIN);
constexpr uint32_t CHILD_WAIT_MS = 20000;

std::vector<uint8_t> Pattern(size_t cb, uint32_t u4Seed) {
    std::vector<uint8_t> v(cb);
    std::mt19937 rng(u4Seed);
    for (uint8_t& u1 : v) {
        u1 = static_cast<uint8_t>(rng());
    }
    return v;
}

// Listens until a request arrives (or u4WaitMs passes); returns the last listen result.
uint32_t ListenFor(NY_COMM_HANDLE hSession, std::vector<uint8_t>* pvBuffer, uint32_t* pu4Length,
                   uint32_t u4WaitMs = CHILD_WAIT_MS) {
    uint64_t u8End = NyOsGetTickCount64() + u4WaitMs;
    uint32_t u4Capacity = *pu4Length;
    uint32_t u4Result = EAGAIN_CODE;
    while (u4Result == EAGAIN_CODE && NyOsGetTickCount64() < u8End) {
        *pu4Length = u4Capacity;
        u4Result = NyCommListen(hSession, pvBuffer->data(), pu4Length);
    }
    return u4Result;
}

uint32_t Answer(NY_COMM_HANDLE hSession, const std::vector<uint8_t>& vData) {
    BlkCommNotifyDataTag blkNotify = {COMM_SIGNAL_RESPONSE, vData.data(),
                                      static_cast<uint32_t>(vData.size())};
    return NyCommNotify(hSession, &blkNotify);
}

class NyCommChannel : public ::testing::Test {
protected:
    void SetUp() override {
        NyCommonLibInit();
        m_strName = NyTestUniqueName("comm");
        m_blkParam = NyTestCommParam(m_strName);
    }

    void TearDown() override {
        for (pid_t pid : m_vChildren) {
            NyTestKillChild(pid);
        }
        EXPECT_EQ(NyTestCommLeftovers(m_strName), std::vector<std::string>{});
        NyCommonLibRelease();
    }

    pid_t Child(const std::function<int()>& pfnBody) {
        pid_t pid = NyTestForkChild(pfnBody);
        if (pid > 0) {
            m_vChildren.push_back(pid);
        }
        return pid;
    }

    int Reap(pid_t pid, uint32_t u4TimeoutMs = CHILD_WAIT_MS) {
        int iStatus = NyTestWaitChild(pid, u4TimeoutMs);
        if (iStatus != -1) {
            m_vChildren.erase(std::remove(m_vChildren.begin(), m_vChildren.end(), pid),
                              m_vChildren.end());
        }
        return iStatus;
    }

    void Kill(pid_t pid) {
        NyTestKillChild(pid);
        m_vChildren.erase(std::remove(m_vChildren.begin(), m_vChildren.end(), pid),
                          m_vChildren.end());
    }

    std::string m_strName;
    BlkCommInitParamTag m_blkParam = {};
    std::vector<pid_t> m_vChildren;
};

}  // namespace

TEST_F(NyCommChannel, RequestOfExactlyTheCapacityIsAnsweredAndOneByteMoreIsRefused) {
    pid_t pidServer = Child([this] { return NyTestCommServe(m_strName, 1); });
    NY_COMM_HANDLE hSession = nullptr;
    ASSERT_EQ(NyTestCommConnect(m_strName, 5000, &hSession), 0u);

    std::vector<uint8_t> vRequest = Pattern(COMM_DEFAULT_DATA_SIZE, 1);
    std::vector<uint8_t> vTooLong = Pattern(COMM_DEFAULT_DATA_SIZE + 1, 2);
    std::vector<uint8_t> vAnswer(COMM_DEFAULT_DATA_SIZE);
    EXPECT_EQ(NyCommCommit(hSession, vTooLong.data(), COMM_DEFAULT_DATA_SIZE + 1, vAnswer.data(),
                           COMM_DEFAULT_DATA_SIZE),
              NY_ERR_COMM_REQUEST_TOO_LARGE);
    EXPECT_EQ(NyCommCommit(hSession, nullptr, 0, vAnswer.data(), COMM_DEFAULT_DATA_SIZE),
              NY_ERR_INVALID_ARGUMENT);
    ASSERT_EQ(NyCommCommit(hSession, vRequest.data(), COMM_DEFAULT_DATA_SIZE, vAnswer.data(),
                           COMM_DEFAULT_DATA_SIZE),
              0u);
    EXPECT_EQ(vAnswer, NyTestCommAnswerFor(vRequest));
    EXPECT_EQ(Reap(pidServer), 0);
    EXPECT_EQ(NyCommDisconnect(hSession), 0u);
}

TEST_F(NyCommChannel, OversizedNotifyArrivesAsAnEmptyAnswerAndIsLogged) {
    pid_t pidClient = Child([this] {
        NY_COMM_HANDLE hSession = nullptr;
        if (NyTestCommConnect(m_strName, 5000, &hSession) != 0) {
            return 1;
        }
        std::vector<uint8_t> vAnswer(COMM_DEFAULT_DATA_SIZE, 0xEE);
        uint8_t u1Request = 7;
        if (NyCommCommit(hSession, &u1Request, 1, vAnswer.data(), COMM_DEFAULT_DATA_SIZE) != 0) {
            return 2;
        }
        bool bUntouched =
            std::all_of(vAnswer.begin(), vAnswer.end(), [](uint8_t u1) { return u1 == 0xEE; });
        return bUntouched ? 0 : 3;
    });
    static std::mutex s_mtxLog;
    static std::vector<std::pair<uint32_t, std::string>> s_vLog;
    NyLogSetSink(
        [](const tagBlkLogItem* pItem, void*) {
            std::lock_guard<std::mutex> guard(s_mtxLog);
            s_vLog.emplace_back(pItem->u4Level, pItem->szMessage);
        },
        nullptr);
    NY_COMM_HANDLE hSession = nullptr;
    ASSERT_EQ(NyCommConnectAsServer(&m_blkParam, &hSession), 0u);
    std::vector<uint8_t> vRequest(COMM_DEFAULT_DATA_SIZE);
    uint32_t u4Length = COMM_DEFAULT_DATA_SIZE;
    ASSERT_EQ(ListenFor(hSession, &vRequest, &u4Length), 0u);
    EXPECT_EQ(u4Length, 1u);
    EXPECT_EQ(Answer(hSession, Pattern(COMM_DEFAULT_DATA_SIZE + 1, 3)), 0u);
    EXPECT_EQ(Reap(pidClient), 0);
    NyLogSetSink(nullptr, nullptr);
    std::pair<uint32_t, std::string> logExpected(
        LOG_ERROR, "CNyShmCommunication::InnerNotify()->data size too big!");
    EXPECT_NE(std::find(s_vLog.begin(), s_vLog.end(), logExpected), s_vLog.end());
    EXPECT_EQ(NyCommDisconnect(hSession), 0u);
}

TEST_F(NyCommChannel, KillingTheServerEndsAWaitingCommitWithinHalfASecond) {
    // The server takes the request and never answers.
    pid_t pidServer = Child([this] {
        NY_COMM_HANDLE hSession = nullptr;
        if (NyCommConnectAsServer(&m_blkParam, &hSession) != 0) {
            return 1;
        }
        std::vector<uint8_t> vRequest(COMM_DEFAULT_DATA_SIZE);
        uint32_t u4Length = COMM_DEFAULT_DATA_SIZE;
        ListenFor(hSession, &vRequest, &u4Length);
        pause();
        return 0;
    });
    NY_COMM_HANDLE hSession = nullptr;
    ASSERT_EQ(NyTestCommConnect(m_strName, 5000, &hSession), 0u);
    std::atomic<uint64_t> u8KilledAt{0};
    std::thread killer([&] {
        NyOsSleep(300);
        Kill(pidServer);
        u8KilledAt = NyOsGetTickCount64();
    });
    uint8_t au1Answer[16] = {};
    uint32_t u4Result = NyCommCommit(hSession, "ping", 4, au1Answer, sizeof(au1Answer));
    uint64_t u8ReturnedAt = NyOsGetTickCount64();
    killer.join();
    EXPECT_EQ(u4Result, NY_ERR_COMM_NOT_CONNECTED);
    ASSERT_GT(u8KilledAt.load(), 0u);
    EXPECT_GE(u8ReturnedAt, u8KilledAt.load() + 300);
    EXPECT_LE(u8ReturnedAt, u8KilledAt.load() + 700);
    EXPECT_EQ(NyCommDisconnect(hSession), 0u);
}

TEST_F(NyCommChannel, ConnectingToANameNobodyCreatedFailsAndLeavesNothing) {
    NY_COMM_HANDLE hSession = nullptr;
    EXPECT_EQ(NyCommConnect(&m_blkParam, 100, &hSession), NY_ERR_OBJECT_ABSENT);
    EXPECT_EQ(hSession, nullptr);
    EXPECT_EQ(NyTestCommLeftovers(m_strName), std::vector<std::string>{});
}

TEST_F(NyCommChannel, BadParametersAreRefusedBeforeAnythingIsMade) {
    NY_COMM_HANDLE hSession = nullptr;
    BlkCommInitParamTag blkEmpty = NyTestCommParam("");
    BlkCommInitParamTag blkBadType = m_blkParam;
    blkBadType.u4Type = 3;
    BlkCommInitParamTag blkGlobal = m_blkParam;
    blkGlobal.u4Type = COMM_INIT_TYPE_EX;
    blkGlobal.u4Global = 1;
    BlkCommInitParamTag blkUnterminated = m_blkParam;
    std::fill(std::begin(blkUnterminated.blkShm.szName), std::end(blkUnterminated.blkShm.szName),
              'x');
    struct {
        const BlkCommInitParamTag* pParam;
        uint32_t u4Expected;
    } aCases[] = {
        {nullptr, NY_ERR_INVALID_ARGUMENT},      {&blkEmpty, NY_ERR_BAD_ARGUMENT},
        {&blkBadType, NY_ERR_INVALID_ARGUMENT},  {&blkGlobal, NY_ERR_GLOBAL_REFUSED},
        {&blkUnterminated, NY_ERR_BAD_ARGUMENT},
    };
    for (const auto& c : aCases) {
        EXPECT_EQ(NyCommConnectAsServer(c.pParam, &hSession), c.u4Expected);
        EXPECT_EQ(NyCommConnect(c.pParam, 0, &hSession), c.u4Expected);
    }
    EXPECT_EQ(NyCommConnectAsServer(&m_blkParam, nullptr), NY_ERR_INVALID_ARGUMENT);
}

TEST_F(NyCommChannel, UnknownHandlesAreRefusedByEveryOperation) {
    int iNotAChannel = 0;
    NY_COMM_HANDLE hBogus = &iNotAChannel;
    uint8_t au1Buffer[8] = {};
    uint32_t u4Length = sizeof(au1Buffer);
    BlkCommNotifyDataTag blkNotify = {COMM_SIGNAL_RESPONSE, au1Buffer, 1};
    EnBool bConnected = NY_TRUE;
    EXPECT_EQ(NyCommListen(hBogus, au1Buffer, &u4Length), NY_ERR_COMM_NOT_CONNECTED);
    EXPECT_EQ(NyCommNotify(hBogus, &blkNotify), NY_ERR_COMM_NOT_CONNECTED);
    EXPECT_EQ(NyCommCommit(hBogus, au1Buffer, 1, nullptr, 0), NY_ERR_COMM_NOT_CONNECTED);
    EXPECT_EQ(NyCommWaitForSignal(hBogus, COMM_SIGNAL_RESPONSE, 0, nullptr, 0),
              NY_ERR_COMM_NOT_CONNECTED);
    EXPECT_EQ(NyCommIsConnected(hBogus, &bConnected), NY_ERR_COMM_NOT_CONNECTED);
    EXPECT_EQ(bConnected, NY_FALSE);
    EXPECT_EQ(NyCommDisconnect(hBogus), NY_ERR_COMM_NOT_CONNECTED);
}

TEST_F(NyCommChannel, SecondStartAndConnectInOneProcessReuseTheChannel) {
    NY_COMM_HANDLE hFirst = nullptr;
    NY_COMM_HANDLE hSecond = nullptr;
    NY_COMM_HANDLE hClient = nullptr;
    ASSERT_EQ(NyCommConnectAsServer(&m_blkParam, &hFirst), 0u);
    ASSERT_EQ(NyCommConnectAsServer(&m_blkParam, &hSecond), 0u);
    EXPECT_EQ(hFirst, hSecond);
    ASSERT_EQ(NyCommConnect(&m_blkParam, 500, &hClient), 0u);
    EXPECT_EQ(hClient, hFirst);
    EnBool bConnected = NY_FALSE;
    EXPECT_EQ(NyCommIsConnected(hFirst, &bConnected), 0u);
    EXPECT_EQ(bConnected, NY_TRUE);
    // One disconnect closes the one channel, whichever call opened it.
    EXPECT_EQ(NyCommDisconnect(hClient), 0u);
    EXPECT_EQ(NyCommDisconnect(hFirst), NY_ERR_COMM_NOT_CONNECTED);
}

TEST_F(NyCommChannel, SecondConnectOfAClientReusesItsRecord) {
    pid_t pidServer = Child([this] { return NyTestCommServe(m_strName, 1); });
    NY_COMM_HANDLE hFirst = nullptr;
    NY_COMM_HANDLE hSecond = nullptr;
    ASSERT_EQ(NyTestCommConnect(m_strName, 5000, &hFirst), 0u);
    ASSERT_EQ(NyCommConnect(&m_blkParam, 500, &hSecond), 0u);
    EXPECT_EQ(hFirst, hSecond);
    std::vector<uint8_t> vRequest = Pattern(100, 4);
    std::vector<uint8_t> vAnswer(100);
    EXPECT_EQ(NyCommCommit(hSecond, vRequest.data(), 100, vAnswer.data(), 100), 0u);
    EXPECT_EQ(vAnswer, NyTestCommAnswerFor(vRequest));
    EXPECT_EQ(Reap(pidServer), 0);
    EXPECT_EQ(NyCommDisconnect(hFirst), 0u);
    EXPECT_EQ(NyCommDisconnect(hSecond), NY_ERR_COMM_NOT_CONNECTED);
}

TEST_F(NyCommChannel, ListenWithSmallBufferLeavesRequestUnconsumed) {
    std::vector<uint8_t> vRequest = Pattern(100, 5);
    pid_t pidClient = Child([&] {
        NY_COMM_HANDLE hSession = nullptr;
        if (NyTestCommConnect(m_strName, 5000, &hSession) != 0) {
            return 1;
        }
        std::vector<uint8_t> vAnswer(100);
        if (NyCommCommit(hSession, vRequest.data(), 100, vAnswer.data(), 100) != 0) {
            return 2;
        }
        return vAnswer == NyTestCommAnswerFor(vRequest) ? 0 : 3;
    });
    NY_COMM_HANDLE hSession = nullptr;
    ASSERT_EQ(NyCommConnectAsServer(&m_blkParam, &hSession), 0u);
    std::vector<uint8_t> vBuffer(COMM_DEFAULT_DATA_SIZE);
    uint32_t u4Length = 10;
    ASSERT_EQ(ListenFor(hSession, &vBuffer, &u4Length), NY_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(u4Length, 100u);
    // The request event is consumed...
    u4Length = COMM_DEFAULT_DATA_SIZE;
    EXPECT_EQ(NyCommListen(hSession, vBuffer.data(), &u4Length), EAGAIN_CODE);
    // ...but the request is still in the region.
    NY_SHM_HANDLE hShm = nullptr;
    ASSERT_EQ(NyShareMemOpen(m_strName.c_str(), 0, &hShm), 0u);
    std::vector<uint8_t> vInRegion(100);
    EXPECT_EQ(NyShareMemRead(hShm, COMM_DATA_OFFSET, vInRegion.data(), 100), 0u);
    EXPECT_EQ(vInRegion, vRequest);
    EXPECT_EQ(NyShareMemClose(hShm), 0u);

    EXPECT_EQ(Answer(hSession, NyTestCommAnswerFor(vRequest)), 0u);
    EXPECT_EQ(Reap(pidClient), 0);
    EXPECT_EQ(NyCommDisconnect(hSession), 0u);
}

TEST_F(NyCommChannel, TwoClientsHammeringOneServerEachGetTheirOwnAnswers) {
    constexpr uint32_t u4PerClient = 300;
    auto client = [this](uint32_t u4Seed) {
        return [this, u4Seed] {
            NY_COMM_HANDLE hSession = nullptr;
            if (NyTestCommConnect(m_strName, 5000, &hSession) != 0) {
                return 101;
            }
            std::mt19937 rng(u4Seed);
            int iMismatches = 0;
            std::vector<uint8_t> vAnswer(COMM_DEFAULT_DATA_SIZE);
            for (uint32_t u4 = 0; u4 < u4PerClient; ++u4) {
                std::vector<uint8_t> vRequest = Pattern(1 + rng() % COMM_DEFAULT_DATA_SIZE, rng());
                if (NyCommCommit(hSession, vRequest.data(), static_cast<uint32_t>(vRequest.size()),
                                 vAnswer.data(), COMM_DEFAULT_DATA_SIZE) != 0) {
                    return 102;
                }
                std::vector<uint8_t> vExpected = NyTestCommAnswerFor(vRequest);
                iMismatches += !std::equal(vExpected.begin(), vExpected.end(), vAnswer.begin());
            }
            NyCommDisconnect(hSession);
            return std::min(iMismatches, 100);
        };
    };
    pid_t pidA = Child(client(11));
    pid_t pidB = Child(client(12));
    EXPECT_EQ(NyTestCommServe(m_strName, 2 * u4PerClient, 60000), 0);
    EXPECT_EQ(Reap(pidA), 0);
    EXPECT_EQ(Reap(pidB), 0);
}

TEST_F(NyCommChannel, RestartedServerServesOldClientsNewRequests) {
    CTestGate gateSecond;
    pid_t pidFirst = Child([this] {
        int iResult = NyTestCommServe(m_strName, 1);
        pause();  // stays up until killed
        return iResult;
    });
    // The second server first answers the request left pending by the failed commit.
    pid_t pidSecond = Child([this, &gateSecond] {
        return gateSecond.WaitOpen(CHILD_WAIT_MS) ? NyTestCommServe(m_strName, 2) : 30;
    });
    NY_COMM_HANDLE hSession = nullptr;
    ASSERT_EQ(NyTestCommConnect(m_strName, 5000, &hSession), 0u);
    std::vector<uint8_t> vRequest = Pattern(64, 6);
    std::vector<uint8_t> vAnswer(64);
    ASSERT_EQ(NyCommCommit(hSession, vRequest.data(), 64, vAnswer.data(), 64), 0u);

    Kill(pidFirst);
    EnBool bConnected = NY_TRUE;
    EXPECT_NE(NyCommIsConnected(hSession, &bConnected), 0u);
    EXPECT_EQ(bConnected, NY_FALSE);
    EXPECT_EQ(NyCommCommit(hSession, vRequest.data(), 64, vAnswer.data(), 64),
              NY_ERR_COMM_NOT_CONNECTED);
    gateSecond.Open();
    std::fill(vAnswer.begin(), vAnswer.end(), 0);
    EXPECT_EQ(NyCommWaitForSignal(hSession, COMM_SIGNAL_NONE, NY_WAIT_INFINITE, vAnswer.data(), 64),
              0u);
    EXPECT_EQ(vAnswer, NyTestCommAnswerFor(vRequest));

    std::vector<uint8_t> vNext = Pattern(64, 7);
    EXPECT_EQ(NyCommCommit(hSession, vNext.data(), 64, vAnswer.data(), 64), 0u);
    EXPECT_EQ(vAnswer, NyTestCommAnswerFor(vNext));
    EXPECT_EQ(Reap(pidSecond), 0);
    EXPECT_EQ(NyCommDisconnect(hSession), 0u);
}

TEST_F(NyCommChannel, NotificationWaitingBeforeTheClientWaitsIsDelivered) {
    CTestGate gateNotified;
    std::vector<uint8_t> vNote = Pattern(300, 7);
    pid_t pidClient = Child([&] {
        NY_COMM_HANDLE hSession = nullptr;
        if (NyTestCommConnect(m_strName, 5000, &hSession) != 0 ||
            !gateNotified.WaitOpen(CHILD_WAIT_MS)) {
            return 1;
        }
        std::vector<uint8_t> vBuffer(COMM_DEFAULT_DATA_SIZE);
        if (NyCommWaitForSignal(hSession, COMM_SIGNAL_NONE, NY_WAIT_INFINITE, vBuffer.data(),
                                COMM_DEFAULT_DATA_SIZE) != 0) {
            return 2;
        }
        if (!std::equal(vNote.begin(), vNote.end(), vBuffer.begin())) {
            return 3;
        }
        // Nothing more is pending: a wait with time-out 0 gives up.
        return NyCommWaitForSignal(hSession, COMM_SIGNAL_NONE, 0, nullptr, 0) == NY_ERR_TIMEOUT ? 0
                                                                                                : 4;
    });
    NY_COMM_HANDLE hSession = nullptr;
    ASSERT_EQ(NyCommConnectAsServer(&m_blkParam, &hSession), 0u);
    EXPECT_EQ(Answer(hSession, vNote), 0u);
    gateNotified.Open();
    EXPECT_EQ(Reap(pidClient), 0);
    EXPECT_EQ(NyCommDisconnect(hSession), 0u);
}

TEST_F(NyCommChannel, ChildForkedWhileTheParentServesOpensTheChannelAfresh) {
    NY_COMM_HANDLE hSession = nullptr;
    ASSERT_EQ(NyCommConnectAsServer(&m_blkParam, &hSession), 0u);
    std::vector<uint8_t> vRequest = Pattern(200, 8);
    pid_t pidClient = Child([&] {
        NY_COMM_HANDLE hClient = nullptr;
        if (NyCommConnect(&m_blkParam, 500, &hClient) != 0) {
            return 1;
        }
        std::vector<uint8_t> vAnswer(200);
        if (NyCommCommit(hClient, vRequest.data(), 200, vAnswer.data(), 200) != 0) {
            return 2;
        }
        if (vAnswer != NyTestCommAnswerFor(vRequest)) {
            return 3;
        }
        return NyCommDisconnect(hClient) == 0 ? 0 : 4;
    });
    std::vector<uint8_t> vBuffer(COMM_DEFAULT_DATA_SIZE);
    uint32_t u4Length = COMM_DEFAULT_DATA_SIZE;
    ASSERT_EQ(ListenFor(hSession, &vBuffer, &u4Length), 0u);
    vBuffer.resize(u4Length);
    EXPECT_EQ(Answer(hSession, NyTestCommAnswerFor(vBuffer)), 0u);
    EXPECT_EQ(Reap(pidClient), 0);
    // The child's disconnect closed its own channel only: this one still beats.
    EnBool bConnected = NY_FALSE;
    EXPECT_EQ(NyCommIsConnected(hSession, &bConnected), 0u);
    EXPECT_EQ(bConnected, NY_TRUE);
    EXPECT_EQ(NyCommDisconnect(hSession), 0u);
}
