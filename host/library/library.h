// libPagerFwd.so, loaded as a service loads it.
#ifndef PAGERFWD_HOST_LIBRARY_LIBRARY_H
#define PAGERFWD_HOST_LIBRARY_LIBRARY_H

#include <pagerfwd/pagerfwd.h>

#include <stdexcept>
#include <string>
#include <vector>

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
    // path: the file, or empty to search beside the program, in ../lib, and where the system's
    // libraries are.
    explicit Library(const std::string& path);

    decltype(&::AlarmFwdPager) AlarmFwdPager = nullptr;
    decltype(&::StartAlarmFwdPager) StartAlarmFwdPager = nullptr;
    decltype(&::StopAlarmFwdPager) StopAlarmFwdPager = nullptr;
    decltype(&::TestPager) TestPager = nullptr;
    decltype(&::NXIsInTimeModel) NXIsInTimeModel = nullptr;
};

// Where it is searched for, in this order, when the program lies in `folder`.
std::vector<std::string> LibraryCandidates(const std::string& folder);

}  // namespace host

#endif
