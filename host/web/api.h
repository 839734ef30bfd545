// The HTTP API: what is asked under /api/v1/, and what is answered.
//
// Each request is one look at the database, or one transaction; it is answered behind the commit.
// Mistakes of the caller are answered with a sentence, and the field that is meant; what goes wrong
// here goes to the log, and no answer tells of paths or of the database.
//
// Threads    Any.
#ifndef PAGERFWD_HOST_WEB_API_H
#define PAGERFWD_HOST_WEB_API_H

#include <string>

#include "host/process/operator_log.h"
#include "host/web/http.h"

namespace host {

class Api {
 public:
    Api(std::string database, OperatorLog& log) : database_(std::move(database)), log_(log) {}

    WebAnswer Answer(const WebRequest& request) const;

 private:
    const std::string database_;
    OperatorLog& log_;
};

// What it can do, as an OpenAPI document.
extern const char* const kOpenApi;

}  // namespace host

#endif
