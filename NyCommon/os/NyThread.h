// Threads that are asked to stop and then joined.
#pragma once

#include <cstdint>

struct BlkNyThreadTag;
typedef BlkNyThreadTag* NY_THREAD_HANDLE;
typedef void* (*PFN_NY_THREAD_ENTRY)(void* pvArg);

// Thread states.
constexpr int32_t NY_THREAD_STARTED = 0;
constexpr int32_t NY_THREAD_RUNNING = 1;
constexpr int32_t NY_THREAD_EXIT_ASKED = 2;
constexpr int32_t NY_THREAD_ENDED = 3;

uint32_t NyThreadBegin(PFN_NY_THREAD_ENTRY pfnEntry, void* pvArg, NY_THREAD_HANDLE* phThread);
// Asks the thread to exit, waits up to about 3 s, then cancels it; frees the handle.
uint32_t NyThreadEnd(NY_THREAD_HANDLE hThread);
bool NyThreadShouldExit(NY_THREAD_HANDLE hThread);
int32_t NyThreadGetState(NY_THREAD_HANDLE hThread);
uint32_t NyThreadSetState(NY_THREAD_HANDLE hThread, int32_t i4State);
void NyThreadCloseHandle(NY_THREAD_HANDLE hThread);
// Asks the scheduler for time slices of u4SliceUs for the calling thread (its priority and
// share stay as they are): a thread that does a few microseconds of work at each wake then runs
// as soon as it wakes on a busy machine instead of after another thread's longer slice. False
// where the system has no such setting (nothing changes then).
bool NyThreadPreferShortSlice(uint32_t u4SliceUs);
