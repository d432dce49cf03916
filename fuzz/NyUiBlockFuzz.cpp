// A UI block through the service's whole request path, clear and protected, with the dialogs
// replaced by a stand-in that answers at once (this file's CreateDialogForCommand and
// configuration image are linked in place of the real ones). Input: byte 0 (mod 5) counts the
// follow-up steps in the next bytes, the rest is the first request block. Each step resends that
// block as the command of its low nibble, asynchronous when its high bit is set, so that dialogs
// are started, polled, updated, run again and terminated in the order the input chooses; a step
// waits for the dialog's thread to end unless bits 4 to 6 are all set. Every
// answer is 4096 bytes; a protected request gets a protected answer under its own seed that never
// shows the typed PIN in clear; commands without a dialog echo the request.
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <mutex>

#include <pthread.h>

#include "GUIService.h"
#include "NyConfigImage.h"
#include "NyFuzzCheck.h"
#include "ui/GUIBase.h"
#include "ui/GUIFactory.h"
#include "uiblock/NyUiParam.h"

namespace {

// What the stand-in's user types.
const uint8_t cg_au1Pin[] = "\x9d\x13typed-PIN\x7f";

// Dialog threads the service started (counted from its answers) and that have exited: a
// thread counts itself at its exit, after the service has seen its run return.
uint32_t s_cThreadsStarted = 0;
uint32_t s_cThreadsEnded = 0;
std::mutex s_mtxThreads;
std::condition_variable s_cvThreadEnded;
// A thread key's destructor, not a thread_local object's: glibc unlinks a thread_local's exit
// record before calling its destructor and frees it after, so an input that ended in between
// would show that record as a leak.
void CountThreadEnd(void*) {
    std::lock_guard<std::mutex> lock(s_mtxThreads);
    ++s_cThreadsEnded;
    s_cvThreadEnded.notify_all();
}
pthread_key_t MakeThreadEndKey() {
    pthread_key_t key;
    NyFuzzCheck(pthread_key_create(&key, CountThreadEnd) == 0);
    return key;
}
const pthread_key_t s_keyThreadEnd = MakeThreadEndKey();

// Keeps the request as its answer and, when run, marks it accepted with the PIN typed in, as
// a PIN dialog does. A request whose first reserved byte is 0xFF fails to run, as a dialog
// whose window cannot be built.
class CFuzzDialog : public GUIBase {
public:
    explicit CFuzzDialog(const tagBlkUiParam* pReq) { InitBlockCopy(&m_blkCopy, pReq); }
    ~CFuzzDialog() override { WipeBlockCopy(&m_blkCopy); }
    unsigned int run() override {
        pthread_setspecific(s_keyThreadEnd, &s_keyThreadEnd);
        std::lock_guard<std::mutex> lock(m_mtx);
        if (m_blkCopy.au1Reserved1[0] == 0xFF) {
            return NY_ERR_BAD_ARGUMENT;
        }
        memcpy(NyUiParamBytes(&m_blkCopy, UI_OFS_VERIFY_PIN), cg_au1Pin, sizeof(cg_au1Pin));
        m_blkCopy.enRes = UI_RESULT_OK;
        m_bFinished = true;
        return NY_OK;
    }
    unsigned int GetResponse(unsigned char* pu1Buf, unsigned int* pu4Len) override {
        std::lock_guard<std::mutex> lock(m_mtx);
        CopyBlockOut(&m_blkCopy, pu1Buf, pu4Len);
        return NY_OK;
    }
    unsigned int IsFinished() override { return m_bFinished ? 1 : 0; }

private:
    std::mutex m_mtx;
    tagBlkUiParam m_blkCopy;
    std::atomic<bool> m_bFinished{false};
};

bool HasPin(const tagBlkUiParam& blk) {
    const uint8_t* pu1 = NyUiParamBytes(&blk, NY_UI_PROTECTED_OFFSET);
    return memmem(pu1, NY_UI_PROTECTED_SIZE, cg_au1Pin, sizeof(cg_au1Pin) - 1) != nullptr;
}

// Sends a copy of blkReq as it is: a protected block's payload is whatever it deciphers to. The
// PIN check skips a request that holds the PIN's bytes itself (an echo enciphered again shows
// them); one that deciphers to them is as unlikely as guessing the key.
void Exchange(GUIService& service, const tagBlkUiParam& blkReq) {
    tagBlkUiParam blkSent = blkReq;
    tagBlkUiParam blkResp = {};
    uint32_t u4Size = sizeof(blkResp);
    uint32_t u4Result =
        service.ProcessRequestSvc(reinterpret_cast<uint8_t*>(&blkSent), sizeof(blkSent),
                                  reinterpret_cast<uint8_t*>(&blkResp), &u4Size);
    NyFuzzCheck(u4Size == NY_UI_PARAM_SIZE);
    const uint32_t u4Cmd = blkReq.enUiCmdType;
    const bool bDialogCmd = u4Cmd >= UI_CMD_DIALOG_FIRST && u4Cmd <= UI_CMD_DIALOG_LAST;
    s_cThreadsStarted +=
        bDialogCmd && blkReq.u4Mode == UI_MODE_ASYNC && blkResp.enRes == UI_RESULT_PENDING;
    const bool bProtected = blkReq.u4Protected == UI_PARAM_PROTECTED;
    NyFuzzCheck(!bProtected || HasPin(blkReq) || !HasPin(blkResp));
    if (u4Result != NY_OK) {
        return;
    }
    NyFuzzCheck(!bProtected ||
                (blkResp.u4Protected == UI_PARAM_PROTECTED &&
                 memcmp(blkResp.au1KeySeed, blkReq.au1KeySeed, NY_UI_KEY_SEED_SIZE) == 0));
    // Commands that have no dialog and are not polls or updates echo the request (enciphered
    // again under the same key, so byte for byte).
    if (u4Cmd != UI_CMD_UPDATE && u4Cmd != UI_CMD_GET_STATUS && !bDialogCmd) {
        tagBlkUiParam blkEcho = blkReq;
        blkEcho.enRes = u4Cmd == UI_CMD_TERMINATE ? UI_RESULT_OK : UI_RESULT_NOT_PROCESSED;
        NyFuzzCheck(memcmp(&blkEcho, &blkResp, sizeof(blkResp)) == 0);
    }
}

// Lets every started dialog thread end: a user who answers before the next request comes.
void Settle() {
    std::unique_lock<std::mutex> lock(s_mtxThreads);
    s_cvThreadEnded.wait(lock, [] { return s_cThreadsEnded >= s_cThreadsStarted; });
}

}  // namespace

// The stand-in reads no texts, and parsing the built-in image for every dialog would take most
// of each run (the parser is fuzzed on its own): the service's dialogs get none.
const unsigned char* NyConfigImage() {
    return nullptr;
}
unsigned int NyConfigImageLength() {
    return 0;
}

GUIBase* CreateDialogForCommand(uint32_t u4CmdType, uint32_t /*u4Ctt*/, const tagBlkUiParam* pReq,
                                CConfig* /*pCfg*/) {
    if (u4CmdType < UI_CMD_DIALOG_FIRST || u4CmdType > UI_CMD_CHANGE_LABEL) {
        return nullptr;
    }
    return new CFuzzDialog(pReq);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pu1Data, size_t cbData) {
    if (cbData == 0) {
        return 0;
    }
    const size_t cSteps = pu1Data[0] % 5 < cbData ? pu1Data[0] % 5 : cbData - 1;
    const uint8_t* pu1Steps = pu1Data + 1;
    const size_t cbBlock = cbData - 1 - cSteps;
    tagBlkUiParam blkReq = {};
    memcpy(&blkReq, pu1Steps + cSteps, cbBlock < sizeof(blkReq) ? cbBlock : sizeof(blkReq));

    BlkUiServiceParamTag blkParam = {};
    GUIService service(blkParam);
    Exchange(service, blkReq);
    for (size_t i = 0; i < cSteps; ++i) {
        // 1 to 3, then every dialog command and three past them.
        const uint32_t u4Step = pu1Steps[i] & 0x0F;
        blkReq.enUiCmdType = u4Step < 3 ? u4Step + 1 : UI_CMD_DIALOG_FIRST + u4Step - 3;
        blkReq.u4Mode = pu1Steps[i] & 0x80 ? UI_MODE_ASYNC : 0;
        if ((pu1Steps[i] & 0x70) != 0x70) {
            Settle();
        }
        Exchange(service, blkReq);
    }
    Settle();
    return 0;
}
