// Links to ptys. Tested by tests/unit/sim/serve_test.cpp.
#include "sim/serve/served_link.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace pagersim {

ServedLink::~ServedLink() {
    Remove();
}

void ServedLink::Remove() {
    if (std::exchange(made_, false)) {
        unlink(path_.c_str());
    }
}

// There is no moment without a link.
void ServedLink::PointTo(const std::string& target) {
    namespace fs = std::filesystem;
    if (fs::exists(fs::symlink_status(path_)) && !fs::is_symlink(path_)) {
        throw std::system_error(EEXIST, std::generic_category(), path_);
    }
    const std::string fresh = path_ + ".new";
    fs::remove(fresh);
    fs::create_symlink(target, fresh);
    fs::rename(fresh, path_);
    made_ = true;
}

}  // namespace pagersim
