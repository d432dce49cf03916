// The shared-memory request/response channel: a named path between one server process and its
// client processes on this machine. A channel named N is a region N (256-byte header + data),
// a mutex N"_Mutex_Communication" serialising clients, and the events N"_Event_Request",
// N"_Event_Response" and N"_Event_Connected" (the server's 10 ms heartbeat).
//
// Server side: NyCommConnectAsServer, then NyCommListen / NyCommNotify from one thread.
// Client side: NyCommConnect, then NyCommCommit (request and answer) or NyCommWaitForSignal.
// Every function returns 0 or a result code (runtime/NyResult.h, comm/NyCommResult.h).
#pragma once

#include <cstdint>

#include "comm/NyCommResult.h"
#include "runtime/NyTypes.h"

// Signal carried in the header of an answer or notification. The channel does not interpret
// it; the servers of this system answer every request with COMM_SIGNAL_RESPONSE.
enum EN_COMMUNICATION_SIGNAL : uint32_t {
    COMM_SIGNAL_NONE = 0,
    COMM_SIGNAL_ACK = 1,
    COMM_SIGNAL_DEFAULT = 2,  // a default reply without data
    COMM_SIGNAL_RESPONSE = 3,
};

// Values of BlkCommInitParamTag::u4Type.
constexpr uint32_t COMM_INIT_TYPE_PLAIN = 1;
constexpr uint32_t COMM_INIT_TYPE_EX = 2;  // u4Global and pSecurityAttributes are read

constexpr uint32_t COMM_NAME_SIZE = 260;  // name field, NUL included
// Capacity the servers of this system use for their channels.
constexpr uint32_t COMM_DEFAULT_DATA_SIZE = 4096;

// Shared-memory parameters of a channel.
struct BlkCommShmInitParamTag {
    uint32_t u4Flags;             // callers set 0
    uint8_t u1Reserved[28];       // carries nothing this library reads
    char szName[COMM_NAME_SIZE];  // NUL-terminated, not empty
    uint32_t u4DataSize;          // data capacity in bytes (the region adds its 256-byte header)
};

// Argument of NyCommConnectAsServer and NyCommConnect. Zero it, then fill it.
struct BlkCommInitParamTag {
    uint32_t u4Type;  // COMM_INIT_TYPE_PLAIN or COMM_INIT_TYPE_EX
    BlkCommShmInitParamTag blkShm;
    uint32_t u4Global;          // non-zero asks for machine-global objects: refused here
    void* pSecurityAttributes;  // passed to region creation, not otherwise read
};

// Argument of NyCommNotify.
struct BlkCommNotifyDataTag {
    EN_COMMUNICATION_SIGNAL enSignal;
    const void* pData;
    uint32_t u4DataLen;
};

// A channel handle; null is never a valid channel.
typedef void* NY_COMM_HANDLE;

// Creates the channel (or joins its named objects) and starts its heartbeat. A name this process
// already serves returns the same handle.
uint32_t NyCommConnectAsServer(const BlkCommInitParamTag* pParam, NY_COMM_HANDLE* phSession);
// Waits at most 20 ms for one request and copies it out. *pu4Length: capacity in, length out.
// A plain time-out returns the system's try-again error number (EAGAIN), not a channel code.
uint32_t NyCommListen(NY_COMM_HANDLE hSession, void* pBuffer, uint32_t* pu4Length);
// Writes an answer or notification and wakes the client. Data too large for the region is
// dropped (logged) and the message goes out with length 0.
uint32_t NyCommNotify(NY_COMM_HANDLE hSession, const BlkCommNotifyDataTag* pNotify);

// Opens an existing channel and waits up to u4TimeoutMs for the server's heartbeat.
uint32_t NyCommConnect(const BlkCommInitParamTag* pParam, uint32_t u4TimeoutMs,
                       NY_COMM_HANDLE* phSession);
// Sends one request and blocks until the answer comes or the server is gone
// (NY_ERR_COMM_NOT_CONNECTED). The answer's length is not reported: the protocol carries it.
uint32_t NyCommCommit(NY_COMM_HANDLE hSession, const void* pRequest, uint32_t u4RequestLen,
                      void* pAnswer, uint32_t u4AnswerCapacity);
// Waits for a notification without sending a request. The time-out is compared with clock()
// ticks (process time), and the signal received is not reported back (enSignal is by value).
uint32_t NyCommWaitForSignal(NY_COMM_HANDLE hSession, EN_COMMUNICATION_SIGNAL enSignal,
                             uint32_t u4TimeoutMs, void* pBuffer, uint32_t u4Capacity);
// Whether the server's heartbeat arrives within 500 ms; returns that wait's code.
uint32_t NyCommIsConnected(NY_COMM_HANDLE hSession, EnBool* pbConnected);
// Server side: NY_TRUE in *pbIntact while the channel's files are the ones this process
// created and its event sets exist.
uint32_t NyCommIsIntact(NY_COMM_HANDLE hSession, EnBool* pbIntact);
// Closes the channel in this process (and stops its heartbeat on the server side).
uint32_t NyCommDisconnect(NY_COMM_HANDLE hSession);
// Server side: the channel's heartbeat beats every u4PeriodMs (1..10) when it has nothing else
// to do, so that clients that arrive together wait less for their first beat.
uint32_t NyCommSetBeatPeriod(NY_COMM_HANDLE hSession, uint32_t u4PeriodMs);
