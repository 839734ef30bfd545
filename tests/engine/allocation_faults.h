// Lets chosen allocations of the program fail: this header's source replaces the global operators
// new and delete, so it belongs to a program of its own.
#ifndef PAGERFWD_TESTS_ENGINE_ALLOCATION_FAULTS_H
#define PAGERFWD_TESTS_ENGINE_ALLOCATION_FAULTS_H

#include <cstddef>

// While it lives, what the library allocates is counted, and from the nth allocation on so many
// fail. The library's are those of the worker, or those of the thread that made this while it is
// inside an InLibrary; but neither what the simulation allocates nor what is done inside a
// NotTheLibrary.
class FailingLibrary {
 public:
    enum class Whose { kCallers, kWorkers };

    // nth 0: none fails.
    FailingLibrary(Whose whose, int nth, int howMany = 1);
    ~FailingLibrary();
    FailingLibrary(const FailingLibrary&) = delete;
    FailingLibrary& operator=(const FailingLibrary&) = delete;

    static int Count();
    // Whether there were so many.
    static bool HasHappened();
};

// The thread that made the FailingLibrary calls the library.
class InLibrary {
 public:
    InLibrary();
    ~InLibrary();
    InLibrary(const InLibrary&) = delete;
    InLibrary& operator=(const InLibrary&) = delete;
};

// The library calls out of itself. May nest, and end in another function.
class NotTheLibrary {
 public:
    static void Begin();
    static void End();
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
