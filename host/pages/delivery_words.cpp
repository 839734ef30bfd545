// Words for deliveries. Tested by tests/unit/host/hand_over_test.cpp.
#include "host/pages/delivery_words.h"

namespace host {

std::string NameOf(const Delivery& delivery, Encoding encoding) {
    return "alarm " + delivery.alarm + " (" + Decode(delivery.group, encoding) + ") to \"" +
           Decode(delivery.pager, encoding) + "\"";
}

void TellAnswer(OperatorLog& log, const std::string& delivery, int32_t answer) {
    switch (answer) {
        case kQueued:
            return log.Info(delivery + ": queued");
        case kWasQueued:
            return log.Info(delivery + ": queued before the restart");
        case kWasAcknowledged:
            return log.Info(delivery + ": acknowledged before it was queued");
        case kPagerUnknown:
            return log.Error(delivery +
                             ": there is no such pager, or more than one; it is not paged. Mend "
                             "the site file, and import it");
        default:
            return log.Error(delivery + ": the alarm has gone from the alarm log");
    }
}

}  // namespace host
