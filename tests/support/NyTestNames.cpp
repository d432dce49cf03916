#include "support/NyTestNames.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <random>

std::string NyTestUniqueName(const std::string& strPrefix) {
    static std::atomic<unsigned> s_u4Counter{0};
    static const unsigned s_u4Salt = std::random_device{}();
    char szName[128];
    snprintf(szName, sizeof(szName), "%s-%d-%u-%08x", strPrefix.c_str(), static_cast<int>(getpid()),
             s_u4Counter.fetch_add(1), s_u4Salt);
    return szName;
}
