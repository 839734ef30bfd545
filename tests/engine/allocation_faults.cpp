// The global operators new and delete, with faults.
#include "tests/engine/allocation_faults.h"

#include <atomic>
#include <climits>
#include <cstdlib>
#include <new>

#include "sim/testing.h"

namespace {

thread_local size_t failingSize = 0;
thread_local int failuresLeft = 0;  // of that size

enum class Watched { kNobody, kCaller, kWorker };
std::atomic<Watched> watched{Watched::kNobody};
std::atomic<int> counted{0};
std::atomic<int> firstFailing{0};  // by its count
std::atomic<int> lastFailing{0};
thread_local bool isCaller = false;  // the test's own thread
thread_local bool isInLibrary = false;
thread_local int outside = 0;

bool IsTheLibrarys() {
    const bool isWatched = watched == Watched::kCaller ? isCaller && isInLibrary
                                                       : watched == Watched::kWorker && !isCaller;
    return isWatched && outside == 0 && !pagersim::IsInSimulation();
}

void* Allocate(size_t size) {
    if (IsTheLibrarys()) {
        const int count = ++counted;
        if (count >= firstFailing && count <= lastFailing) {
            return nullptr;
        }
    }
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

}  // namespace

FailingSize::FailingSize(size_t size, int count) {
    failingSize = size;
    failuresLeft = count;
}

FailingSize::~FailingSize() {
    failuresLeft = 0;
}

FailingLibrary::FailingLibrary(Whose whose, int nth, int howMany) {
    isCaller = true;
    counted = 0;
    firstFailing = nth > 0 ? nth : INT_MAX;
    lastFailing = howMany < INT_MAX - nth ? nth + howMany - 1 : INT_MAX;
    watched = whose == Whose::kCallers ? Watched::kCaller : Watched::kWorker;
}

FailingLibrary::~FailingLibrary() {
    watched = Watched::kNobody;
}

int FailingLibrary::Count() {
    return counted;
}

bool FailingLibrary::HasHappened() {
    return counted >= firstFailing;
}

InLibrary::InLibrary() {
    isInLibrary = true;
}

InLibrary::~InLibrary() {
    isInLibrary = false;
}

void NotTheLibrary::Begin() {
    ++outside;
}

void NotTheLibrary::End() {
    --outside;
}

void* operator new(size_t size) {
    return AllocateOrThrow(size);
}
void* operator new[](size_t size) {
    return AllocateOrThrow(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
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
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
