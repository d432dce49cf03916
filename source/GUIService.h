// The UI service of one interaction session: listens on the session's channel, answers each
// 4096-byte UI block, and runs, polls, updates and terminates the session's dialog.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "comm/NyCommunication.h"

class CHeldDialog;
struct tagBlkUiParam;

// What a GUIService is created with (copied into the service).
struct BlkUiServiceParamTag {
    uint32_t u4SessionId;
    char szSessionName[256];
    NY_COMM_HANDLE hSession;  // the session channel, server side; closed by the service
    uint32_t u4InteractionId;
    uint32_t uClientPid;
};

class GUIService {
public:
    explicit GUIService(const BlkUiServiceParamTag& blkParam);
    ~GUIService();
    GUIService(const GUIService&) = delete;
    GUIService& operator=(const GUIService&) = delete;

    // The session loop: runs until the client is gone, the channel is unreachable or stop() was
    // called; then destroys the dialog and closes the channel. Returns the last channel result.
    uint32_t run();
    // Asks the loop to end after its current listen; returns 0.
    uint32_t stop();

    // Answers one request. *pu4RespSize: capacity in, 4096 out. The request is decrypted in
    // place when protected; the answer is protected again under the same seed.
    uint32_t ProcessRequestSvc(uint8_t* pu1Req, uint32_t u4ReqSize, uint8_t* pu1Resp,
                               uint32_t* pu4RespSize);
    uint32_t ProcessRequestSync(const tagBlkUiParam* pReq, tagBlkUiParam* pResp);
    uint32_t ProcessRequestAsync(const tagBlkUiParam* pReq, tagBlkUiParam* pResp);
    // Creates and runs the dialog for the request's command (on this thread, or on a thread
    // of its own in asynchronous mode).
    uint32_t RunUi(const tagBlkUiParam* pReq);
    uint32_t GetStatus(uint8_t* pu1Resp, uint32_t* pu4Size);
    uint32_t Update(const uint8_t* pu1Data, uint32_t u4Size);
    void TerminateUi();
    // 1 while the client process lives and the session channel answers, else 0.
    uint32_t IsSessionAvaliable();
    // Thread body of an asynchronous dialog (argument: the held dialog).
    static void* UiModalThreadEntry(void* pvDialog);

    // Whether dialogs can be shown at all (false when the server has no display).
    static void SetDialogsAvailable(bool bAvailable);
    // Gets the PIN prompt, the dialog clients ask for first and most, ready to be shown: its
    // window is built once as a request would build it, and a spare of it is kept.
    static void PrepareVerifyDialog();

private:
    uint32_t RunHeldDialog(uint32_t u4Mode);
    void ReleaseDialog();

    BlkUiServiceParamTag m_blkParam;
    std::atomic<uint32_t> m_bStop{0};
    std::unique_ptr<CHeldDialog> m_pUi;
};
