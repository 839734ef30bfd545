// Win32-named system calls: pauses, ticks, the last error, profiles, the registry, threads.
//
// Several are reduced on purpose: no profile file is ever opened, so every setting reads as its
// default, and no registry key is ever found.
//
// Threads    Every function may be called from any thread. win_errno and win_thread_id are one each
//            for the whole process: the latest writer wins.
// Errors     By result only; nothing is printed.
#ifndef PAGERFWD_LINUX_WIN_SYSTEM_H
#define PAGERFWD_LINUX_WIN_SYSTEM_H

#include <pthread.h>

#include <atomic>
#include <cstdint>

#include "linux/win_types.h"

// The last error of the serial calls (win_serial.h lists the values); 0 until one is set.
extern std::atomic<int32_t> win_errno;
int32_t GetLastError();

// Pauses. A signal ends the whole seconds early, but not the rest below a second.
void Sleep(uint32_t ms);

// Milliseconds since the first call in the process, which returns 0. Wraps after 49.7 days, and
// follows the wall clock, also when that is set.
DWORD GetTickCount();

// Copy the default to buffer: all of it with its NUL when it is shorter than size, else its first
// size - 1 characters. Return how many characters were copied. A NUL is also stored at
// buffer[size], so a caller must own size + 1 bytes. A null default is an empty one.
DWORD GetProfileString(const char* app, const char* key, const char* defaultText, char* buffer,
                       DWORD size);
DWORD GetPrivateProfileString(const char* app, const char* key, const char* defaultText,
                              char* buffer, DWORD size, const char* file);

// Always fails with -1; *result is left alone.
int32_t RegOpenKey(HKEY key, const char* subKey, HKEY* result);
// Returns 0.
int32_t RegCloseKey(HKEY key);
// Returns 5766 for the name "Protocol", else 0. Writes no data.
int32_t RegQueryValueEx(HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* data,
                        DWORD* size);

// The thread that _beginthread started last.
extern std::atomic<pthread_t> win_thread_id;

// Starts a thread with default attributes and puts its id into win_thread_id. Neither stackSize
// nor arg reaches it: start gets a null argument. The thread is not detached; whoever keeps its id
// joins it. Returns 0 = started, else the error of pthread_create (win_thread_id stays).
int32_t _beginthread(void* (*start)(void*), uint32_t stackSize, void* arg);

#endif
