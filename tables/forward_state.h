// The two codes that travel between the tables, the queues and the page text.
//
// Both are open: a cell of a table may hold any integer, and it is carried through as it is.
#ifndef PAGERFWD_TABLES_FORWARD_STATE_H
#define PAGERFWD_TABLES_FORWARD_STATE_H

#include <cstdint>

// How far the paging of an alarm has come: of one of its pages in the events table and in the
// queues, of the whole alarm in the alarm log.
enum ForwardState : int32_t {
    kForwardAcknowledged = 1,  // acknowledged: no (further) paging
    kForwardBeingPaged = 2,    // pages are owed
    kForwardOffLimit = 3,      // given up: the attempts were used up
    kForwardDone = 4,          // delivered with a confirming protocol, or acknowledged while queued
};

// How bad an alarm is.
enum TRAP_SEVERITY : int32_t {
    kSeverityCritical = 1,
    kSeverityMajor = 2,
    kSeverityMinor = 3,
    kSeverityInformational = 4,
    kSeverityUnknown = 5,
};

#endif
