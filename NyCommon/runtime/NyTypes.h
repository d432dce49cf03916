// Basic types shared by the whole library.
#pragma once

#include <cstddef>
#include <cstdint>

// The library's 32-bit boolean.
enum EnBool : uint32_t { NY_FALSE = 0, NY_TRUE = 1 };
