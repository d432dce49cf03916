#include "support/NyTestLogCapture.h"

#include "log/NyLog.h"

namespace {
const tagBlkLogParam cg_blkTestLogOff = {NY_LOG_MODE_OFF, {0}};
constexpr uint32_t NY_TEST_ANY_LEVEL = 0xFFFFFFFF;
}  // namespace

CNyTestLogCapture::CNyTestLogCapture(bool bStartLogger) : m_bStartedLogger(bStartLogger) {
    NyLogSetInitParam(&cg_blkTestLogOff);
    NyLogSetSink(&CNyTestLogCapture::OnItem, this);
    if (m_bStartedLogger) {
        NyLogInit();
    }
}

CNyTestLogCapture::~CNyTestLogCapture() {
    if (m_bStartedLogger) {
        NyLogFinal();
    }
    NyLogSetSink(nullptr, nullptr);
    NyLogSetInitParam(nullptr);
}

void CNyTestLogCapture::OnItem(const tagBlkLogItem* pItem, void* pvContext) {
    auto* pThis = static_cast<CNyTestLogCapture*>(pvContext);
    std::lock_guard<std::mutex> lock(pThis->m_mutex);
    pThis->m_vItems.push_back(*pItem);
}

std::vector<tagBlkLogItem> CNyTestLogCapture::Items() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_vItems;
}

std::vector<std::string> CNyTestLogCapture::Messages() const {
    return MessagesAt(NY_TEST_ANY_LEVEL);
}

std::vector<std::string> CNyTestLogCapture::MessagesAt(uint32_t u4Level) const {
    std::vector<std::string> vMessages;
    for (const tagBlkLogItem& blkItem : Items()) {
        if (u4Level == NY_TEST_ANY_LEVEL || blkItem.u4Level == u4Level) {
            vMessages.emplace_back(blkItem.szMessage);
        }
    }
    return vMessages;
}

void CNyTestLogCapture::Clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_vItems.clear();
}
