// Unique object names for tests, so suites can run in parallel (ctest -j) without touching
// each other's or a live server's objects.
#pragma once

#include <string>

// "<prefix>-<pid>-<counter>-<random hex>"; never the same twice on one machine.
std::string NyTestUniqueName(const std::string& strPrefix);
