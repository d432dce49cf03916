// The viewer's reading loop over the log queue: as a listening consumer that takes the records
// it prints and keeps the heartbeat going, or as a peeker that only reads them.
#pragma once

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "CNyLogQueuePeek.h"
#include "NyLogViewOptions.h"
#include "log/CNyShmLogger.h"

class CNyLogViewer {
public:
    explicit CNyLogViewer(const BlkLogViewOptionsTag& opts);
    CNyLogViewer(const CNyLogViewer&) = delete;
    CNyLogViewer& operator=(const CNyLogViewer&) = delete;

    // Attaches as the options say; false with a sentence in *pstrError.
    bool Attach(std::string* pstrError);
    // Prints the waiting records; when following, goes on until *pbStop is set or the output
    // fails. Returns false when the output failed.
    bool Run(FILE* pOut, const volatile sig_atomic_t* pbStop);
    // Stops counting as a listener.
    void Detach();

private:
    unsigned int ReadBatch();
    bool PrintBatch(unsigned int u4Count, FILE* pOut);

    BlkLogViewOptionsTag m_opts;
    bool m_bPeek;
    CNyShmLogger m_logger;
    CNyLogQueuePeek m_peek;
    std::vector<tagBlkLogItem> m_vBatch;
};
