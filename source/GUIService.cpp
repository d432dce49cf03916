#include "GUIService.h"

#include <cstring>

#include "ClientLiveness.h"
#include "GUIServiceResult.h"
#include "HeldDialog.h"
#include "NyConfigImage.h"
#include "config/NyCfgLang.h"
#include "log/NyLog.h"
#include "os/NyOs.h"
#include "runtime/NySafe.h"
#include "runtime/NySecureMem.h"
#include "session/NySessionChannel.h"
#include "ui/GUIFactory.h"
#include "ui/GUISecureBuffer.h"
#include "ui/GUIverify.h"
#include "uiblock/NyUiParam.h"

namespace {

constexpr uint32_t SESSION_PROBE_MS = 500;
constexpr uint32_t STOP_SETTLE_MS = 10;
// How often the client of a dialog running on the session thread is checked.
constexpr uint32_t CLIENT_WATCH_MS = 100;

std::atomic<bool> s_bDialogsAvailable{true};

bool IsDialogCommand(uint32_t u4CmdType) {
    return u4CmdType >= UI_CMD_DIALOG_FIRST && u4CmdType <= UI_CMD_DIALOG_LAST;
}

bool RerunsHeldDialog(uint32_t u4CmdType) {
    return u4CmdType == UI_CMD_NO_DIALOG_1 || u4CmdType == UI_CMD_NO_DIALOG_2;
}

bool IsAsyncRequest(const tagBlkUiParam* pReq) {
    return pReq->enUiCmdType == UI_CMD_UPDATE || pReq->enUiCmdType == UI_CMD_TERMINATE ||
           pReq->enUiCmdType == UI_CMD_GET_STATUS || pReq->u4Mode == UI_MODE_ASYNC;
}

// The configuration accessor a dialog is built over, set to the product's language.
std::unique_ptr<CConfig> MakeDialogConfig() {
    auto pConfig = std::make_unique<CConfig>(NyConfigImage(), NyConfigImageLength());
    unsigned int u4Language = 0;
    if (pConfig->GetProductLanguage(&u4Language) != NY_OK) {
        NyOsGetLanguage(&u4Language);
    }
    pConfig->SetLanguage(u4Language);
    return pConfig;
}

std::unique_ptr<CHeldDialog> MakeDialog(const tagBlkUiParam* pReq) {
    if (!s_bDialogsAvailable.load()) {
        return nullptr;
    }
    std::unique_ptr<CConfig> pConfig = MakeDialogConfig();
    std::unique_ptr<GUIBase> pDialog(CreateDialogForCommand(
        pReq->enUiCmdType, NyUiParamGetU4(pReq, UI_OFS_CONFIRM_CTT), pReq, pConfig.get()));
    if (pDialog == nullptr) {
        return nullptr;
    }
    return std::make_unique<CHeldDialog>(std::move(pConfig), std::move(pDialog));
}

uint8_t* BlockBytes(tagBlkUiParam* pBlock) {
    return reinterpret_cast<uint8_t*>(pBlock);
}

}  // namespace

void GUIService::SetDialogsAvailable(bool bAvailable) {
    s_bDialogsAvailable.store(bAvailable);
}

void GUIService::PrepareVerifyDialog() {
    std::unique_ptr<CConfig> pConfig = MakeDialogConfig();
    GUIverify dialog(nullptr, pConfig.get());
    dialog.Rehearse();
}

GUIService::GUIService(const BlkUiServiceParamTag& blkParam) : m_blkParam(blkParam) {}

GUIService::~GUIService() {
    ReleaseDialog();
}

void GUIService::ReleaseDialog() {
    m_pUi.reset();
}

uint32_t GUIService::stop() {
    m_bStop.store(1);
    NyOsSleep(STOP_SETTLE_MS);
    return NY_OK;
}

uint32_t GUIService::run() {
    NY_LOG(LOG_TRACE, "CUiService::SessionThreadEntry() enter");
    if (m_blkParam.hSession == nullptr) {
        NY_LOG_RESULT(NY_ERR_BAD_ARGUMENT);
        NY_LOG(LOG_ERROR, "CUiService::Run() leave u4Result = %08x", NY_ERR_BAD_ARGUMENT);
        return NY_ERR_BAD_ARGUMENT;
    }
    // Requests and answers carry PINs: both live in locked memory left out of core dumps.
    CNySecure<uint8_t[NY_UI_PARAM_SIZE]> secureReq;
    CNySecure<uint8_t[NY_UI_PARAM_SIZE]> secureResp;
    uint8_t* au1Req = *secureReq;
    uint8_t* au1Resp = *secureResp;
    if (au1Req == nullptr || au1Resp == nullptr) {
        NY_LOG_RESULT(NY_ERR_OUT_OF_MEMORY);
        NyCommDisconnect(m_blkParam.hSession);
        return NY_ERR_OUT_OF_MEMORY;
    }
    NyGuiNoteSecureMemory(au1Req);
    uint32_t u4Result = NY_OK;
    // m_bStop is not cleared here: a stop that arrived before the loop began still counts.
    while (m_bStop.load() == 0) {
        if (IsSessionAvaliable() == 0) {
            NY_LOG(LOG_TRACE, "CUiService: session service is not avaliable");
            break;
        }
        // Fresh zeros for every request: a short request never reads an earlier one's bytes,
        // and an answer that could not be built goes out as zeros.
        memset(au1Req, 0, NY_UI_PARAM_SIZE);
        memset(au1Resp, 0, NY_UI_PARAM_SIZE);
        uint32_t u4ReqSize = NY_UI_PARAM_SIZE;
        u4Result = NyCommListen(m_blkParam.hSession, au1Req, &u4ReqSize);
        if (u4Result != NY_OK) {
            continue;
        }
        uint32_t u4RespSize = NY_UI_PARAM_SIZE;
        ProcessRequestSvc(au1Req, u4ReqSize, au1Resp, &u4RespSize);
        BlkCommNotifyDataTag blkNotify = {COMM_SIGNAL_RESPONSE, au1Resp, u4RespSize};
        u4Result = NyCommNotify(m_blkParam.hSession, &blkNotify);
        NyMemSafeClear(au1Req, NY_UI_PARAM_SIZE);
        NyMemSafeClear(au1Resp, NY_UI_PARAM_SIZE);
    }
    ReleaseDialog();
    NyCommDisconnect(m_blkParam.hSession);
    NY_LOG(u4Result != NY_OK ? LOG_ERROR : LOG_TRACE, "CUiService::Run() leave u4Result = %08x",
           u4Result);
    return u4Result;
}

uint32_t GUIService::IsSessionAvaliable() {
    if (!IsClientProcessAlive(m_blkParam.uClientPid)) {
        return 0;
    }
    BlkCommInitParamTag blkInit;
    NySessionFillInitParam(m_blkParam.szSessionName, &blkInit);
    NY_COMM_HANDLE hProbe = nullptr;
    if (NyCommConnect(&blkInit, SESSION_PROBE_MS, &hProbe) != NY_OK) {
        return 0;
    }
    // Within this process the probe is the service's own channel record: keep that one open.
    if (hProbe != m_blkParam.hSession) {
        NyCommDisconnect(hProbe);
    }
    return 1;
}

uint32_t GUIService::ProcessRequestSvc(uint8_t* pu1Req, uint32_t u4ReqSize, uint8_t* pu1Resp,
                                       uint32_t* pu4RespSize) {
    if (pu1Req == nullptr || pu1Resp == nullptr || pu4RespSize == nullptr) {
        return NY_ERR_INVALID_ARGUMENT;
    }
    if (*pu4RespSize < NY_UI_PARAM_SIZE) {
        *pu4RespSize = NY_UI_PARAM_SIZE;
        return UI_ERR_ANSWER_TOO_SMALL;
    }
    CNySecure<tagBlkUiParam> secureReq;
    if (secureReq.Get() == nullptr) {
        return NY_ERR_OUT_OF_MEMORY;
    }
    tagBlkUiParam& blkReq = *secureReq;
    memcpy(&blkReq, pu1Req, u4ReqSize < sizeof(blkReq) ? u4ReqSize : sizeof(blkReq));
    auto* pResp = reinterpret_cast<tagBlkUiParam*>(pu1Resp);
    uint32_t u4Result = NY_OK;
    bool bProtected = blkReq.u4Protected == UI_PARAM_PROTECTED;
    if (bProtected) {
        u4Result = UiParamDec(&blkReq);
    }
    if (u4Result == NY_OK) {
        memcpy(pResp, &blkReq, sizeof(blkReq));
        u4Result = IsAsyncRequest(&blkReq) ? ProcessRequestAsync(&blkReq, pResp)
                                           : ProcessRequestSync(&blkReq, pResp);
        if (u4Result == NY_OK && bProtected) {
            u4Result = UiParamEnc(pResp);
            if (u4Result != NY_OK) {
                // Never let a clear answer (it may hold PINs) out of a protected exchange.
                NyMemSafeClear(pResp, sizeof(*pResp));
            }
        }
    }
    NyMemSafeClear(&blkReq, sizeof(blkReq));
    if (u4Result != NY_OK) {
        NY_LOG_RESULT(u4Result);
        return u4Result;
    }
    *pu4RespSize = NY_UI_PARAM_SIZE;
    return NY_OK;
}

uint32_t GUIService::ProcessRequestSync(const tagBlkUiParam* pReq, tagBlkUiParam* pResp) {
    if (!IsDialogCommand(pReq->enUiCmdType)) {
        pResp->enRes = UI_RESULT_NOT_PROCESSED;
        return NY_OK;
    }
    uint32_t u4Result = RunUi(pReq);
    if (u4Result == NY_OK && m_pUi != nullptr) {
        uint32_t u4Size = NY_UI_PARAM_SIZE;
        u4Result = m_pUi->Dialog()->GetResponse(BlockBytes(pResp), &u4Size);
        ReleaseDialog();
        return u4Result;
    }
    pResp->enRes = UI_RESULT_NOT_PROCESSED;
    NY_LOG(LOG_TRACE, "pblkResp->enRes = UI_RESULT_NOT_PROCESSED");
    return u4Result;
}

uint32_t GUIService::ProcessRequestAsync(const tagBlkUiParam* pReq, tagBlkUiParam* pResp) {
    uint32_t u4CmdType = pReq->enUiCmdType;
    uint32_t u4Result = NY_OK;
    if (u4CmdType == UI_CMD_GET_STATUS) {
        uint32_t u4Size = NY_UI_PARAM_SIZE;
        u4Result = GetStatus(BlockBytes(pResp), &u4Size);
        if (u4Result != NY_OK) {
            pResp->enRes = UI_RESULT_CANCEL;
        }
    } else if (u4CmdType == UI_CMD_UPDATE) {
        u4Result = Update(reinterpret_cast<const uint8_t*>(pReq), NY_UI_PARAM_SIZE);
        pResp->enRes = u4Result == NY_OK ? UI_RESULT_OK : UI_RESULT_PENDING;
    } else if (u4CmdType == UI_CMD_TERMINATE) {
        TerminateUi();
        pResp->enRes = UI_RESULT_OK;
    } else if (IsDialogCommand(u4CmdType)) {
        u4Result = RunUi(pReq);
        if (u4Result == NY_OK) {
            pResp->enRes = UI_RESULT_PENDING;
        } else if (RerunsHeldDialog(u4CmdType) && u4Result == UI_ERR_NO_DIALOG) {
            pResp->enRes = UI_RESULT_NOT_PROCESSED;
        } else {
            pResp->enRes = UI_RESULT_START_FAILED;
        }
    } else {
        pResp->enRes = UI_RESULT_NOT_PROCESSED;
    }
    return u4Result;
}

uint32_t GUIService::RunUi(const tagBlkUiParam* pReq) {
    NY_LOG(LOG_TRACE, "CUiService::RunUi() enter");
    NY_LOG(LOG_TRACE, "enUiCmdType:%08x,enCTT:%08x", pReq->enUiCmdType,
           NyUiParamGetU4(pReq, UI_OFS_CONFIRM_CTT));
    if (!RerunsHeldDialog(pReq->enUiCmdType)) {
        // A dialog still held is replaced; one still running is stopped first, never left
        // running on a destroyed object.
        ReleaseDialog();
        m_pUi = MakeDialog(pReq);
    }
    uint32_t u4Result = RunHeldDialog(pReq->u4Mode);
    NY_LOG(LOG_TRACE, "CUiService::RunUi() leave");
    return u4Result;
}

uint32_t GUIService::RunHeldDialog(uint32_t u4Mode) {
    if (m_pUi == nullptr) {
        return UI_ERR_NO_DIALOG;
    }
    if (m_pUi->IsRunning()) {
        return UI_ERR_DIALOG_BUSY;
    }
    if (u4Mode == UI_MODE_ASYNC) {
        return m_pUi->StartThread(UiModalThreadEntry);
    }
    return m_pUi->RunHere([this] { return IsSessionAvaliable() != 0; }, CLIENT_WATCH_MS);
}

void* GUIService::UiModalThreadEntry(void* pvDialog) {
    auto* pHeld = static_cast<CHeldDialog*>(pvDialog);
    NY_LOG(LOG_ERROR, "UiModalThreadEntry() enter");
    pHeld->RunOnThread();
    NY_LOG(LOG_ERROR, "UiModalThreadEntry() leave");
    pHeld->EndThreadRun();
    return nullptr;
}

uint32_t GUIService::GetStatus(uint8_t* pu1Resp, uint32_t* pu4Size) {
    if (m_pUi == nullptr) {
        return NY_OK;
    }
    // Finished is read before the copy: a copy taken after the dialog ended is its final
    // answer, while one taken before may not be. A dialog whose run has returned counts as
    // finished even if it never showed its window, so a poll never waits for it forever.
    bool bFinished = !m_pUi->IsRunning() || m_pUi->Dialog()->IsFinished() != 0;
    uint32_t u4Result = m_pUi->Dialog()->GetResponse(pu1Resp, pu4Size);
    if (!bFinished && pu1Resp != nullptr) {
        reinterpret_cast<tagBlkUiParam*>(pu1Resp)->enRes = UI_RESULT_PENDING;
    }
    return u4Result;
}

uint32_t GUIService::Update(const uint8_t* pu1Data, uint32_t u4Size) {
    NY_LOG(LOG_TRACE, "CUiService::Update() enter");
    uint32_t u4Result = NY_OK;
    if (m_pUi != nullptr) {
        u4Result = m_pUi->Dialog()->update(pu1Data, u4Size);
        NY_LOG(LOG_TRACE, "CUiService::Update() update end");
    }
    NY_LOG(LOG_TRACE, "CUiService::Update() leave");
    return u4Result;
}

void GUIService::TerminateUi() {
    NY_LOG(LOG_TRACE, "CUiService::TerminateUi() enter");
    if (m_pUi != nullptr) {
        // Waiting for the run to return happens before the GUI lock is taken: the run holds
        // that lock until it returns.
        m_pUi->StopAndWaitForRun();
        NY_LOG(LOG_TRACE, "CUiService::TerminateUi() stop end");
        // No dialog callback may run while the dialog is destroyed. The GDK lock guards that
        // (its run has returned, so only GTK could still reach it); the one-dialog lock is not
        // taken here, since the next session's dialog holds it for its whole run and the
        // terminate would otherwise wait for someone else's dialog to close.
        gdk_threads_enter();
        ReleaseDialog();
        gdk_threads_leave();
    }
    NY_LOG(LOG_TRACE, "CUiService::TerminateUi() leave");
}
