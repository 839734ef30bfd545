// Test pages on their way to a line.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_NODE_TEST_ROUNDS_H
#define PAGERFWD_HOST_NODE_TEST_ROUNDS_H

#include "host/node/dispatch.h"
#include "host/node/served_lines.h"
#include "host/store/pool.h"

namespace host {

// Gives test pages that are asked for to lines. One that no line can send is answered at once, as
// one that found no line.
void GiveTestPages(Lease& lease, const ServedLines& lines, const Dispatch& dispatch);

}  // namespace host

#endif
