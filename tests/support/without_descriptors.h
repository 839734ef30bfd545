// Descriptors that the process has, and none to be had.
#ifndef PAGERFWD_TESTS_SUPPORT_WITHOUT_DESCRIPTORS_H
#define PAGERFWD_TESTS_SUPPORT_WITHOUT_DESCRIPTORS_H

#include <sys/resource.h>
#include <unistd.h>

namespace test_support {

// The one that the next to be opened gets: all below are taken.
inline int NextDescriptor() {
    const int next = dup(STDERR_FILENO);
    close(next);
    return next;
}

// No further descriptor as long as it lives. Those that are open go on.
class WithoutDescriptors {
 public:
    WithoutDescriptors() {
        getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit none{static_cast<rlim_t>(NextDescriptor()), before_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~WithoutDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
    WithoutDescriptors(const WithoutDescriptors&) = delete;
    WithoutDescriptors& operator=(const WithoutDescriptors&) = delete;

 private:
    rlimit before_{};
};

// While it lives, whatever is opened next gets the number of the standard input, as in a service
// that has closed it.
class WithoutStandardInput {
 public:
    WithoutStandardInput() : saved_(dup(STDIN_FILENO)) { close(STDIN_FILENO); }
    ~WithoutStandardInput() {
        dup2(saved_, STDIN_FILENO);
        close(saved_);
    }
    WithoutStandardInput(const WithoutStandardInput&) = delete;
    WithoutStandardInput& operator=(const WithoutStandardInput&) = delete;

 private:
    int saved_;
};

}  // namespace test_support

#endif
