// The viewer's reading loop: a listening consumer of the log queue that prints the records it
// pops and keeps the heartbeat going while it reads.
#pragma once

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "NyLogViewOptions.h"
#include "log/CNyShmLogger.h"

class CNyLogViewer {
public:
    explicit CNyLogViewer(const BlkLogViewOptionsTag& opts);
    CNyLogViewer(const CNyLogViewer&) = delete;
    CNyLogViewer& operator=(const CNyLogViewer&) = delete;

    // Attaches as a listening consumer; false when the queue cannot be attached.
    bool Attach();
    // Prints the waiting records; when following, goes on until *pbStop is set or the output
    // fails. Returns false when the output failed.
    bool Run(FILE* pOut, const volatile sig_atomic_t* pbStop);
    // Stops counting as a listener.
    void Detach();

private:
    bool PrintBatch(unsigned int u4Count, FILE* pOut);

    BlkLogViewOptionsTag m_opts;
    CNyShmLogger m_logger;
    std::vector<tagBlkLogItem> m_vBatch;
};
