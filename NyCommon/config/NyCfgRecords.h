// The one walk shared by image entries and string variants: records made of a header holding
// a u32 value length at a fixed offset, then the value; they must tile the bytes exactly.
#pragma once

#include <cstdint>

#include "config/NyCfgId.h"

// Calls pfnRecord(pu1Record, u4ValueLength) for each record until it returns false. False when
// a header or a value does not fit, when fewer bytes than a header plus one are left over, or
// when pfnRecord refused; no bytes at all are no records.
template <typename FnRecord>
bool CfgWalkRecords(const unsigned char* pu1Data, uint32_t u4Length, uint32_t u4HeaderSize,
                    uint32_t u4LengthOffset, FnRecord pfnRecord) {
    uint64_t u8Remaining = u4Length;
    while (u8Remaining != 0) {
        if (u8Remaining <= u4HeaderSize) {
            return false;
        }
        uint32_t u4ValueLength = NyCfgReadU32(pu1Data + u4LengthOffset);
        if (uint64_t(u4ValueLength) + u4HeaderSize > u8Remaining) {
            return false;
        }
        if (!pfnRecord(pu1Data, u4ValueLength)) {
            return false;
        }
        pu1Data += uint64_t(u4ValueLength) + u4HeaderSize;
        u8Remaining -= uint64_t(u4ValueLength) + u4HeaderSize;
    }
    return true;
}
