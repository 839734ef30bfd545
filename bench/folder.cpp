#include "bench/folder.h"

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace bench {
namespace {

constexpr const char* kMemoryDisk = "/dev/shm";

}  // namespace

Folder::Folder(const std::string& parent) {
    std::string inside = parent;
    if (inside.empty()) {
        const bool hasMemoryDisk = access(kMemoryDisk, W_OK) == 0;
        inside = hasMemoryDisk ? kMemoryDisk : std::filesystem::temp_directory_path().string();
    }
    std::string name = inside + "/pagerfwd-bench-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no folder can be made in " + inside);
    }
    path_ = name;
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace bench
