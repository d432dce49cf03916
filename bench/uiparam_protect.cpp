// Cost of protecting and unprotecting one UI block (key derivation plus 3104 bytes of
// triple DES), paid twice per protected request on the server.
#include <benchmark/benchmark.h>

#include <cstring>

#include "crypto/NyHash.h"
#include "uiblock/NyTripleDesKey.h"
#include "uiblock/NyUiParam.h"

namespace {

tagBlkUiParam MakeBlock() {
    tagBlkUiParam blk;
    memset(&blk, 0x5A, sizeof(blk));
    blk.u4Protected = UI_PARAM_CLEAR;
    return blk;
}

void BM_UiParamEncDec(benchmark::State& state) {
    tagBlkUiParam blk = MakeBlock();
    for (auto _ : state) {
        benchmark::DoNotOptimize(UiParamEnc(&blk));
        benchmark::DoNotOptimize(UiParamDec(&blk));
    }
}
BENCHMARK(BM_UiParamEncDec);

void BM_TripleDesDeriveKey(benchmark::State& state) {
    const uint8_t au1Seed[16] = {1, 2, 3};
    uint8_t au1Key[24];
    for (auto _ : state) {
        int32_t i4Len = sizeof(au1Key);
        benchmark::DoNotOptimize(NyTripleDesDeriveKey(au1Seed, 16, au1Key, &i4Len));
    }
}
BENCHMARK(BM_TripleDesDeriveKey);

void BM_HashSha1Block(benchmark::State& state) {
    const tagBlkUiParam blk = MakeBlock();
    uint8_t au1Digest[NY_HASH_MAX_DIGEST];
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            NyHashData(NY_HASH_SHA1, NyUiParamBytes(&blk, 0), sizeof(blk), au1Digest));
    }
}
BENCHMARK(BM_HashSha1Block);

}  // namespace

BENCHMARK_MAIN();
