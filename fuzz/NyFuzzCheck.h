// A broken invariant aborts, so that libFuzzer keeps the input that broke it.
#pragma once

#include <cstdlib>

inline void NyFuzzCheck(bool bCondition) {
    if (!bCondition) {
        abort();
    }
}
