#include "log/NyLogSink.h"

#include <atomic>

#include "log/NyLog.h"

namespace {
// Registered by a test before it logs and removed after; both words are read per record.
std::atomic<PFN_NY_LOG_SINK> m_pfnSink{nullptr};
std::atomic<void*> m_pvSinkContext{nullptr};
}  // namespace

void NyLogSetSink(PFN_NY_LOG_SINK pfnSink, void* pvContext) {
    m_pfnSink = nullptr;
    m_pvSinkContext = pvContext;
    m_pfnSink = pfnSink;
}

void NyLogSinkDeliver(const tagBlkLogItem& blkItem) {
    PFN_NY_LOG_SINK pfnSink = m_pfnSink;
    if (pfnSink != nullptr) {
        pfnSink(&blkItem, m_pvSinkContext);
    }
}
