#include "UictlExit.h"

#include "CNyUiClient.h"
#include "UictlInterrupt.h"

int UictlExitForAnswer(const tagBlkUiParam* pAnswer, bool bRaw) {
    if (bRaw) {
        return UICTL_EXIT_OK;
    }
    switch (pAnswer->enRes) {
        case UI_RESULT_OK:
            return UICTL_EXIT_OK;
        case UI_RESULT_CANCEL:
            return UICTL_EXIT_CANCEL;
        case UI_RESULT_START_FAILED:
            return UICTL_EXIT_START_FAILED;
        default:
            return UICTL_EXIT_NOT_PROCESSED;
    }
}

int UictlExitForFailure(uint32_t u4Result) {
    switch (u4Result) {
        case UICTL_ERR_INTERRUPTED:
            return UICTL_EXIT_INTERRUPTED;
        case NY_ERR_CLIENT_POLL_TIMEOUT:
            return UICTL_EXIT_NO_ANSWER;
        default:
            return UICTL_EXIT_CONNECTION;
    }
}
