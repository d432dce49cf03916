// Payload of the confirm command (0x10004): the on-device confirmation and the fingerprint
// dialogs read these fields of the request block, and updates carry the same layout. Offsets
// are from the start of the block; every field is a little-endian u32 (NyUiParamGetU4).
#pragma once

#include <cstdint>

#include "uiblock/NyUiParam.h"

constexpr uint32_t UI_OFS_CONFIRM_KIND = UI_OFS_CONFIRM_CTT;  // confirmation kind (enCTT)
constexpr uint32_t UI_OFS_CONFIRM_CLOSABLE = 316;             // non-zero: the window may be closed
constexpr uint32_t UI_OFS_CONFIRM_DETAIL = 324;    // number in the message; fingerprint stage
constexpr uint32_t UI_OFS_CONFIRM_ATTEMPTS = 328;  // kind 16: attempts left (1 or 2 shown)
constexpr uint32_t UI_OFS_CONFIRM_TIMEOUT = 3412;  // seconds the device waits

// Confirmation kinds handled by the fingerprint dialog.
constexpr uint32_t UI_CTT_FINGERPRINT_ENROL = 15;
constexpr uint32_t UI_CTT_FINGERPRINT_VERIFY = 16;

inline bool NyUiIsFingerprintKind(uint32_t u4Kind) {
    return u4Kind == UI_CTT_FINGERPRINT_ENROL || u4Kind == UI_CTT_FINGERPRINT_VERIFY;
}

// Fingerprint stages reported by the token in the detail field: the low byte names the stage,
// except for the verification failure, which is a whole result code.
constexpr uint32_t UI_FP_STAGE_MASK = 0xFF;
constexpr uint32_t UI_FP_STAGE_CHANGE_FINGER = 0xEA;
constexpr uint32_t UI_FP_STAGE_INVALID_DATA = 0xEB;
constexpr uint32_t UI_FP_STAGE_LIFT_FINGER = 0xEE;
constexpr uint32_t UI_FP_STAGE_PLACE_FINGER = 0xEF;
constexpr uint32_t UI_FP_VERIFY_FAILED = 0xE06163CF;
