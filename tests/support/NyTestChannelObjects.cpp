#include "support/NyTestChannelObjects.h"

#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include "ipc/NyFileRef.h"
#include "ipc/NyUnixEvent.h"

namespace {

const char* const s_aszEventSuffixes[] = {"_Event_Request", "_Event_Response", "_Event_Connected"};

std::string FilePath(const std::string& strName, uint32_t u4Kind) {
    char szPath[NY_IPC_PATH_SIZE];
    return FileName2Path(strName.c_str(), u4Kind, szPath, sizeof(szPath)) ? szPath : "";
}

std::string RegionPath(const std::string& strName) {
    return FilePath(strName, NY_FILE_KIND_SHM);
}

std::string MutexPath(const std::string& strName) {
    return FilePath(strName + "_Mutex_Communication", NY_FILE_KIND_MUTEX);
}

int EventSetId(const std::string& strEventName) {
    key_t key = static_cast<key_t>(UnixName2Key(NY_KEY_KIND_EVENT, strEventName.c_str()));
    return semget(key, 0, 0);
}

}  // namespace

bool NyTestChannelObjectsExist(const std::string& strName) {
    if (access(RegionPath(strName).c_str(), F_OK) == 0 ||
        access(MutexPath(strName).c_str(), F_OK) == 0) {
        return true;
    }
    for (const char* szSuffix : s_aszEventSuffixes) {
        if (EventSetId(strName + szSuffix) >= 0) {
            return true;
        }
    }
    return false;
}

void NyTestRemoveChannelObjects(const std::string& strName) {
    unlink(RegionPath(strName).c_str());
    unlink(MutexPath(strName).c_str());
    for (const char* szSuffix : s_aszEventSuffixes) {
        int iSemId = EventSetId(strName + szSuffix);
        if (iSemId >= 0) {
            semctl(iSemId, 0, IPC_RMID);
        }
    }
}
