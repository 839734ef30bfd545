// Whether this process can still open files.
#ifndef PAGERFWD_HOST_PROCESS_OPEN_FILES_H
#define PAGERFWD_HOST_PROCESS_OPEN_FILES_H

namespace host {

// To be asked now and then: what is refused once may pass.
class OpenFiles {
 public:
    // Whether none could be opened twice in a row.
    bool AreRefused();

 private:
    int refused_ = 0;  // in a row
};

}  // namespace host

#endif
