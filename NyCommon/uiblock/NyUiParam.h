// The 4096-byte request/answer record of an interaction session, shared by the server and every
// client. Byte-packed and little-endian: a 312-byte header, then a command-specific payload.
// Payload fields sit at fixed byte offsets, several of them unaligned on purpose; read and
// write them through the accessors below, never through casts of unaligned pointers.
#pragma once

#include <cstddef>
#include <cstdint>

#include "runtime/NyResult.h"

// Command types (enUiCmdType).
constexpr uint32_t UI_CMD_UPDATE = 1;      // feed this block to the running dialog
constexpr uint32_t UI_CMD_TERMINATE = 2;   // end the running dialog
constexpr uint32_t UI_CMD_GET_STATUS = 3;  // the running dialog's status and answer
constexpr uint32_t UI_CMD_VERIFY_PIN = 0x10001;
constexpr uint32_t UI_CMD_GET_PIN_CONFIRM = 0x10002;  // new PIN entered twice
constexpr uint32_t UI_CMD_MESSAGE = 0x10003;
constexpr uint32_t UI_CMD_CONFIRM = 0x10004;  // on the device, or by fingerprint (enCTT 15, 16)
constexpr uint32_t UI_CMD_CHANGE_PIN = 0x10005;
constexpr uint32_t UI_CMD_CHANGE_PIN_FORCED = 0x10006;
constexpr uint32_t UI_CMD_UNBLOCK = 0x10007;
constexpr uint32_t UI_CMD_CHANGE_LABEL = 0x10008;
constexpr uint32_t UI_CMD_NO_DIALOG_1 = 0x10009;  // in range, but no dialog exists for them
constexpr uint32_t UI_CMD_NO_DIALOG_2 = 0x1000A;
constexpr uint32_t UI_CMD_DIALOG_FIRST = UI_CMD_VERIFY_PIN;
constexpr uint32_t UI_CMD_DIALOG_LAST = UI_CMD_NO_DIALOG_2;

// Mode: 1 runs the dialog on its own thread and the client polls; anything else waits.
constexpr uint32_t UI_MODE_ASYNC = 1;

// Results (enRes).
constexpr uint32_t UI_RESULT_NOT_PROCESSED = 0;
constexpr uint32_t UI_RESULT_START_FAILED = 1;
constexpr uint32_t UI_RESULT_OK = 2;
constexpr uint32_t UI_RESULT_PENDING = 4;
constexpr uint32_t UI_RESULT_CANCEL = 5;

// Protection flag: 1 = bytes 312 to 3415 are enciphered.
constexpr uint32_t UI_PARAM_CLEAR = 0;
constexpr uint32_t UI_PARAM_PROTECTED = 1;

constexpr uint32_t NY_UI_PARAM_SIZE = 4096;
constexpr uint32_t NY_UI_KEY_SEED_SIZE = 16;
constexpr uint32_t NY_UI_PAYLOAD_OFFSET = 312;
constexpr uint32_t NY_UI_PAYLOAD_SIZE = NY_UI_PARAM_SIZE - NY_UI_PAYLOAD_OFFSET;
constexpr uint32_t NY_UI_PROTECTED_OFFSET = 312;
constexpr uint32_t NY_UI_PROTECTED_SIZE = 3104;  // 388 triple-DES blocks

// PIN fields: 33 bytes, NUL-terminated, at most 32 characters.
constexpr uint32_t NY_UI_PIN_FIELD_SIZE = 33;
constexpr uint32_t NY_UI_PIN_MAX_LEN = 32;
// The label field of the change-label answer: 65 bytes, NUL-terminated, at most 64 bytes.
constexpr uint32_t NY_UI_LABEL_FIELD_SIZE = 65;
constexpr uint32_t NY_UI_LABEL_MAX_LEN = 64;

// Payload offsets (from the start of the block). Verify (0x10001) and new PIN twice (0x10002).
constexpr uint32_t UI_OFS_VERIFY_MIN_LEN = 312;
constexpr uint32_t UI_OFS_VERIFY_MAX_LEN = 316;
constexpr uint32_t UI_OFS_VERIFY_PIN = 320;
constexpr uint32_t UI_OFS_VERIFY_PIN_LEN = 353;
constexpr uint32_t UI_OFS_VERIFY_PIN_KIND = 361;
// Change PIN (0x10005, 0x10006).
constexpr uint32_t UI_OFS_CHANGE_PIN_KIND = 312;
constexpr uint32_t UI_OFS_CHANGE_MIN_LEN = 316;
constexpr uint32_t UI_OFS_CHANGE_MAX_LEN = 320;
constexpr uint32_t UI_OFS_CHANGE_OLD_PIN = 324;
constexpr uint32_t UI_OFS_CHANGE_OLD_PIN_LEN = 357;
constexpr uint32_t UI_OFS_CHANGE_NEW_PIN = 361;
constexpr uint32_t UI_OFS_CHANGE_NEW_PIN_LEN = 394;
// Unblock (0x10007).
constexpr uint32_t UI_OFS_UNBLOCK_MIN_LEN = 312;
constexpr uint32_t UI_OFS_UNBLOCK_MAX_LEN = 316;
constexpr uint32_t UI_OFS_UNBLOCK_SO_PIN = 320;
constexpr uint32_t UI_OFS_UNBLOCK_SO_PIN_LEN = 353;
constexpr uint32_t UI_OFS_UNBLOCK_USER_PIN = 357;
constexpr uint32_t UI_OFS_UNBLOCK_USER_PIN_LEN = 390;
// Change label (0x10008): a PIN is asked when its minimum or maximum length is non-zero.
constexpr uint32_t UI_OFS_LABEL_PIN_MIN_LEN = 312;
constexpr uint32_t UI_OFS_LABEL_PIN_MAX_LEN = 316;
constexpr uint32_t UI_OFS_LABEL_NAME_MIN_LEN = 320;
constexpr uint32_t UI_OFS_LABEL_NAME_MAX_LEN = 324;
constexpr uint32_t UI_OFS_LABEL_NAME = 328;
constexpr uint32_t UI_OFS_LABEL_NAME_LEN = 393;
constexpr uint32_t UI_OFS_LABEL_PIN = 397;
constexpr uint32_t UI_OFS_LABEL_PIN_LEN = 430;
// Confirm (0x10004): the confirmation sub-type enCTT is the first payload word.
constexpr uint32_t UI_OFS_CONFIRM_CTT = 312;

#pragma pack(push, 1)
struct tagBlkUiParam {
    uint32_t enRes;        // result, written into the answer
    uint32_t enUiCmdType;  // command type
    uint32_t u4Mode;       // UI_MODE_ASYNC or synchronous
    uint8_t au1Reserved1[12];
    uint8_t au1KeySeed[NY_UI_KEY_SEED_SIZE];  // clear-text seed of the protection key
    uint8_t au1Reserved2[256];
    uint32_t u4Protected;  // UI_PARAM_PROTECTED or UI_PARAM_CLEAR
    uint8_t au1Reserved3[12];
    uint8_t au1Payload[NY_UI_PAYLOAD_SIZE];
};
#pragma pack(pop)

static_assert(sizeof(tagBlkUiParam) == 4096, "UI block size");
static_assert(offsetof(tagBlkUiParam, enRes) == 0, "enRes offset");
static_assert(offsetof(tagBlkUiParam, enUiCmdType) == 4, "enUiCmdType offset");
static_assert(offsetof(tagBlkUiParam, u4Mode) == 8, "mode offset");
static_assert(offsetof(tagBlkUiParam, au1Reserved1) == 12, "reserved 1 offset");
static_assert(offsetof(tagBlkUiParam, au1KeySeed) == 24, "key seed offset");
static_assert(offsetof(tagBlkUiParam, au1Reserved2) == 40, "reserved 2 offset");
static_assert(offsetof(tagBlkUiParam, u4Protected) == 296, "protection flag offset");
static_assert(offsetof(tagBlkUiParam, au1Reserved3) == 300, "reserved 3 offset");
static_assert(offsetof(tagBlkUiParam, au1Payload) == NY_UI_PAYLOAD_OFFSET, "payload offset");
static_assert(NY_UI_PROTECTED_OFFSET + NY_UI_PROTECTED_SIZE == 3416, "protected region end");
static_assert(NY_UI_PROTECTED_SIZE % 8 == 0, "protected region is whole cipher blocks");
static_assert(UI_OFS_VERIFY_PIN + NY_UI_PIN_FIELD_SIZE == UI_OFS_VERIFY_PIN_LEN, "verify PIN");
static_assert(UI_OFS_CHANGE_OLD_PIN + NY_UI_PIN_FIELD_SIZE == UI_OFS_CHANGE_OLD_PIN_LEN, "old PIN");
static_assert(UI_OFS_CHANGE_NEW_PIN + NY_UI_PIN_FIELD_SIZE == UI_OFS_CHANGE_NEW_PIN_LEN, "new PIN");
static_assert(UI_OFS_UNBLOCK_SO_PIN + NY_UI_PIN_FIELD_SIZE == UI_OFS_UNBLOCK_SO_PIN_LEN, "SO PIN");
static_assert(UI_OFS_UNBLOCK_USER_PIN + NY_UI_PIN_FIELD_SIZE == UI_OFS_UNBLOCK_USER_PIN_LEN,
              "user PIN");
static_assert(UI_OFS_LABEL_NAME + NY_UI_LABEL_FIELD_SIZE == UI_OFS_LABEL_NAME_LEN, "label");
static_assert(UI_OFS_LABEL_PIN + NY_UI_PIN_FIELD_SIZE == UI_OFS_LABEL_PIN_LEN, "label PIN");

// Byte access at an offset of the block (byte fields such as PINs have no alignment).
inline uint8_t* NyUiParamBytes(tagBlkUiParam* pParam, uint32_t u4Offset) {
    return reinterpret_cast<uint8_t*>(pParam) + u4Offset;
}
inline const uint8_t* NyUiParamBytes(const tagBlkUiParam* pParam, uint32_t u4Offset) {
    return reinterpret_cast<const uint8_t*>(pParam) + u4Offset;
}

// Little-endian u32 at any byte offset, aligned or not. Offsets beyond the block read 0 and
// write nothing.
inline uint32_t NyUiParamGetU4(const tagBlkUiParam* pParam, uint32_t u4Offset) {
    if (pParam == nullptr || u4Offset > NY_UI_PARAM_SIZE - 4) {
        return 0;
    }
    const uint8_t* pu1 = NyUiParamBytes(pParam, u4Offset);
    return uint32_t(pu1[0]) | uint32_t(pu1[1]) << 8 | uint32_t(pu1[2]) << 16 |
           uint32_t(pu1[3]) << 24;
}
inline void NyUiParamSetU4(tagBlkUiParam* pParam, uint32_t u4Offset, uint32_t u4Value) {
    if (pParam == nullptr || u4Offset > NY_UI_PARAM_SIZE - 4) {
        return;
    }
    uint8_t* pu1 = NyUiParamBytes(pParam, u4Offset);
    for (int i = 0; i < 4; ++i) {
        pu1[i] = uint8_t(u4Value >> (8 * i));
    }
}

// Size-query copy of a whole record to a caller's buffer. Null size pointer:
// NY_ERR_INVALID_ARGUMENT. Null buffer: *pu4Len = u4SrcLen, 0. Capacity under u4SrcLen:
// *pu4Len = u4SrcLen, NY_ERR_BUFFER_TOO_SMALL. Otherwise copies, *pu4Len = u4SrcLen, 0.
// A null source with a non-zero length: NY_ERR_BAD_ARGUMENT.
uint32_t NyGetReturnData(const void* pvSrc, uint32_t u4SrcLen, void* pvOut, uint32_t* pu4Len);

// Protection of bytes 312 to 3415 with three-key triple DES (ECB, no padding) under a key
// derived from the block's seed. Both work in place and return 0 on success.
// UiParamDec: flag 0 -> nothing; otherwise decrypts and sets the flag to 0.
// UiParamEnc: flag 1 -> nothing; otherwise encrypts and sets the flag to 1.
// On failure the block keeps its previous content and flag. A null block: NY_ERR_BAD_ARGUMENT.
uint32_t UiParamDec(tagBlkUiParam* pParam);
uint32_t UiParamEnc(tagBlkUiParam* pParam);
