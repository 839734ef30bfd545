// The parts of `pagerfwd alarm` that have a file of their own. Each adds its command.
#ifndef PAGERFWD_HOST_CLI_ALARM_COMMANDS_H
#define PAGERFWD_HOST_CLI_ALARM_COMMANDS_H

#include "host/cli/program.h"

namespace host {

void AddAlarmRaise(CLI::App& alarm, Program& program);
void AddAlarmAck(CLI::App& alarm, Program& program);
void AddAlarmWithdraw(CLI::App& alarm, Program& program);

}  // namespace host

#endif
