// A line in this very process, for the length of a test page or a test call: where no node serves
// the database.
//
// What is pending stays as it is: the library of this process sees none of it.
//
// Ownership  One object a process, at the most.
// Errors     InUse, StoreError, LibraryError.
#ifndef PAGERFWD_HOST_LINE_OWN_LINE_H
#define PAGERFWD_HOST_LINE_OWN_LINE_H

#include <string>

#include "host/files/lock_file.h"
#include "host/library/library.h"
#include "host/lines/site_lines.h"
#include "host/store/tables/pagers.h"

namespace host {

struct OwnLineOptions {
    std::string database;
    std::string locks;    // the folder of the devices' locks
    std::string library;  // empty: searched for
};

// What keeps others away meanwhile. holder: the command, for their messages.
class OwnLineLocks {
 public:
    OwnLineLocks(const OwnLineOptions& options, const SiteLine& line, const std::string& holder);

 private:
    const LockFile node_;
    const LockFile engine_;
    const LockFile device_;
};

class OwnLine {
 public:
    OwnLine(const OwnLineOptions& options, const SiteLine& line);

    // Returns the library's result.
    int32_t Send(const PagerRow& pager) const;

 private:
    const std::string database_;
    const OwnLineLocks locks_;
    const Library library_;
};

}  // namespace host

#endif
