// Object names from arbitrary bytes: key and path derivation, the start-time parser and the
// handle tag check must hold their contracts for any input and never read or write out of
// bounds. Input: first byte the kind, second the path capacity (x 32), the rest the name.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "NyFuzzCheck.h"
#include "ipc/NyIpcHandle.h"
#include "ipc/NyIpcName.h"
#include "ipc/NyProcessInfo.h"
#include "runtime/NyResult.h"

namespace {

void CheckPath(const std::string& strName, uint32_t u4Kind, uint32_t cchPath) {
    char* szPath = static_cast<char*>(malloc(cchPath == 0 ? 1 : cchPath));
    bool bOk = FileName2Path(strName.c_str(), u4Kind, szPath, cchPath);
    const size_t cchDir = strlen(NY_IPC_DIRECTORY);
    const size_t cchPrefix = (u4Kind == NY_FILE_KIND_MUTEX || u4Kind == NY_FILE_KIND_SHM) ? 4 : 0;
    NyFuzzCheck(bOk == (!strName.empty() && cchDir + cchPrefix + strName.size() + 1 <= cchPath));
    if (bOk) {
        NyFuzzCheck(strlen(szPath) == cchDir + cchPrefix + strName.size());
        NyFuzzCheck(strncmp(szPath, NY_IPC_DIRECTORY, cchDir) == 0);
        NyFuzzCheck(strpbrk(szPath + cchDir, "/\\ ") == nullptr);
    }
    free(szPath);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pu1Data, size_t cbData) {
    if (cbData < 2) {
        return 0;
    }
    const uint32_t u4Kind = pu1Data[0] % 4;
    const uint32_t cchPath = pu1Data[1] * 32u;
    // The name ends at the first NUL, as a C string would.
    std::string strName(reinterpret_cast<const char*>(pu1Data + 2), cbData - 2);
    strName.resize(strlen(strName.c_str()));

    uint32_t u4Key = UnixName2Key(u4Kind, strName.c_str());
    NyFuzzCheck(u4Key <= 0x7FFFFFFFu);
    NyFuzzCheck(!strName.empty() || u4Key == 0);
    CheckPath(strName, u4Kind, cchPath);

    char szTime[NY_PROCESS_START_TIME_SIZE];
    if (ParseProcessStartTime(strName.c_str(), szTime, sizeof(szTime)) == NY_OK) {
        NyFuzzCheck(strlen(szTime) == NY_PROCESS_START_TIME_SIZE - 1);
    }

    uint32_t u4Tag = 0;
    memcpy(&u4Tag, pu1Data, cbData < sizeof(u4Tag) ? cbData : sizeof(u4Tag));
    uint8_t au1Record[sizeof(u4Tag)] = {};
    memcpy(au1Record, pu1Data, cbData < sizeof(au1Record) ? cbData : sizeof(au1Record));
    NyFuzzCheck((NyIpcCheckHandle(au1Record, NY_SHM_TAG) == NY_OK) == (u4Tag == NY_SHM_TAG));
    return 0;
}
