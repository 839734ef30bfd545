// A line for a test page. Tested by tests/e2e/test_page_test.cpp and run_engines_test.cpp.
#include "host/line/own_line.h"
#include "host/store/tables/pagers.h"

#include <utility>

#include "host/line/send_test_page.h"
#include "host/line/take_device.h"
#include "host/platform/own_device.h"
#include "host/process/database_locks.h"
#include "host/store/line_view.h"

namespace host {
namespace {

LockFile TakeEngineLock(const std::string& database, const std::string& holder) {
    LockFile lock = EngineLock(database);
    if (!lock.TryTake(holder)) {
        throw InUse(database +
                    ": lines of a pagerfwd run that has ended are finishing their pages; try again "
                    "in a few minutes");
    }
    return lock;
}

// Before the library is loaded.
const std::string& SetUp(const OwnLineOptions& options, const SiteLine& line) {
    SetOwnDevice(line.device);
    SetLineView(LineView{line.name, false});
    return options.library;
}

}  // namespace

OwnLineLocks::OwnLineLocks(const OwnLineOptions& options, const SiteLine& line,
                           const std::string& holder)
    : node_(TakeNodeLock(options.database, holder)),
      engine_(TakeEngineLock(options.database, holder)),
      device_(TakeDevice({options.database, options.locks}, line, holder)) {}

OwnLine::OwnLine(const OwnLineOptions& options, const SiteLine& line)
    : database_(options.database), locks_(options, line, "test"), library_(SetUp(options, line)) {}

int32_t OwnLine::Send(const PagerRow& pager) const {
    PagerRow in_view = pager;
    in_view.port = PortInView(pager.port);
    const int32_t result = SendTestPage(library_, database_, std::move(in_view));
    library_.StopAlarmFwdPager();
    return result;
}

}  // namespace host
