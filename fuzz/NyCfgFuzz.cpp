// Arbitrary bytes as a configuration image: parsing either fails cleanly or yields a handle
// whose every entry can be read in every language, and the string size contract holds.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "NyFuzzCheck.h"
#include "config/NyCfg.h"
#include "config/NyCfgIds.h"
#include "runtime/NyResult.h"

namespace {

constexpr uint32_t NY_FUZZ_MAX_IDS = 512;

// A text read with a size query and then exactly that size must come back whole.
void FuzzReadString(BlkCfgHandleTag* hCfg, uint32_t u4Id) {
    unsigned int u4Size = 0;
    if (NyCfgGetString(hCfg, u4Id, nullptr, &u4Size) != NY_OK) {
        return;
    }
    std::vector<char> vText(u4Size + 1, '\x7F');
    unsigned int u4Length = u4Size;
    NyFuzzCheck(NyCfgGetString(hCfg, u4Id, vText.data(), &u4Length) == NY_OK);
    NyFuzzCheck(u4Length == u4Size && strlen(vText.data()) + 1 == u4Size);
    NyFuzzCheck(vText[u4Size] == '\x7F');
    if (u4Size > 1) {
        u4Length = u4Size - 1;
        NyFuzzCheck(NyCfgGetString(hCfg, u4Id, vText.data(), &u4Length) == NY_ERR_BUFFER_TOO_SMALL);
        NyFuzzCheck(u4Length == u4Size);
    }
}

void FuzzReadEntry(BlkCfgHandleTag* hCfg, uint32_t u4Id) {
    unsigned char au1[16];
    unsigned int u4Length = sizeof(au1);
    NyCfgGetValue(hCfg, u4Id, au1, &u4Length);
    unsigned int u4Value = 0;
    unsigned short u2Value = 0;
    unsigned char u1Value = 0;
    NyCfgGetU4(hCfg, u4Id, &u4Value);
    NyCfgGetU2(hCfg, u4Id, &u2Value);
    NyCfgGetU1(hCfg, u4Id, &u1Value);
    // The same slot read as a text, whatever type it was stored with.
    FuzzReadString(hCfg, (u4Id & ~0x000F0000u) | 0x00010000u);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pu1Data, size_t cbData) {
    BlkCfgHandleTag* hCfg = nullptr;
    uint32_t u4Result = NyCfgInit(pu1Data, static_cast<uint32_t>(cbData), &hCfg);
    NyFuzzCheck((u4Result == NY_OK) == (hCfg != nullptr));
    if (hCfg == nullptr) {
        return 0;
    }
    uint32_t u4Count = 0;
    NyFuzzCheck(NyCfgListIds(pu1Data, static_cast<uint32_t>(cbData), nullptr, &u4Count) == NY_OK);
    std::vector<uint32_t> vIds(u4Count);
    NyFuzzCheck(NyCfgListIds(pu1Data, static_cast<uint32_t>(cbData), vIds.data(), &u4Count) ==
                NY_OK);
    vIds.resize(std::min<size_t>(vIds.size(), NY_FUZZ_MAX_IDS));
    // One language per input keeps each run short; the length picks it.
    NyCfgSetLangId(hCfg, static_cast<uint32_t>(cbData % 4));
    for (uint32_t u4Id : vIds) {
        FuzzReadEntry(hCfg, u4Id);
    }
    NyCfgRelease(hCfg);
    return 0;
}
