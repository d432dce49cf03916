// A channel region's header and data as the server's listen takes them. The input is written
// over the region of a real server channel (header, then data, zeros after it) through a
// mapping of its own, as a client's, the request event is set and the listen runs with the
// 4096-byte buffer the servers use. A request comes out from the fixed data offset, exactly as
// long as its header says and no longer than the buffer; a longer one is refused without a
// byte copied; nothing is ever written past what was served.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "NyFuzzCheck.h"
#include "comm/BlkShmCommHeader.h"
#include "comm/NyCommunication.h"
#include "ipc/NyEvent.h"
#include "ipc/NyShareMem.h"
#include "session/NySessionChannel.h"

namespace {

constexpr uint8_t NY_FUZZ_FILL = 0x5A;

NY_COMM_HANDLE s_hServer = nullptr;
NY_SHM_HANDLE s_hRegion = nullptr;
NY_EVENT_HANDLE s_hRequest = nullptr;

void CloseChannel() {
    NyEventClose(s_hRequest);
    NyShareMemClose(s_hRegion);
    NyCommDisconnect(s_hServer);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*pArgc*/, char*** /*pArgv*/) {
    const std::string strName = "NyFuzzChannel" + std::to_string(getpid());
    BlkCommInitParamTag blkInit;
    NyFuzzCheck(NySessionFillInitParam(strName.c_str(), &blkInit));
    NyFuzzCheck(NyCommConnectAsServer(&blkInit, &s_hServer) == NY_OK);
    NyFuzzCheck(NyShareMemOpen2(0, strName.c_str(), &s_hRegion) == NY_OK);
    NyFuzzCheck(NyEventOpen2(0, (strName + "_Event_Request").c_str(), &s_hRequest) == NY_OK);
    atexit(CloseChannel);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pu1Data, size_t cbData) {
    std::vector<uint8_t> vRegion(COMM_HEADER_SIZE + COMM_DEFAULT_DATA_SIZE, 0);
    memcpy(vRegion.data(), pu1Data, cbData < vRegion.size() ? cbData : vRegion.size());
    BlkShmCommHeaderTag blkHeader;
    memcpy(&blkHeader, vRegion.data(), sizeof(blkHeader));
    NyFuzzCheck(NyShareMemWrite(s_hRegion, 0, vRegion.data(), vRegion.size()) == NY_OK);
    NyFuzzCheck(NyEventSet(s_hRequest) == NY_OK);

    std::vector<uint8_t> vBuffer(COMM_DEFAULT_DATA_SIZE, NY_FUZZ_FILL);
    uint32_t u4Length = static_cast<uint32_t>(vBuffer.size());
    uint32_t u4Result = NyCommListen(s_hServer, vBuffer.data(), &u4Length);
    if (u4Result == NY_OK) {
        NyFuzzCheck(u4Length == blkHeader.u4DataLen && u4Length <= vBuffer.size());
        NyFuzzCheck(memcmp(vBuffer.data(), &vRegion[COMM_DATA_OFFSET], u4Length) == 0);
    } else if (u4Result == NY_ERR_BUFFER_TOO_SMALL) {
        NyFuzzCheck(u4Length == blkHeader.u4DataLen && u4Length > vBuffer.size());
        u4Length = 0;
    } else {
        // Nothing to serve: the listen found no request.
        NyFuzzCheck(u4Result == static_cast<uint32_t>(EAGAIN));
        u4Length = 0;
    }
    NyFuzzCheck(std::count(vBuffer.begin() + u4Length, vBuffer.end(), NY_FUZZ_FILL) ==
                long(vBuffer.size() - u4Length));
    return 0;
}
