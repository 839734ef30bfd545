// The scratch folder. Tested by tests/unit/sim/pagersim_test.cpp.
#include "sim/runner/scratch_folder.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace pagersim {

ScratchFolder::ScratchFolder() {
    const char* const base = std::getenv("TMPDIR");
    path_ = std::string(base == nullptr || *base == '\0' ? "/tmp" : base) + "/pagersim-XXXXXX";
    if (mkdtemp(path_.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), path_);
    }
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace pagersim
