// How object names become System V keys and file paths. Both are shared with every other program
// that opens these objects, so the hash, the prefixes and the directory are fixed.
#pragma once

#include <cstdint>

constexpr const char* NY_IPC_DIRECTORY = "/dev/shm/com.qorin.ipc/";
constexpr uint32_t NY_IPC_PATH_SIZE = 4096;

// Kinds of UnixName2Key and their prefixes; any other kind hashes the name alone.
constexpr uint32_t NY_KEY_KIND_NONE = 0;
constexpr uint32_t NY_KEY_KIND_SEM = 1;    // "s."
constexpr uint32_t NY_KEY_KIND_EVENT = 2;  // "e."
constexpr uint32_t NY_KEY_KIND_MUTEX = 3;  // "m."

// Kinds of FileName2Path; any other kind adds no prefix.
constexpr uint32_t NY_FILE_KIND_MUTEX = 1;  // "mtx."
constexpr uint32_t NY_FILE_KIND_SHM = 2;    // "shm."

// h = h * 131 + byte (unsigned, modulo 2^32) over the kind's prefix and then the name; the key is
// h AND 0x7FFFFFFF. A null or empty name gives 0, which means nameless.
uint32_t UnixName2Key(uint32_t u4Kind, const char* szName);

// Builds "<directory><prefix><name>" with every '/', '\\' and ' ' of the name turned into '_',
// creating the directory if missing and setting it to mode 0777. False for a null or empty name,
// a null buffer, or a path that does not fit cchPath bytes (NUL included).
bool FileName2Path(const char* szName, uint32_t u4Kind, char* szPath, uint32_t cchPath);
