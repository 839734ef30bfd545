// What alerts of Alertmanager do to alarms. They come again, from several peers, late and in any
// order; one alarm and one set of pages is to come of it:
//
//   fires, and is known                   it is counted
//   ... began before one that is known    counted with that one: it is the same, seen earlier by
//   of its fingerprint                    another peer, or is over
//   fires, and is not known               an alarm
//   is resolved                           withdrawn, with all of its fingerprint that began before
//                                         its end
//   ... and was never known               noted as an alarm that is over, so that its firing, which
//                                         comes late then, pages nobody
//
// One that began after all that are known always is a new alarm: it may be that no end was told.
//
// Requires   A write transaction.
// Errors     BadField; StoreError.
#ifndef PAGERFWD_HOST_ALARMS_ALERTS_H
#define PAGERFWD_HOST_ALARMS_ALERTS_H

#include <cstdint>

#include "host/alarms/raising.h"
#include "host/intake/alertmanager.h"
#include "host/text/encoding.h"

namespace host {

struct AlertCounts {
    int64_t raised = 0;
    int64_t known = 0;
    int64_t resolved = 0;
};

void TakeAlert(Connection& connection, const Alert& alert, Encoding encoding, const Doer& doer,
               AlertCounts& counts);

}  // namespace host

#endif
