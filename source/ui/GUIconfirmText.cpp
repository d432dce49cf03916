#include "ui/GUIconfirmText.h"

#include <cstddef>
#include <cstdint>

#include "uiblock/NyUiConfirmParam.h"

namespace {

constexpr BlkConfirmTextTag NY_CONFIRM_KIND_TEXTS[] = {
    {1, 0x210070, false}, {2, 0x210072, false},  {3, 0x21006F, true},  {4, 0x21006D, true},
    {5, 0x210073, false}, {6, 0x210078, true},   {7, 0x210074, false}, {8, 0x10044, true},
    {9, 0x210075, false}, {10, 0x210076, false}, {11, 0x21006E, true}, {12, 0x210079, false},
};

constexpr BlkConfirmTextTag NY_CONFIRM_STAGE_TEXTS[] = {
    {UI_FP_STAGE_CHANGE_FINGER, 0x210123, false},
    {UI_FP_STAGE_INVALID_DATA, 0x210124, false},
    {UI_FP_STAGE_LIFT_FINGER, 0x210125, false},
    {UI_FP_STAGE_PLACE_FINGER, 0x210126, false},
};

constexpr unsigned int NY_CONFIRM_ID_VERIFY_FAILED = 0x10056;

template <size_t N>
const BlkConfirmTextTag* FindText(const BlkConfirmTextTag (&aTable)[N], uint32_t u4Key) {
    for (const BlkConfirmTextTag& entry : aTable) {
        if (entry.u4Key == u4Key) {
            return &entry;
        }
    }
    return nullptr;
}

}  // namespace

const BlkConfirmTextTag* NyConfirmKindText(uint32_t u4Kind) {
    return FindText(NY_CONFIRM_KIND_TEXTS, u4Kind);
}

unsigned int NyConfirmStageTextId(uint32_t u4Detail) {
    const BlkConfirmTextTag* pEntry = FindText(NY_CONFIRM_STAGE_TEXTS, u4Detail & UI_FP_STAGE_MASK);
    return pEntry != nullptr ? pEntry->u4TextId : 0;
}

unsigned int NyConfirmUpdateTextId(uint32_t u4Detail) {
    unsigned int u4TextId = NyConfirmStageTextId(u4Detail);
    if (u4TextId == 0 && u4Detail == UI_FP_VERIFY_FAILED) {
        u4TextId = NY_CONFIRM_ID_VERIFY_FAILED;
    }
    return u4TextId;
}

uint32_t NyConfirmFirstCount(uint32_t u4TimeoutSeconds) {
    return u4TimeoutSeconds > 0 ? u4TimeoutSeconds - 1 : 0;
}

bool NyConfirmHasCountdown(uint32_t u4TimeoutSeconds) {
    return u4TimeoutSeconds != 0 && u4TimeoutSeconds <= static_cast<uint32_t>(INT32_MAX);
}
