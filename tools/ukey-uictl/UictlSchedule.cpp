#include "UictlSchedule.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "CNyUiClient.h"
#include "UictlExchange.h"
#include "UictlInterrupt.h"
#include "UictlOptions.h"
#include "UictlOutput.h"
#include "uiblock/NyUiConfirmParam.h"

namespace {

typedef std::chrono::steady_clock Clock;

constexpr uint64_t UICTL_NEVER = UINT64_MAX;

uint64_t ElapsedMs(Clock::time_point start) {
    return static_cast<uint64_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

// Polls the dialog's status until u8DueMs after start (UICTL_NEVER: until it ends). *pbEnded
// with its final answer in *pAnswer when it ended before that; UICTL_ERR_INTERRUPTED after
// Ctrl-C.
uint32_t PollUntil(CNyUiClient* pClient, const BlkUictlOptionsTag& options, Clock::time_point start,
                   uint64_t u8DueMs, tagBlkUiParam* pAnswer, bool* pbEnded) {
    const uint8_t* pu1Seed = options.bProtect ? options.au1Seed : nullptr;
    *pbEnded = false;
    for (uint64_t u8Now = ElapsedMs(start); u8Now < u8DueMs; u8Now = ElapsedMs(start)) {
        std::this_thread::sleep_for(
            std::chrono::milliseconds(std::min<uint64_t>(options.u4PollMs, u8DueMs - u8Now)));
        if (UictlInterrupted()) {
            return UICTL_ERR_INTERRUPTED;
        }
        tagBlkUiParam blkStatus;
        uint32_t u4Result = pClient->SendCommand(UI_CMD_GET_STATUS, &blkStatus, pu1Seed);
        if (u4Result != NY_OK) {
            return u4Result;
        }
        if (blkStatus.enRes != UI_RESULT_PENDING) {
            *pAnswer = blkStatus;
            *pbEnded = true;
            return NY_OK;
        }
    }
    return NY_OK;
}

uint32_t SendUpdate(CNyUiClient* pClient, const BlkUictlOptionsTag& options,
                    const tagBlkUiParam* pReq, const BlkUictlUpdateTag& update) {
    tagBlkUiParam blkUpdate = *pReq;
    blkUpdate.enRes = UI_RESULT_NOT_PROCESSED;
    blkUpdate.enUiCmdType = UI_CMD_UPDATE;
    NyUiParamSetU4(&blkUpdate, UI_OFS_CONFIRM_DETAIL, update.u4Detail);
    tagBlkUiParam blkAnswer;
    uint32_t u4Result = UictlSend(pClient, options, &blkUpdate, &blkAnswer);
    if (u4Result == NY_OK) {
        fprintf(stderr, "update after %u ms, detail 0x%08X: %s\n", update.u4AfterMs,
                update.u4Detail, UictlResultName(blkAnswer.enRes));
    }
    return u4Result;
}

}  // namespace

bool UictlParseUpdate(const std::string& strText, BlkUictlUpdateTag* pUpdate) {
    size_t nColon = strText.find(':');
    return nColon != std::string::npos &&
           UictlParseU32(strText.substr(0, nColon), &pUpdate->u4AfterMs) &&
           UictlParseHex32(strText.substr(nColon + 1), &pUpdate->u4Detail);
}

bool UictlHasSchedule(const BlkUictlOptionsTag& options) {
    return !options.vUpdates.empty() || options.u4StopAfterMs != UICTL_NO_STOP ||
           options.u4WaitS != UICTL_NO_WAIT;
}

bool UictlPrepareSchedule(BlkUictlOptionsTag* pOptions, tagBlkUiParam* pReq,
                          std::string* pstrError) {
    if (!pOptions->vUpdates.empty() && pReq->enUiCmdType != UI_CMD_CONFIRM) {
        *pstrError = "--update-after feeds the confirm and fingerprint dialogs only";
        return false;
    }
    if (UictlHasSchedule(*pOptions)) {
        pOptions->bAsync = true;
        pReq->u4Mode = UI_MODE_ASYNC;
    }
    return true;
}

uint32_t UictlRunSchedule(CNyUiClient* pClient, const BlkUictlOptionsTag& options,
                          const tagBlkUiParam* pReq, tagBlkUiParam* pAnswer,
                          std::string* pstrError) {
    Clock::time_point start = Clock::now();
    uint64_t u8StopMs =
        options.u4StopAfterMs == UICTL_NO_STOP ? UICTL_NEVER : options.u4StopAfterMs;
    uint64_t u8LimitMs =
        options.u4WaitS == UICTL_NO_WAIT ? UICTL_NEVER : uint64_t{options.u4WaitS} * 1000;
    uint64_t u8EndMs = std::min(u8StopMs, u8LimitMs);
    std::vector<BlkUictlUpdateTag> vUpdates = options.vUpdates;
    std::stable_sort(vUpdates.begin(), vUpdates.end(),
                     [](const BlkUictlUpdateTag& a, const BlkUictlUpdateTag& b) {
                         return a.u4AfterMs < b.u4AfterMs;
                     });
    // Updates due before or at the end are sent; later ones would find no dialog.
    bool bEnded = false;
    uint32_t u4Result = NY_OK;
    for (auto it = vUpdates.begin(); it != vUpdates.end() && it->u4AfterMs <= u8EndMs; ++it) {
        u4Result = PollUntil(pClient, options, start, it->u4AfterMs, pAnswer, &bEnded);
        if (u4Result != NY_OK || bEnded) {
            break;
        }
        u4Result = SendUpdate(pClient, options, pReq, *it);
        if (u4Result != NY_OK) {
            *pstrError = "the dialog could not be updated";
            return u4Result;
        }
    }
    if (u4Result == NY_OK && !bEnded) {
        u4Result = PollUntil(pClient, options, start, u8EndMs, pAnswer, &bEnded);
    }
    if (u4Result == NY_OK && bEnded) {
        return UictlCloseDialog(pClient, options);
    }
    if (u4Result == NY_OK || u4Result == UICTL_ERR_INTERRUPTED) {
        uint32_t u4Stop = pClient->SendCommand(UI_CMD_TERMINATE, pAnswer,
                                               options.bProtect ? options.au1Seed : nullptr);
        u4Result = u4Result == NY_OK ? u4Stop : u4Result;
    }
    if (u4Result != NY_OK) {
        *pstrError = u4Result == UICTL_ERR_INTERRUPTED ? "interrupted; the dialog was closed"
                                                       : "the dialog could not be stopped";
        return u4Result;
    }
    if (u8LimitMs < u8StopMs) {
        *pstrError =
            "no answer within " + std::to_string(options.u4WaitS) + " s; the dialog was closed";
        return NY_ERR_CLIENT_POLL_TIMEOUT;
    }
    fprintf(stderr, "stopped after %u ms\n", options.u4StopAfterMs);
    return NY_OK;
}
