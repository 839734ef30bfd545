// Steps of the tables that nodes can do without: what a version has added since the one before it,
// which may still run on another host. They are taken when no node of that one is left; until then
// both work on the tables as they are. At most those of one version: what an older one has added
// stands with the others in schema.cpp.
#ifndef PAGERFWD_HOST_STORE_WAITING_STEPS_H
#define PAGERFWD_HOST_STORE_WAITING_STEPS_H

#include <vector>

namespace host {

// Statements, a version each, behind those of schema.cpp.
const std::vector<const char*>& WaitingSteps();

}  // namespace host

#endif
