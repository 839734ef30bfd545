// Small files for tests. They go to the working directory, which test_support::TempDir makes one of
// the test's own.
#ifndef PAGERFWD_TESTS_UNIT_HOST_FILES_H
#define PAGERFWD_TESTS_UNIT_HOST_FILES_H

#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

inline void WriteFile(const std::string& path, std::string_view content) {
    std::ofstream(path, std::ios::binary) << content;
}

// Empty where it can't be read.
inline std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

#endif
