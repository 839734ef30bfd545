// The calls of the API, one function each: what they read of a request, and what they answer.
//
// Errors     ApiError for what can't be answered as asked; BadField for what a body says;
// StoreError.
#ifndef PAGERFWD_HOST_WEB_API_CALLS_H
#define PAGERFWD_HOST_WEB_API_CALLS_H

#include <ctime>
#include <stdexcept>
#include <string>

#include "host/store/connection.h"
#include "host/store/owner_lock.h"
#include "host/store/tables/tokens.h"
#include "host/text/json.h"
#include "host/web/http.h"

namespace host {

class ApiError : public std::runtime_error {
 public:
    ApiError(int status, const std::string& why) : std::runtime_error(why), status_(status) {}
    int Status() const { return status_; }

 private:
    int status_;
};

// What a call has.
struct ApiCall {
    Connection& connection;
    OwnerLock& owners;  // of this process
    const WebTarget& target;
    const std::string& body;
    const Token& token;  // who asks
    std::time_t now;
};

Json RaiseAlarms(const ApiCall& call);
Json WithdrawAlarms(const ApiCall& call);
Json AcknowledgeAlarms(const ApiCall& call);
// A message of Alertmanager.
Json TakeAlerts(const ApiCall& call);

Json ShowAlarms(const ApiCall& call);
Json ShowAlarm(const ApiCall& call, const std::string& number);
Json ShowPages(const ApiCall& call);
Json ShowLines(const ApiCall& call);
Json ShowNodes(const ApiCall& call);
Json ShowHistory(const ApiCall& call);

// A test page, which the node has a line send; and what came of it.
Json AskForTest(const ApiCall& call);
Json ShowTest(const ApiCall& call, const std::string& number);

}  // namespace host

#endif
