#include "CNyLogViewer.h"

#include <string>

#include "NyLogViewFormat.h"
#include "os/NyOs.h"

namespace {
constexpr unsigned int NY_VIEW_BATCH = 64;
// Pause between polls of an empty queue; far below the producers' patience (about 100 ms).
constexpr uint32_t NY_VIEW_IDLE_MS = 10;
}  // namespace

CNyLogViewer::CNyLogViewer(const BlkLogViewOptionsTag& opts)
    : m_opts(opts),
      m_bPeek(NyLogViewPeeks(opts)),
      m_logger(opts.strQueue.c_str(), opts.u4Capacity),
      m_vBatch(NY_VIEW_BATCH) {}

bool CNyLogViewer::Attach(std::string* pstrError) {
    // Only the machine-wide queue is created by attaching: a mistyped name must not leave a
    // new queue behind until the next boot.
    bool bMayCreate = !m_bPeek && (m_opts.bCreate || m_opts.strQueue == NY_SHMLOG_QUEUE_NAME);
    if (!bMayCreate && !CNyLogQueuePeek::Exists(m_opts.strQueue.c_str())) {
        *pstrError =
            "there is no log queue " + m_opts.strQueue + (m_bPeek ? "" : " (--create makes one)");
        return false;
    }
    bool bAttached =
        m_bPeek ? m_peek.Open(m_opts.strQueue.c_str(), m_opts.u4Capacity) : m_logger.Connect(true);
    if (!bAttached) {
        *pstrError = "cannot attach to the log queue " + m_opts.strQueue + " (" +
                     std::to_string(m_opts.u4Capacity) + " slots)";
    }
    return bAttached;
}

void CNyLogViewer::Detach() {
    m_logger.Disconnect();
}

unsigned int CNyLogViewer::ReadBatch() {
    return m_bPeek ? m_peek.Read(m_vBatch.data(), NY_VIEW_BATCH)
                   : m_logger.GetLogItem(m_vBatch.data(), NY_VIEW_BATCH);
}

bool CNyLogViewer::Run(FILE* pOut, const volatile sig_atomic_t* pbStop) {
    while (*pbStop == 0) {
        unsigned int u4Count = ReadBatch();
        if (u4Count > 0) {
            if (!PrintBatch(u4Count, pOut)) {
                return false;
            }
            continue;
        }
        if (!m_opts.bFollow) {
            break;
        }
        NyOsSleep(NY_VIEW_IDLE_MS);
    }
    return true;
}

bool CNyLogViewer::PrintBatch(unsigned int u4Count, FILE* pOut) {
    for (unsigned int i = 0; i < u4Count; ++i) {
        const tagBlkLogItem& item = m_vBatch[i];
        if (!NyLogViewAccepts(m_opts, item)) {
            continue;
        }
        std::string strLine = m_opts.bJson ? NyLogViewFormatJson(item) : NyLogViewFormatText(item);
        strLine += '\n';
        if (fputs(strLine.c_str(), pOut) == EOF) {
            return false;
        }
        // A slow terminal must not make producers take the viewer for dead.
        if (!m_bPeek) {
            m_logger.SetHeartbeatForViewer();
        }
    }
    return fflush(pOut) == 0;
}
