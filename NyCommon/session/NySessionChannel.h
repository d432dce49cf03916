// Channel parameters of the UI server's channels (the main session and every interaction
// session): plain type, leading shared-memory word 0, the name, 4096 bytes of data.
#pragma once

#include "comm/NyCommunication.h"

// Zeroes *pParam and fills it for szName (bounded copy into the name field). False when szName
// is null or was cut to fit; the parameters then hold the cut name.
bool NySessionFillInitParam(const char* szName, BlkCommInitParamTag* pParam);
