// Looks. Tested by tests/unit/host/look_test.cpp.
#include "host/store/look.h"

#include <sys/stat.h>
#include <unistd.h>

#include "host/store/large_cells.h"
#include "host/store/schema.h"

namespace host {

Glance::Stamp Glance::StampOf(const std::string& path) {
    struct stat status {};
    stat(path.c_str(), &status);
    return {status.st_ctim, status.st_size, access((path + "-wal").c_str(), F_OK) == 0};
}

Glance::Glance(const std::string& path) : path_(path), before_(StampOf(path)) {}

void Glance::Open() {
    connection_.emplace(path_, Connection::Mode::kLook);
    try {
        RequireTables(*connection_);
    } catch (...) {
        connection_.reset();
        throw;
    }
}

void Glance::HideLargeCells() {
    any_length_.emplace(*connection_);
    host::HideLargeCells(*connection_);
}

bool Glance::WasDisturbed() const {
    const Stamp now = StampOf(path_);
    return (!connection_ || connection_->IsAtRest()) &&
           (now.has_journal != before_.has_journal || now.size != before_.size ||
            now.changed.tv_sec != before_.changed.tv_sec ||
            now.changed.tv_nsec != before_.changed.tv_nsec);
}

}  // namespace host
