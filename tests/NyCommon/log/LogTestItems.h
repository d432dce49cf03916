// Log records for the ring and logger tests, and reading them back.
#pragma once

#include <cstdio>
#include <cstring>
#include <vector>

#include "log/CLockfreeArrayQueue.h"

// Record u4Sequence (its line) of producer u4Producer (its pid), every byte set.
inline tagBlkLogItem MakeItem(uint32_t u4Producer, uint32_t u4Sequence) {
    tagBlkLogItem item;
    memset(&item, 0, sizeof(item));
    item.u4Level = LOG_INFO;
    item.u4Pid = u4Producer;
    item.u4Line = u4Sequence;
    snprintf(item.szMessage, sizeof(item.szMessage), "record %u of %u", u4Sequence, u4Producer);
    memset(item.au1Reserved, static_cast<int>(u4Sequence & 0xFF), sizeof(item.au1Reserved));
    return item;
}

// Pops up to u4Max records in one batch and returns their sequence numbers.
inline std::vector<uint32_t> PopLines(CLockfreeArrayQueue& queue, unsigned int u4Max) {
    std::vector<tagBlkLogItem> vItems(u4Max);
    unsigned int u4Count = u4Max;
    std::vector<uint32_t> vLines;
    if (queue.Pop(vItems.data(), u4Count) == NY_LFQ_OK) {
        for (unsigned int i = 0; i < u4Count; ++i) {
            vLines.push_back(vItems[i].u4Line);
        }
    }
    return vLines;
}
