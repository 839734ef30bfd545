// The file of the database: whether its name still leads to it.
//
// A database that was put in the place of the one served, as from a backup, is served from then on.
// While there is none of this name, the one that is open goes on. One on a server stays what it is.
#ifndef PAGERFWD_HOST_NODE_NAMED_FILE_H
#define PAGERFWD_HOST_NODE_NAMED_FILE_H

#include <string>

#include "host/process/operator_log.h"
#include "host/store/pool.h"

namespace host {

class NamedFile {
 public:
    NamedFile(std::string name, OperatorLog& log) : name_(std::move(name)), log_(log) {}

    // Tells what has become of it.
    void Look(const Lease& lease);

    bool IsGone() const { return gone_; }          // the database has no name
    bool IsReplaced() const { return replaced_; }  // its name leads to another file
    const std::string& Name() const { return name_; }

 private:
    const std::string name_;
    OperatorLog& log_;
    bool gone_ = false;
    bool replaced_ = false;
};

}  // namespace host

#endif
