// Tells the operator of a table that can't be written: to the library that is answered with a
// number only.
//
// Ownership  One object at a time. When it ends, faults are told where they were told before.
#ifndef PAGERFWD_HOST_PROCESS_FAULT_LOG_H
#define PAGERFWD_HOST_PROCESS_FAULT_LOG_H

#include "host/process/operator_log.h"
#include "host/store/faults.h"

namespace host {

class FaultLog {
 public:
    explicit FaultLog(OperatorLog& log)
        : before_(SetFaultListener([&log](FaultNews news, std::string_view message) {
              news == FaultNews::kMended ? log.Info(message) : log.Error(message);
          })) {}
    ~FaultLog() { SetFaultListener(before_); }
    FaultLog(const FaultLog&) = delete;
    FaultLog& operator=(const FaultLog&) = delete;

 private:
    const FaultListener before_;
};

}  // namespace host

#endif
