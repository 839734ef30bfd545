// The replaced serial calls: link with the --wrap options of CMakeLists.txt.

#include "tests/dialogue/faults.h"

#include <cstdint>
#include <cstdlib>
#include <new>
#include <optional>

#include "linux/win_serial.h"
#include "sim/testing.h"

namespace {

struct Faults {
    int write_in = 0;  // 0: none planned
    bool write_failed = false;
    bool asked_after_failure = false;
    std::optional<int> last_error;
    int comm_mask_failures = 0;
    bool modem_set_fails = false;
    size_t failing_size = SIZE_MAX;
    DCB block{};
};
Faults state;

}  // namespace

void faults::FailWrite(int nth) {
    state.write_in = nth;
    state.asked_after_failure = false;
}
bool faults::ErrorStateWasAskedFor() {
    return state.asked_after_failure;
}
void faults::SetLastError(int code) {
    state.last_error = code;
}
void faults::FailCommMask(int times) {
    state.comm_mask_failures = times;
}
void faults::FailNextModemSet() {
    state.modem_set_fails = true;
}
void faults::FailAllocationsFrom(size_t size) {
    state.failing_size = size;
}
DCB faults::LatestControlBlock() {
    return state.block;
}
void faults::Reset() {
    state = Faults{};
}

// The names are those that the compiler gives to the functions of linux/win_serial.h and of
// linux/win_system.h, the same in 32 and in 64 bits.
extern "C" {
BOOL __real__Z9WriteFilePvPKvjPjP10OVERLAPPED(HANDLE, const void*, DWORD, DWORD*, OVERLAPPED*);
BOOL __wrap__Z9WriteFilePvPKvjPjP10OVERLAPPED(HANDLE, const void*, DWORD, DWORD*, OVERLAPPED*);
BOOL __real__Z14ClearCommErrorPvPjP7COMSTAT(HANDLE, DWORD*, COMSTAT*);
BOOL __wrap__Z14ClearCommErrorPvPjP7COMSTAT(HANDLE, DWORD*, COMSTAT*);
BOOL __real__Z11GetCommMaskPvPj(HANDLE, DWORD*);
BOOL __wrap__Z11GetCommMaskPvPj(HANDLE, DWORD*);
BOOL __real__Z12SetCommStatePvPK3DCB(HANDLE, const DCB*);
BOOL __wrap__Z12SetCommStatePvPK3DCB(HANDLE, const DCB*);
int32_t __real__Z12GetLastErrorv();
int32_t __wrap__Z12GetLastErrorv();

BOOL __wrap__Z9WriteFilePvPKvjPjP10OVERLAPPED(HANDLE handle, const void* buffer, DWORD length,
                                              DWORD* written, OVERLAPPED* overlapped) {
    if (state.write_in > 0 && --state.write_in == 0) {
        state.write_failed = true;
        *written = 0;
        return 0;
    }
    return __real__Z9WriteFilePvPKvjPjP10OVERLAPPED(handle, buffer, length, written, overlapped);
}

BOOL __wrap__Z14ClearCommErrorPvPjP7COMSTAT(HANDLE handle, DWORD* errors, COMSTAT* status) {
    state.asked_after_failure = state.asked_after_failure || state.write_failed;
    state.write_failed = false;
    return __real__Z14ClearCommErrorPvPjP7COMSTAT(handle, errors, status);
}

BOOL __wrap__Z11GetCommMaskPvPj(HANDLE handle, DWORD* events) {
    state.write_failed = false;  // A wait has begun.
    if (state.comm_mask_failures > 0) {
        --state.comm_mask_failures;
        return 0;
    }
    return __real__Z11GetCommMaskPvPj(handle, events);
}

BOOL __wrap__Z12SetCommStatePvPK3DCB(HANDLE handle, const DCB* block) {
    state.block = *block;
    return __real__Z12SetCommStatePvPK3DCB(handle, block);
}

int32_t __wrap__Z12GetLastErrorv() {
    return state.last_error.has_value() ? *state.last_error : __real__Z12GetLastErrorv();
}
}

void* operator new(size_t size) {
    const bool fails = size >= state.failing_size && !pagersim::IsInSimulation();
    void* const memory = fails ? nullptr : std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t /*size*/) noexcept {
    std::free(memory);
}

// The only allocation of the library that asks for a null pointer is that of a port's modem
// strings.
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    if (state.modem_set_fails) {
        state.modem_set_fails = false;
        return nullptr;
    }
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
