// The platform start and stop of the common library, run by NyCommonLibInit on the first start
// and by NyCommonLibRelease on the last stop. Not for other callers.
#pragma once

#include <cstdint>

// 0, or the code of the step that failed (the steps already done are undone then).
uint32_t NyOsCommonLibInit();
void NyOsCommonLibFinal();
