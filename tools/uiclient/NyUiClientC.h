/* The UI server's client for C programs (token libraries): a session on a server's main
 * channel, started when needed, over which whole 4096-byte requests are sent or a PIN is asked.
 * Every call returns 0 (NYUI_OK) or a result code. Link with
 * `pkg-config --cflags --libs ukey-uiclient`. */
#ifndef NY_UI_CLIENT_C_H
#define NY_UI_CLIENT_C_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Result codes of the calls (other library codes pass through unchanged). */
#define NYUI_OK 0u
#define NYUI_ERR_BAD_ARGUMENT 0xE0600003u    /* a null pointer, or lengths out of range */
#define NYUI_ERR_NOT_STARTED 0xE060000Cu     /* the server did not start or cannot be reached */
#define NYUI_ERR_SESSION_REFUSED 0xE0600008u /* the server refused the interaction session */
#define NYUI_ERR_OUT_OF_MEMORY 0xE0600002u

/* Answers of a dialog (the request block's result field). */
#define NYUI_ANSWER_NOT_PROCESSED 0u
#define NYUI_ANSWER_START_FAILED 1u
#define NYUI_ANSWER_OK 2u
#define NYUI_ANSWER_CANCEL 5u

#define NYUI_BLOCK_SIZE 4096u
#define NYUI_PIN_MAX_LEN 32u

typedef struct NyUiSession NyUiSession;

typedef struct NyUiSessionOptions {
    const char* szMainName;   /* a running server's main channel; NULL or "": start a server */
    const char* szServerPath; /* the server to start; NULL: the installed one */
    uint32_t u4InteractionId; /* the caller's interaction (token slot, ...) */
    uint32_t u4TimeoutMs;     /* for starting or reaching the server; 0: 10 seconds */
} NyUiSessionOptions;

typedef struct NyUiPinRequest {
    uint32_t u4MinLen; /* shortest PIN accepted */
    uint32_t u4MaxLen; /* longest PIN accepted (at most NYUI_PIN_MAX_LEN) */
    uint32_t u4Kind;   /* 0: user PIN, 2: administrator PIN */
} NyUiPinRequest;

typedef struct NyUiPinAnswer {
    uint32_t u4Answer;                /* NYUI_ANSWER_OK, NYUI_ANSWER_CANCEL, ... */
    uint32_t u4PinLen;                /* characters in szPin */
    char szPin[NYUI_PIN_MAX_LEN + 1]; /* NUL-terminated; empty unless NYUI_ANSWER_OK */
} NyUiPinAnswer;

/* Opens an interaction session; *ppSession is NULL on failure. A server started here is
 * stopped by NyUiSessionEnd. */
uint32_t NyUiSessionStart(const NyUiSessionOptions* pOptions, NyUiSession** ppSession);
/* One request block (NYUI_BLOCK_SIZE bytes) and its answer, waiting for the dialog. */
uint32_t NyUiSessionRequest(NyUiSession* pSession, const void* pvRequest, void* pvAnswer);
/* Shows the verify dialog and waits for the person's PIN or cancel. */
uint32_t NyUiSessionAskPin(NyUiSession* pSession, const NyUiPinRequest* pRequest,
                           NyUiPinAnswer* pAnswer);
/* The server's main channel name (to join the same server from another session). */
const char* NyUiSessionMainName(const NyUiSession* pSession);
/* Ends the interaction and frees the session; NULL is ignored. */
void NyUiSessionEnd(NyUiSession* pSession);

#ifdef __cplusplus
}
#endif

#endif
