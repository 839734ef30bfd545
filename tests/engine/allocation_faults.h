// Lets chosen allocations of the program fail: this header's source replaces the global operators
// new and delete, so it belongs to a program of its own.
#ifndef PAGERFWD_TESTS_ENGINE_ALLOCATION_FAULTS_H
#define PAGERFWD_TESTS_ENGINE_ALLOCATION_FAULTS_H

#include <cstddef>

// While it lives, the nth allocation from now on that can answer null, by the thread that made it,
// does.
class FailingNothrow {
 public:
    explicit FailingNothrow(int nth);
    ~FailingNothrow();
    FailingNothrow(const FailingNothrow&) = delete;
    FailingNothrow& operator=(const FailingNothrow&) = delete;

    // Whether there were so many.
    static bool HasHappened();
};

// While it lives, the next so many allocations of exactly this size, by the thread that made it,
// fail: null from the form that can answer it, std::bad_alloc from the other.
class FailingSize {
 public:
    explicit FailingSize(size_t size, int count = 1);
    ~FailingSize();
    FailingSize(const FailingSize&) = delete;
    FailingSize& operator=(const FailingSize&) = delete;
};

#endif
