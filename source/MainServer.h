// The server process: the main session channel, its request loop and its keep-alive.
#pragma once

#include <atomic>
#include <cstdint>

#include "comm/NyCommunication.h"

// Size of the main session name buffer (argv[1] is cut to 127 characters).
constexpr uint32_t MAIN_SESSION_NAME_BUFFER = 128;
// Time between two keep-alive probes of the main session. The probe looks at the channel's
// objects without disturbing its clients, so it runs often: a removed channel is repaired
// within a fraction of a second instead of a minute.
constexpr uint32_t KEEP_ALIVE_PERIOD_MS = 200;
// Time-out of a keep-alive probe, in milliseconds.
constexpr uint32_t KEEP_ALIVE_PROBE_MS = 500;

// Handle of the main session channel (server side); null when closed.
extern std::atomic<NY_COMM_HANDLE> m_hServerSession;
// Set to 1 when the server is to end (the main session could not be re-created, or a
// termination signal arrived); the request loop ends at its next look.
extern std::atomic<uint32_t> m_bStopServer;

// Copies szArg into the name buffer, cut to fit; an absent argument gives an empty name.
void CopyMainSessionName(const char* szArg, char (&szName)[MAIN_SESSION_NAME_BUFFER]);
// Time a live server's main channel gets to show its heartbeat before a starting server takes
// the name over.
constexpr uint32_t MAIN_SESSION_ALIVE_PROBE_MS = 40;

// NY_TRUE when another process serves szSessionName: its region is held by a live process and
// its heartbeat beats.
EnBool IsMainSessionServedElsewhere(const char* szSessionName);
// Opens the main session channel as its server. NY_ERR_BAD_ARGUMENT for a null or empty name.
uint32_t CreateMainSession(const char* szSessionName);
// The request loop on the main session; returns the last listen or notify result.
uint32_t ServerThreadEntry();
// Decodes one main-session request and builds its 1044-byte answer. *pu4RespSize: capacity
// in, 1044 out. Requests shorter than the record read as zeros beyond what arrived.
uint32_t ProcessRequestSer(const uint8_t* pu1Req, uint32_t u4ReqSize, uint8_t* pu1Resp,
                           uint32_t* pu4RespSize);
// Keep-alive thread body (argument: the main session name): probes the main session every
// KEEP_ALIVE_PERIOD_MS (or at once when the request loop's listen fails) and, when it is gone,
// stops every session and re-creates it.
void* ThreadKeepAlive(void* pvSessionName);
// Closes the main session channel if it is open. Once m_bStopServer is set, the keep-alive no
// longer re-opens it.
void CloseMainSession();
