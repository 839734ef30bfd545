// How much each line has to do.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_NODE_LINE_LOADS_H
#define PAGERFWD_HOST_NODE_LINE_LOADS_H

#include <map>
#include <string>

#include "host/store/connection.h"

namespace host {

struct LineLoad {
    int ahead = 0;    // pages that have not been tried over the line
    int pending = 0;  // all that it has
    int given = 0;    // when it was given one last: a count of those given
};

class LineLoads {
 public:
    void Read(Connection& connection);
    const LineLoad& Of(const std::string& line) const;
    void Give(const std::string& line);

 private:
    std::map<std::string, LineLoad> loads_;
    int given_ = 0;
};

// Whether the first has less to do; where both have the same, whether it has waited longer.
bool IsLessBusy(const LineLoad& one, const LineLoad& other);

}  // namespace host

#endif
