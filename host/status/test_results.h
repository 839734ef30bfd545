// What the library's result of a test page, or of a sending, means, in words.
#ifndef PAGERFWD_HOST_STATUS_TEST_RESULTS_H
#define PAGERFWD_HOST_STATUS_TEST_RESULTS_H

#include <cstdint>

namespace host {

struct TestResult {
    int32_t code;
    const char* meaning;
    const char* remedy;  // empty when all is well
};

// Null for a code that the library doesn't give. dial_is_page: the call is the page, and nothing
// confirms that it arrived.
const TestResult* FindTestResult(int64_t code, bool dial_is_page);

}  // namespace host

#endif
