// A folder of its own for a test, which is the working directory while it lives. Engines lock their
// serial devices in it, so that tests that run at once don't meet.
//
// Errors     A folder that can't be made or entered is std::runtime_error.
#ifndef PAGERFWD_TESTS_SUPPORT_TEMP_DIR_H
#define PAGERFWD_TESTS_SUPPORT_TEMP_DIR_H

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace test_support {

class TempDir {
 public:
    TempDir() : before_(std::filesystem::current_path()) {
        std::string path = std::filesystem::temp_directory_path() / "pagerfwd-test-XXXXXX";
        if (mkdtemp(path.data()) == nullptr) {
            throw std::runtime_error("no temporary folder: " + path);
        }
        path_ = path;
        setenv("PAGERFWD_LOCKS", path.c_str(), 1);
        Enter();
    }

    ~TempDir() {
        std::error_code ignored;
        std::filesystem::current_path(before_, ignored);
        std::filesystem::remove_all(path_, ignored);
    }

    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& Path() const { return path_; }

    // Makes it, if the test has removed it, the working directory again.
    void Enter() {
        std::filesystem::create_directories(path_);
        std::filesystem::current_path(path_);
    }

 private:
    std::filesystem::path before_;
    std::filesystem::path path_;
};

}  // namespace test_support

#endif
