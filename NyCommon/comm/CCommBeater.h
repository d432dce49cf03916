// The one thread that beats every channel this process serves. A thread per channel cost a
// thread start and end per session and a wake per channel per beat; here a pass beats every
// channel that is due and the thread sleeps until the next one is.
//
// A beat of a channel and its removal never overlap: the thread beats holding the lock that
// Remove() takes. After fork() the child starts with no channels and no thread; its first Add()
// starts one.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

class CCommHeartBeat;

class CCommBeater {
public:
    static CCommBeater& Instance();

    // Beats pBeat from now on; false when the thread could not be started.
    bool Add(CCommHeartBeat* pBeat);
    // Returns once pBeat is no longer beaten (never while it is being beaten).
    void Remove(CCommHeartBeat* pBeat);
    // A channel wants its next beat sooner than the thread planned.
    void Wake();

private:
    CCommBeater() = default;
    static void* ThreadProc(void* pvArg);
    static void ForgetInChild();
    void Run();
    uint64_t BeatDue(uint64_t u8Now);

    std::mutex m_mtx;
    std::condition_variable* m_pCv = new std::condition_variable();  // made anew in a forked child
    std::vector<CCommHeartBeat*> m_vBeats;
    bool m_bRunning = false;
    bool m_bWoken = false;
};
