#include "support/NyTestChannelObjects.h"

#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <vector>

#include "ipc/NyFileRef.h"
#include "ipc/NyUnixEvent.h"

namespace {

const char* const s_aszEventSuffixes[] = {"_Event_Request", "_Event_Response", "_Event_Connected"};

std::string FilePath(const std::string& strName, uint32_t u4Kind) {
    char szPath[NY_IPC_PATH_SIZE];
    return FileName2Path(strName.c_str(), u4Kind, szPath, sizeof(szPath)) ? szPath : "";
}

// The region's and the mutex's files.
std::vector<std::string> Files(const std::string& strName) {
    return {FilePath(strName, NY_FILE_KIND_SHM),
            FilePath(strName + "_Mutex_Communication", NY_FILE_KIND_MUTEX)};
}

int EventSetId(const std::string& strEventName) {
    key_t key = static_cast<key_t>(UnixName2Key(NY_KEY_KIND_EVENT, strEventName.c_str()));
    return semget(key, 0, 0);
}

}  // namespace

bool NyTestChannelObjectsExist(const std::string& strName) {
    bool bExists = false;
    for (const std::string& strFile : Files(strName)) {
        bExists = bExists || access(strFile.c_str(), F_OK) == 0;
    }
    for (const char* szSuffix : s_aszEventSuffixes) {
        bExists = bExists || EventSetId(strName + szSuffix) >= 0;
    }
    return bExists;
}

void NyTestRemoveChannelObjects(const std::string& strName) {
    for (const std::string& strFile : Files(strName)) {
        unlink(strFile.c_str());
    }
    for (const char* szSuffix : s_aszEventSuffixes) {
        semctl(EventSetId(strName + szSuffix), 0, IPC_RMID);  // -1 when there is none: no harm
    }
}
