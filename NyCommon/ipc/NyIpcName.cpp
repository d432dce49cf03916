#include "ipc/NyIpcName.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace {

const char* KeyPrefix(uint32_t u4Kind) {
    switch (u4Kind) {
        case NY_KEY_KIND_SEM:
            return "s.";
        case NY_KEY_KIND_EVENT:
            return "e.";
        case NY_KEY_KIND_MUTEX:
            return "m.";
        default:
            return "";
    }
}

const char* FilePrefix(uint32_t u4Kind) {
    switch (u4Kind) {
        case NY_FILE_KIND_MUTEX:
            return "mtx.";
        case NY_FILE_KIND_SHM:
            return "shm.";
        default:
            return "";
    }
}

uint32_t Hash131(uint32_t u4Hash, const char* sz) {
    for (const unsigned char* p = reinterpret_cast<const unsigned char*>(sz); *p != 0; ++p) {
        u4Hash = u4Hash * 131u + *p;
    }
    return u4Hash;
}

// The directory is shared by every user of the machine, hence 0777 whatever the umask.
void PrepareDirectory() {
    if (mkdir(NY_IPC_DIRECTORY, 0777) != 0 && errno != EEXIST) {
        return;
    }
    chmod(NY_IPC_DIRECTORY, 0777);
}

}  // namespace

uint32_t UnixName2Key(uint32_t u4Kind, const char* szName) {
    if (szName == nullptr || szName[0] == '\0') {
        return 0;
    }
    return Hash131(Hash131(0, KeyPrefix(u4Kind)), szName) & 0x7FFFFFFFu;
}

bool FileName2Path(const char* szName, uint32_t u4Kind, char* szPath, uint32_t cchPath) {
    if (szName == nullptr || szName[0] == '\0' || szPath == nullptr) {
        return false;
    }
    const char* szPrefix = FilePrefix(u4Kind);
    size_t cchDir = strlen(NY_IPC_DIRECTORY);
    size_t cchPrefix = strlen(szPrefix);
    size_t cchName = strlen(szName);
    if (cchDir + cchPrefix + cchName + 1 > cchPath) {
        return false;
    }
    PrepareDirectory();
    memcpy(szPath, NY_IPC_DIRECTORY, cchDir);
    memcpy(szPath + cchDir, szPrefix, cchPrefix);
    char* pOut = szPath + cchDir + cchPrefix;
    for (size_t i = 0; i < cchName; ++i) {
        char ch = szName[i];
        pOut[i] = (ch == '/' || ch == '\\' || ch == ' ') ? '_' : ch;
    }
    pOut[cchName] = '\0';
    return true;
}
