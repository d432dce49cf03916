// A UI server of its own (a separate process) under a fresh main-session name, with a strict
// client on its main channel; the server is stopped when this goes.
#pragma once

#include <sys/types.h>

#include <string>

#include "CNyStrictClient.h"

class CNyStrictServer {
public:
    CNyStrictServer() = default;
    ~CNyStrictServer();
    CNyStrictServer(const CNyStrictServer&) = delete;
    CNyStrictServer& operator=(const CNyStrictServer&) = delete;

    // Starts the server at strPath; true once its main channel answers a connect (u4ConnectMs
    // each try, for up to 5 s).
    bool Start(const std::string& strPath, uint32_t u4ConnectMs);

    std::string strMain;
    pid_t pid = -1;
    CNyStrictClient main;
};
