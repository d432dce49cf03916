#include "UictlExchange.h"

#include "NyUiServerProcess.h"

namespace {

uint32_t Fail(uint32_t u4Result, const std::string& strStep, std::string* pstrError) {
    *pstrError = strStep;
    return u4Result;
}

uint32_t ReachServer(const BlkUictlOptionsTag& options, CNyUiClient* pClient,
                     std::string* pstrError, std::string* pstrNotice) {
    if (!options.strMain.empty()) {
        uint32_t u4Result = pClient->JoinServer(options.strMain.c_str());
        return u4Result == NY_OK
                   ? NY_OK
                   : Fail(u4Result,
                          "cannot reach the UI server of main session \"" + options.strMain + "\"",
                          pstrError);
    }
    std::string strServer =
        options.strServer.empty() ? NyUiServerPathBesideSelf() : options.strServer;
    std::string strMain = NyUiFreshMainName();
    uint32_t u4Result = pClient->StartServer(strServer.c_str(), strMain.c_str());
    if (u4Result != NY_OK) {
        return Fail(u4Result, "cannot start the UI server \"" + strServer + "\"", pstrError);
    }
    if (options.bKeep) {
        pClient->KeepServer();
        *pstrNotice = "main session: " + strMain;
    }
    return NY_OK;
}

}  // namespace

uint32_t UictlSend(CNyUiClient* pClient, const BlkUictlOptionsTag& options,
                   const tagBlkUiParam* pReq, tagBlkUiParam* pAnswer) {
    return options.bProtect ? pClient->ExchangeProtected(pReq, options.au1Seed, pAnswer)
                            : pClient->Exchange(pReq, pAnswer);
}

uint32_t UictlFinishAsync(CNyUiClient* pClient, const BlkUictlOptionsTag& options,
                          tagBlkUiParam* pAnswer, std::string* pstrError) {
    const uint8_t* pu1Seed = options.bProtect ? options.au1Seed : nullptr;
    uint32_t u4Result =
        pClient->PollUntilDone(pAnswer, options.u4PollMs, options.u4TimeoutMs, pu1Seed);
    tagBlkUiParam blkClosed;
    pClient->SendCommand(UI_CMD_TERMINATE, &blkClosed, pu1Seed);
    if (u4Result != NY_OK) {
        return Fail(u4Result, "the dialog did not finish", pstrError);
    }
    return NY_OK;
}

uint32_t UictlExchange(const BlkUictlOptionsTag& options, const tagBlkUiParam* pReq,
                       tagBlkUiParam* pAnswer, std::string* pstrError, std::string* pstrNotice) {
    CNyUiClient client;
    uint32_t u4Result = ReachServer(options, &client, pstrError, pstrNotice);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    u4Result = client.OpenSession(options.u4InteractionId);
    if (u4Result != NY_OK) {
        return Fail(u4Result, "cannot open an interaction session", pstrError);
    }
    u4Result = UictlSend(&client, options, pReq, pAnswer);
    if (u4Result != NY_OK) {
        return Fail(u4Result, "the request was not answered", pstrError);
    }
    bool bStartedAsync =
        options.bAsync && pReq->u4Mode == UI_MODE_ASYNC && pAnswer->enRes == UI_RESULT_PENDING;
    if (bStartedAsync) {
        u4Result = UictlHasSchedule(options)
                       ? UictlRunSchedule(&client, options, pReq, pAnswer, pstrError)
                       : UictlFinishAsync(&client, options, pAnswer, pstrError);
    }
    client.CloseSession();
    return u4Result;
}
