// How the operator hears of a delivery.
#ifndef PAGERFWD_HOST_PAGES_DELIVERY_WORDS_H
#define PAGERFWD_HOST_PAGES_DELIVERY_WORDS_H

#include <cstdint>
#include <string>

#include "host/process/operator_log.h"
#include "host/store/tables/deliveries.h"
#include "host/text/encoding.h"

namespace host {

// "alarm 978948000 (ALL/1) to "duty"".
std::string NameOf(const Delivery& delivery, Encoding encoding);

// delivery: its name.
void TellAnswer(OperatorLog& log, const std::string& delivery, int32_t answer);

}  // namespace host

#endif
