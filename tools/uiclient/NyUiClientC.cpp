#include "NyUiClientC.h"

#include <cstring>
#include <new>

#include "CNyUiClient.h"
#include "NyUiServerProcess.h"
#include "runtime/NySafe.h"

static_assert(NYUI_ERR_BAD_ARGUMENT == NY_ERR_BAD_ARGUMENT, "bad argument code");
static_assert(NYUI_ERR_NOT_STARTED == NY_ERR_CLIENT_SERVER_NOT_STARTED, "not started code");
static_assert(NYUI_ERR_SESSION_REFUSED == NY_ERR_CLIENT_SESSION_REFUSED, "refused code");
static_assert(NYUI_ERR_OUT_OF_MEMORY == NY_ERR_OUT_OF_MEMORY, "memory code");
static_assert(NYUI_ANSWER_OK == UI_RESULT_OK && NYUI_ANSWER_CANCEL == UI_RESULT_CANCEL &&
                  NYUI_ANSWER_START_FAILED == UI_RESULT_START_FAILED &&
                  NYUI_ANSWER_NOT_PROCESSED == UI_RESULT_NOT_PROCESSED,
              "answer codes");
static_assert(NYUI_BLOCK_SIZE == NY_UI_PARAM_SIZE && NYUI_PIN_MAX_LEN == NY_UI_PIN_MAX_LEN,
              "sizes");

struct NyUiSession {
    CNyUiClient client;
};

namespace {

constexpr uint32_t DEFAULT_TIMEOUT_MS = 10000;

uint32_t Reach(const NyUiSessionOptions& options, CNyUiClient* pClient) {
    uint32_t u4TimeoutMs = options.u4TimeoutMs != 0 ? options.u4TimeoutMs : DEFAULT_TIMEOUT_MS;
    if (options.szMainName != nullptr && options.szMainName[0] != '\0') {
        return pClient->JoinServer(options.szMainName, u4TimeoutMs);
    }
    std::string strServer =
        options.szServerPath != nullptr ? options.szServerPath : NyUiServerPathBesideSelf();
    return pClient->StartServer(strServer.c_str(), NyUiFreshMainName().c_str(), u4TimeoutMs);
}

}  // namespace

uint32_t NyUiSessionStart(const NyUiSessionOptions* pOptions, NyUiSession** ppSession) {
    if (ppSession == nullptr) {
        return NYUI_ERR_BAD_ARGUMENT;
    }
    *ppSession = nullptr;
    if (pOptions == nullptr) {
        return NYUI_ERR_BAD_ARGUMENT;
    }
    NyUiSession* pSession = new (std::nothrow) NyUiSession;
    if (pSession == nullptr) {
        return NYUI_ERR_OUT_OF_MEMORY;
    }
    uint32_t u4Result = Reach(*pOptions, &pSession->client);
    if (u4Result == NY_OK) {
        u4Result = pSession->client.OpenSession(pOptions->u4InteractionId);
    }
    if (u4Result != NY_OK) {
        delete pSession;
        return u4Result;
    }
    *ppSession = pSession;
    return NYUI_OK;
}

uint32_t NyUiSessionRequest(NyUiSession* pSession, const void* pvRequest, void* pvAnswer) {
    if (pSession == nullptr || pvRequest == nullptr || pvAnswer == nullptr) {
        return NYUI_ERR_BAD_ARGUMENT;
    }
    return pSession->client.Exchange(static_cast<const tagBlkUiParam*>(pvRequest),
                                     static_cast<tagBlkUiParam*>(pvAnswer));
}

uint32_t NyUiSessionAskPin(NyUiSession* pSession, const NyUiPinRequest* pRequest,
                           NyUiPinAnswer* pAnswer) {
    if (pSession == nullptr || pRequest == nullptr || pAnswer == nullptr ||
        pRequest->u4MaxLen > NYUI_PIN_MAX_LEN || pRequest->u4MinLen > pRequest->u4MaxLen) {
        return NYUI_ERR_BAD_ARGUMENT;
    }
    memset(pAnswer, 0, sizeof(*pAnswer));
    tagBlkUiParam blkReq = {};
    blkReq.enUiCmdType = UI_CMD_VERIFY_PIN;
    NyUiParamSetU4(&blkReq, UI_OFS_VERIFY_MIN_LEN, pRequest->u4MinLen);
    NyUiParamSetU4(&blkReq, UI_OFS_VERIFY_MAX_LEN, pRequest->u4MaxLen);
    NyUiParamSetU4(&blkReq, UI_OFS_VERIFY_PIN_KIND, pRequest->u4Kind);
    tagBlkUiParam blkAnswer;
    uint32_t u4Result = pSession->client.Exchange(&blkReq, &blkAnswer);
    if (u4Result == NY_OK) {
        pAnswer->u4Answer = blkAnswer.enRes;
        if (blkAnswer.enRes == UI_RESULT_OK) {
            const char* szPin =
                reinterpret_cast<const char*>(NyUiParamBytes(&blkAnswer, UI_OFS_VERIFY_PIN));
            pAnswer->u4PinLen = static_cast<uint32_t>(strnlen(szPin, NY_UI_PIN_MAX_LEN));
            memcpy(pAnswer->szPin, szPin, pAnswer->u4PinLen);
        }
    }
    NyMemSafeClear(&blkAnswer, sizeof(blkAnswer));
    return u4Result;
}

const char* NyUiSessionMainName(const NyUiSession* pSession) {
    return pSession != nullptr ? pSession->client.MainName().c_str() : "";
}

void NyUiSessionEnd(NyUiSession* pSession) {
    if (pSession != nullptr) {
        pSession->client.CloseSession();
        delete pSession;
    }
}
