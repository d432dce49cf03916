#include "UictlExchange.h"

#include "NyUiServerProcess.h"
#include "UictlInterrupt.h"

namespace {

uint32_t Fail(uint32_t u4Result, const std::string& strStep, std::string* pstrError) {
    *pstrError = strStep;
    return u4Result;
}

uint32_t ReachServer(const BlkUictlOptionsTag& options, CNyUiClient* pClient,
                     std::string* pstrError) {
    if (!options.strMain.empty()) {
        uint32_t u4Result = pClient->JoinServer(options.strMain.c_str());
        return u4Result == NY_OK
                   ? NY_OK
                   : Fail(u4Result,
                          "cannot reach the UI server of main session \"" + options.strMain + "\"",
                          pstrError);
    }
    std::string strServer = UictlServerPath(options);
    std::string strMain = NyUiFreshMainName();
    uint32_t u4Result = pClient->StartServer(strServer.c_str(), strMain.c_str());
    if (u4Result != NY_OK) {
        return Fail(u4Result, "cannot start the UI server \"" + strServer + "\"", pstrError);
    }
    if (options.bKeep) {
        pClient->KeepServer();
    }
    return NY_OK;
}

}  // namespace

std::string UictlServerPath(const BlkUictlOptionsTag& options) {
    return options.strServer.empty() ? NyUiServerPathBesideSelf() : options.strServer;
}

uint32_t UictlSend(CNyUiClient* pClient, const BlkUictlOptionsTag& options,
                   const tagBlkUiParam* pReq, tagBlkUiParam* pAnswer) {
    return options.bProtect ? pClient->ExchangeProtected(pReq, options.au1Seed, pAnswer)
                            : pClient->Exchange(pReq, pAnswer);
}

uint32_t UictlCloseDialog(CNyUiClient* pClient, const BlkUictlOptionsTag& options) {
    tagBlkUiParam blkClosed;
    pClient->SendCommand(UI_CMD_TERMINATE, &blkClosed,
                         options.bProtect ? options.au1Seed : nullptr);
    return NY_OK;
}

uint32_t UictlExchange(const BlkUictlOptionsTag& options, const tagBlkUiParam* pReq,
                       tagBlkUiParam* pAnswer, std::string* pstrError, std::string* pstrMain) {
    CNyUiClient client;
    uint32_t u4Result = ReachServer(options, &client, pstrError);
    *pstrMain = client.MainName();
    if (u4Result != NY_OK) {
        return u4Result;
    }
    u4Result = client.OpenSession(options.u4InteractionId);
    if (u4Result != NY_OK) {
        return Fail(u4Result, "cannot open an interaction session", pstrError);
    }
    bool bSync = pReq->u4Mode != UI_MODE_ASYNC;
    if (bSync) {
        UictlEnterSyncWait(client.StartedServerPid());
    }
    u4Result = UictlSend(&client, options, pReq, pAnswer);
    UictlLeaveSyncWait();
    if (u4Result != NY_OK) {
        return Fail(u4Result, "the request was not answered", pstrError);
    }
    bool bStartedAsync =
        options.bAsync && pReq->u4Mode == UI_MODE_ASYNC && pAnswer->enRes == UI_RESULT_PENDING;
    if (bStartedAsync) {
        u4Result = UictlRunSchedule(&client, options, pReq, pAnswer, pstrError);
    }
    client.CloseSession();
    return u4Result;
}
