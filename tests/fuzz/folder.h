// A folder of the program's own, entered for each run: the library writes its trace and its locks
// where it is. Outside a run the program is where it was begun, so that the names it was given
// hold.
#ifndef PAGERFWD_TESTS_FUZZ_FOLDER_H
#define PAGERFWD_TESTS_FUZZ_FOLDER_H

#include <filesystem>

#include "tests/support/temp_dir.h"

namespace fuzz {

class InOwnFolder {
 public:
    InOwnFolder() : before_(std::filesystem::current_path()) {
        static test_support::TempDir folder;
        folder.Enter();
    }
    ~InOwnFolder() { std::filesystem::current_path(before_); }
    InOwnFolder(const InOwnFolder&) = delete;
    InOwnFolder& operator=(const InOwnFolder&) = delete;

 private:
    std::filesystem::path before_;
};

}  // namespace fuzz

#endif
