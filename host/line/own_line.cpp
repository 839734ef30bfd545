// A line for a test page. Tested by tests/e2e/test_page_test.cpp and run_engines_test.cpp.
#include "host/line/own_line.h"

#include <utility>

#include "host/line/send_test_page.h"
#include "host/line/take_device.h"
#include "host/platform/own_device.h"
#include "host/process/database_locks.h"
#include "host/store/line_view.h"

namespace host {
namespace {

constexpr const char* kHolder = "test";

LockFile TakeEngineLock(const std::string& database) {
    LockFile lock = EngineLock(database);
    if (!lock.TryTake(kHolder)) {
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

OwnLine::OwnLine(const OwnLineOptions& options, const SiteLine& line)
    : database_(options.database),
      node_(TakeNodeLock(options.database, kHolder)),
      engine_(TakeEngineLock(options.database)),
      device_(TakeDevice({options.database, options.locks}, line, kHolder)),
      library_(SetUp(options, line)) {}

int32_t OwnLine::Send(const PagerRow& pager) const {
    PagerRow in_view = pager;
    in_view.port = PortInView(pager.port);
    const int32_t result = SendTestPage(library_, database_, std::move(in_view));
    library_.StopAlarmFwdPager();
    return result;
}

}  // namespace host
