// Holds CCOMHdl::lock for a scope. The lock is re-entrant for its thread.
#ifndef PAGERFWD_MODEM_PORT_LOCK_H
#define PAGERFWD_MODEM_PORT_LOCK_H

#include "modem/COMHdl.h"

class PortLock {
 public:
    PortLock() { CCOMHdl::Lock(); }
    ~PortLock() { CCOMHdl::Unlock(); }
    PortLock(const PortLock&) = delete;
    PortLock& operator=(const PortLock&) = delete;
};

#endif
