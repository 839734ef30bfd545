// Small files for tests. They go to the working directory, which test_support::TempDir makes one of
// the test's own.
#ifndef PAGERFWD_TESTS_UNIT_HOST_FILES_H
#define PAGERFWD_TESTS_UNIT_HOST_FILES_H

#include <fstream>
#include <string>
#include <string_view>

inline void WriteFile(const std::string& path, std::string_view content) {
    std::ofstream(path, std::ios::binary) << content;
}

#endif
