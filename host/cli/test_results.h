// What the library's result of a test page means, in words.
#ifndef PAGERFWD_HOST_CLI_TEST_RESULTS_H
#define PAGERFWD_HOST_CLI_TEST_RESULTS_H

#include <cstdint>
#include <string>

#include "host/cli/program.h"

namespace host {

struct TestResult {
    int32_t code;
    ExitCode exit;
    const char* meaning;
    const char* remedy;  // empty when all is well
};

// Null for a code that the library doesn't give. dial_is_page: see send_test_page.h.
const TestResult* FindTestResult(int32_t code, bool dial_is_page);

}  // namespace host

#endif
