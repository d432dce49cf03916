// A timetable for a running dialog: updates fed to it and the moment it is stopped, counted from
// the moment it was started. It lets a person watch the confirmation and fingerprint dialogs
// move through their stages from a shell, as the token's middleware would drive them:
//
//   ukey-uictl fingerprint --enrol --update-after 1000:EF --update-after 2500:EE
//       --update-after 4000:EA --stop-after 6000
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "uiblock/NyUiParam.h"

class CNyUiClient;
struct BlkUictlOptionsTag;

// One --update-after MS:DETAIL: the request again, with DETAIL as its detail value.
struct BlkUictlUpdateTag {
    uint32_t u4AfterMs;
    uint32_t u4Detail;
};

// No --stop-after given.
constexpr uint32_t UICTL_NO_STOP = 0xFFFFFFFF;

// "MS:DETAIL", MS a number (decimal or 0x-hex), DETAIL hexadecimal with or without 0x.
bool UictlParseUpdate(const std::string& strText, BlkUictlUpdateTag* pUpdate);

// Whether the options hold a timetable (updates, a stop, or a limit on the wait).
bool UictlHasSchedule(const BlkUictlOptionsTag& options);

// A timetable needs the dialog running on its own thread: switches *pOptions and *pReq to
// asynchronous mode. Updates are only for the confirm command (false with a sentence).
bool UictlPrepareSchedule(BlkUictlOptionsTag* pOptions, tagBlkUiParam* pReq,
                          std::string* pstrError);

// Carries out the timetable on a dialog that has been started asynchronously: between the
// events its status is polled; a dialog that ends by itself (the user answered) ends the
// timetable with its answer. At the stop the dialog is terminated and *pAnswer is the
// terminate's answer; at the --wait limit it is terminated too, with NY_ERR_CLIENT_POLL_TIMEOUT;
// without either the dialog is polled to its end. Ctrl-C terminates it with
// UICTL_ERR_INTERRUPTED. Each update and the stop are reported on stderr as they happen.
uint32_t UictlRunSchedule(CNyUiClient* pClient, const BlkUictlOptionsTag& options,
                          const tagBlkUiParam* pReq, tagBlkUiParam* pAnswer,
                          std::string* pstrError);
