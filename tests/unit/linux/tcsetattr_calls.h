// What the tests of the line driver see and decide of tcsetattr, which the linker sends here.
#ifndef PAGERFWD_TESTS_UNIT_LINUX_TCSETATTR_CALLS_H
#define PAGERFWD_TESTS_UNIT_LINUX_TCSETATTR_CALLS_H

struct TcsetattrCalls {
    static inline int refusals = 0;      // how many of the next ones the device refuses
    static inline int applied_how = -1;  // the action of the latest
};

#endif
