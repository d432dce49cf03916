// Captures the log records of the current process for a test: starts a logger whose back end
// is off (no machine-wide queue is touched) and collects every record it builds.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "log/NyLogRecord.h"

class CNyTestLogCapture {
public:
    // bStartLogger false leaves starting the logger to the test (for example NyCommonLibInit).
    explicit CNyTestLogCapture(bool bStartLogger = true);
    ~CNyTestLogCapture();
    CNyTestLogCapture(const CNyTestLogCapture&) = delete;
    CNyTestLogCapture& operator=(const CNyTestLogCapture&) = delete;

    std::vector<tagBlkLogItem> Items() const;
    std::vector<std::string> Messages() const;
    // Messages of records at the given level.
    std::vector<std::string> MessagesAt(uint32_t u4Level) const;
    void Clear();

private:
    static void OnItem(const tagBlkLogItem* pItem, void* pvContext);

    bool m_bStartedLogger;
    mutable std::mutex m_mutex;
    std::vector<tagBlkLogItem> m_vItems;
};
