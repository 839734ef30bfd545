// The global operators new and delete, with faults.
#include "tests/engine/allocation_faults.h"

#include <cstdlib>
#include <new>

namespace {

thread_local int nothrowLeft = 0;  // until the one that fails; 0: none does
thread_local bool hasFailed = false;
thread_local size_t failingSize = 0;
thread_local int failuresLeft = 0;  // of that size

void* Allocate(size_t size) {
    if (failuresLeft > 0 && size == failingSize) {
        --failuresLeft;
        return nullptr;
    }
    return std::malloc(size != 0 ? size : 1);
}

void* AllocateOrThrow(size_t size) {
    void* const memory = Allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void* AllocateOrNull(size_t size) {
    if (nothrowLeft > 0 && --nothrowLeft == 0) {
        hasFailed = true;
        return nullptr;
    }
    return Allocate(size);
}

}  // namespace

FailingNothrow::FailingNothrow(int nth) {
    hasFailed = false;
    nothrowLeft = nth;
}

FailingNothrow::~FailingNothrow() {
    nothrowLeft = 0;
}

bool FailingNothrow::HasHappened() {
    return hasFailed;
}

FailingSize::FailingSize(size_t size, int count) {
    failingSize = size;
    failuresLeft = count;
}

FailingSize::~FailingSize() {
    failuresLeft = 0;
}

void* operator new(size_t size) {
    return AllocateOrThrow(size);
}
void* operator new[](size_t size) {
    return AllocateOrThrow(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return AllocateOrNull(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return AllocateOrNull(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    std::free(memory);
}
