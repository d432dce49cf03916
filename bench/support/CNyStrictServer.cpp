#include "CNyStrictServer.h"

#include <unistd.h>

#include "NyUiServerProcess.h"
#include "runtime/NyResult.h"

CNyStrictServer::~CNyStrictServer() {
    main.Close();
    if (pid > 0) {
        NyUiServerStop(pid, 5000);
    }
}

bool CNyStrictServer::Start(const std::string& strPath, uint32_t u4ConnectMs) {
    strMain = NyUiFreshMainName();
    uint32_t u4Error = 0;
    pid = NyUiServerSpawn(strPath.c_str(), strMain.c_str(), false, &u4Error);
    for (int i = 0; pid > 0 && i < 500; ++i) {
        if (main.Open(strMain) == NY_OK && main.Connect(u4ConnectMs) == NY_OK) {
            return true;
        }
        usleep(10000);
    }
    return false;
}
