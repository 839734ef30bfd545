// libPagerFwd.so, loaded as a service loads it.
#ifndef PAGERFWD_HOST_LIBRARY_LIBRARY_H
#define PAGERFWD_HOST_LIBRARY_LIBRARY_H

#include <pagerfwd/pagerfwd.h>

#include <stdexcept>
#include <string>

namespace host {

class LibraryError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// The functions of the library. It stays loaded until the process ends: its worker may run on.
//
// Errors     LibraryError, naming the file and the reason.
class Library {
 public:
    // path: the file, with a slash in it. Empty: beside the program, in ../lib from there, or where
    // it is installed as this program was built. Nowhere else: whoever could put a file into a
    // folder that is searched would have it run.
    explicit Library(const std::string& path);

    decltype(&::AlarmFwdPager) AlarmFwdPager = nullptr;
    decltype(&::StartAlarmFwdPager) StartAlarmFwdPager = nullptr;
    decltype(&::StopAlarmFwdPager) StopAlarmFwdPager = nullptr;
    decltype(&::TestPager) TestPager = nullptr;
    decltype(&::NXIsInTimeModel) NXIsInTimeModel = nullptr;
};

// For a process that leaves the loading to others: throws LibraryError where the file that Library
// would load isn't there, or can't be read.
void RequireLibraryFile(const std::string& path);

}  // namespace host

#endif
