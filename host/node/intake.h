// New alarms: the routes say whom each goes to, and what it owes is written into the tables.
//
// A row that can't be read is set aside, said once, and the next one has its turn.
//
// Threads    One.
// Errors     StoreError; the next run takes up what is left.
#ifndef PAGERFWD_HOST_NODE_INTAKE_H
#define PAGERFWD_HOST_NODE_INTAKE_H

#include <string>
#include <vector>

#include "host/node/set_aside.h"
#include "host/process/operator_log.h"
#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"
#include "host/text/encoding.h"

namespace host {

class Intake {
 public:
    Intake(Encoding encoding, OperatorLog& log) : encoding_(encoding), log_(log), aside_(log) {}

    // Takes up what is new.
    void Run(Connection& connection);

    // Whether all is taken up but what was set aside.
    bool IsDone(Connection& connection) const;

 private:
    void TakeUp(Connection& connection, const Alarm& alarm, const std::vector<std::string>& pagers);

    const Encoding encoding_;
    OperatorLog& log_;
    SetAside aside_;
};

}  // namespace host

#endif
