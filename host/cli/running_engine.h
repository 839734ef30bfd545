// What the command line asks of a running engine.
#ifndef PAGERFWD_HOST_CLI_RUNNING_ENGINE_H
#define PAGERFWD_HOST_CLI_RUNNING_ENGINE_H

#include <cstdint>
#include <functional>
#include <string>

#include "host/store/pool.h"
#include "host/store/tables/test_pages.h"

namespace host {

// Waits for the answer to a test page or call, and forgets it. meanwhile: done at each look. Throws
// Failure where the engine ends before it has answered.
TestPageResult AwaitAnswer(
    const std::string& database, Lease& lease, int64_t asked,
    const std::function<void()>& meanwhile = [] {});

}  // namespace host

#endif
