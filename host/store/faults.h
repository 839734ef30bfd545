// Where the table store says what went wrong.
//
// The functions of the table access answer a failure only with a number, and the library carries
// on: a page is answered as queued though its row could not be written. So that no failure stays
// unseen, each one is also told in words to whoever looks after the host.
//
// Threads    Any. The listener is called by the thread that met the failure, one call at a time.
// Errors     None leave the Report functions.
#ifndef PAGERFWD_HOST_STORE_FAULTS_H
#define PAGERFWD_HOST_STORE_FAULTS_H

#include <functional>
#include <string_view>

namespace host {

enum class FaultNews {
    kFault,
    kMended,  // what had been told before has passed
    kEnd,     // this process writes no more: its term is over
};
using FaultListener = std::function<void(FaultNews news, std::string_view message)>;

// Replaces the listener and returns the one before. Until the first call, and after one with an
// empty listener, faults go to standard error, a line each. The listener must not cause a fault.
FaultListener SetFaultListener(FaultListener listener);

void ReportFault(std::string_view message) noexcept;
void ReportMended(std::string_view message) noexcept;
void ReportEnd(std::string_view message) noexcept;

}  // namespace host

#endif
