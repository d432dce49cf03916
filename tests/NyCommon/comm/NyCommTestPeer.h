// Helpers for the channel tests: channel parameters, an answering server to run in a child
// process, and a pipe to order processes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "comm/NyCommunication.h"

BlkCommInitParamTag NyTestCommParam(const std::string& strName);
// NyCommConnect, retried while the server has not yet created the channel.
uint32_t NyTestCommConnect(const std::string& strName, uint32_t u4WaitMs,
                           NY_COMM_HANDLE* phSession);
// The answer the test server gives to a request: the bytes reversed and flipped, so that an
// answer can neither be the request itself nor another client's answer.
std::vector<uint8_t> NyTestCommAnswerFor(const std::vector<uint8_t>& vRequest);
// Serves u4Requests requests with NyTestCommAnswerFor, then disconnects. Returns 0, or a code
// telling which step failed or that u4TimeLimitMs passed (for a child's exit status).
int NyTestCommServe(const std::string& strName, uint32_t u4Requests,
                    uint32_t u4TimeLimitMs = 20000);

// One-shot signal from a parent to its forked children.
class CTestGate {
public:
    CTestGate();
    ~CTestGate();
    void Open();
    bool WaitOpen(uint32_t u4TimeoutMs);

private:
    int m_aiPipe[2];
};
