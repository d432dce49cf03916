// Reference-counted start and stop of the common library (file table, marker region, logging).
#pragma once

#include <cstdint>

uint32_t NyCommonLibInit();
// 0xFFFFFFFF when the library was not started.
uint32_t NyCommonLibRelease();
