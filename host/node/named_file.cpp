// The database's file. Tested by tests/e2e/run_service_test.cpp.
#include "host/node/named_file.h"

namespace host {

void NamedFile::Look(const Lease& lease) {
    const FileNamed named = lease.Named();
    replaced_ = named == FileNamed::kReplaced;
    if (replaced_) {
        log_.Warning(name_ + ": replaced by another file, which is served from now on");
    } else if (named == FileNamed::kGone && !gone_) {
        log_.Error(name_ + ": the file has gone; no page can leave until it is back");
    }
    gone_ = named == FileNamed::kGone;
}

}  // namespace host
