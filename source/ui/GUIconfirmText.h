// What the on-device confirmation dialog says: the message for each confirmation kind, the one
// an update brings, and where the countdown starts. Kept apart from the widget code so that the
// choice can be checked without a display.
#pragma once

#include <cstdint>

// Messages of kind 1 wrap beyond this many bytes; the other kinds wrap beyond the width of the
// message label in characters.
constexpr unsigned int NY_CONFIRM_KIND1_WRAP_LIMIT = 99;
constexpr uint32_t NY_CONFIRM_KIND_PLAIN = 1;

// The message of a confirmation kind that has one text of its own.
struct BlkConfirmTextTag {
    uint32_t u4Key;  // kind, or fingerprint stage
    unsigned int u4TextId;
    bool bFormatted;  // a format with one integer, filled with the detail value
};

// The text of kinds 1 to 12; null for the fingerprint kinds (their message depends on the
// detail and attempts values) and for kinds without a message.
const BlkConfirmTextTag* NyConfirmKindText(uint32_t u4Kind);

// Kind 15 before any stage: the enrolment text; kind 16: the verification text, below a line
// with text NY_CONFIRM_ID_ATTEMPTS and the attempts value when that is 1 or 2.
constexpr unsigned int NY_CONFIRM_ID_ENROL = 0x210121;
constexpr unsigned int NY_CONFIRM_ID_VERIFY = 0x210122;
constexpr unsigned int NY_CONFIRM_ID_ATTEMPTS = 0x210120;
constexpr uint32_t NY_CONFIRM_ATTEMPTS_SHOWN_MIN = 1;
constexpr uint32_t NY_CONFIRM_ATTEMPTS_SHOWN_MAX = 2;

// Text id of a fingerprint stage (the detail value's low byte), or 0 for a stage without one.
unsigned int NyConfirmStageTextId(uint32_t u4Detail);

// Text id an update of a fingerprint kind shows for its detail value: the stage's text, the
// verification failure's, or 0 to leave the message as it is.
unsigned int NyConfirmUpdateTextId(uint32_t u4Detail);

// First number the countdown shows for a time-out in seconds: one less than the time-out,
// 0 for a time-out of 0.
uint32_t NyConfirmFirstCount(uint32_t u4TimeoutSeconds);
// Whether a time-out is one to count down: not 0 (none given) and not one that reads as
// negative (0xFFFFFFFF and the like, "no limit"). Without one the countdown shows nothing,
// rather than a frozen 0 or a negative number of seconds.
bool NyConfirmHasCountdown(uint32_t u4TimeoutSeconds);
