#include <NyUiClientC.h>
#include <stdio.h>

int main(void) {
    NyUiSessionOptions options = {NULL, NULL, 1, 0}; /* start the installed server */
    NyUiPinRequest request = {6, 16, 0};             /* a user PIN of 6 to 16 characters */
    NyUiPinAnswer answer;
    NyUiSession* session = NULL;
    uint32_t result = NyUiSessionStart(&options, &session);
    if (result == NYUI_OK) {
        result = NyUiSessionAskPin(session, &request, &answer);
        NyUiSessionEnd(session);
    }
    if (result != NYUI_OK || answer.u4Answer != NYUI_ANSWER_OK) {
        fprintf(stderr, "no PIN (result 0x%08X)\n", result);
        return 1;
    }
    printf("PIN of %u characters: %s\n", answer.u4PinLen, answer.szPin);
    return 0;
}
