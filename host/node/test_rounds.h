// Test pages and test calls on their way to a line.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_NODE_TEST_ROUNDS_H
#define PAGERFWD_HOST_NODE_TEST_ROUNDS_H

#include "host/node/dispatch.h"
#include "host/node/served_lines.h"
#include "host/store/pool.h"

namespace host {

// Gives test pages and test calls that are asked for to lines. What no line can send is answered at
// once, as what found no line. A call is made over sick and paused lines, too.
void GiveTestPages(Lease& lease, const ServedLines& lines, const Dispatch& dispatch);

}  // namespace host

#endif
