// No further descriptor for this process. Those that are open go on.
#ifndef PAGERFWD_TESTS_SUPPORT_WITHOUT_DESCRIPTORS_H
#define PAGERFWD_TESTS_SUPPORT_WITHOUT_DESCRIPTORS_H

#include <sys/resource.h>
#include <unistd.h>

namespace test_support {

class WithoutDescriptors {
 public:
    WithoutDescriptors() {
        getrlimit(RLIMIT_NOFILE, &before_);
        const int next = dup(STDERR_FILENO);  // all below are taken
        close(next);
        const rlimit none{static_cast<rlim_t>(next), before_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~WithoutDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
    WithoutDescriptors(const WithoutDescriptors&) = delete;
    WithoutDescriptors& operator=(const WithoutDescriptors&) = delete;

 private:
    rlimit before_{};
};

}  // namespace test_support

#endif
