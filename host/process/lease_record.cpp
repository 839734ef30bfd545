// The last lease. Tested by tests/unit/host/lease_record_test.cpp and membership_test.cpp.
#include "host/process/lease_record.h"

#include <fcntl.h>
#include <unistd.h>

#include "host/files/shared_file.h"
#include "host/files/whole_file.h"
#include "host/store/database_name.h"

namespace host {
namespace {

std::string PathFor(const std::string& database) {
    return BesideName(database) + "-lease";
}

std::string TextOf(const HeldLease& lease) {
    return lease.node + "\n" + std::to_string(lease.term) + "\n" + lease.holder + "\n";
}

}  // namespace

void RecordLease(const std::string& database, const HeldLease& lease) {
    try {
        WriteWhole(PathFor(database), TextOf(lease), kPrivate);
    } catch (const FileError&) {
        // The next start waits.
    }
}

bool WasOfThisHost(const std::string& database, const HeldLease& lease) {
    const std::string text = TextOf(lease);
    std::string recorded(text.size() + 1, '\0');
    try {
        const Descriptor file = OpenShared(PathFor(database), O_RDONLY);
        const ssize_t size = read(file.Number(), recorded.data(), recorded.size());
        return size >= 0 && recorded.compare(0, static_cast<size_t>(size), text) == 0;
    } catch (const FileError&) {
        return false;
    }
}

}  // namespace host
