// Whose turn it is at the process's own device: the library's, for page after
// page, or that of the process, for a moment between two pages.
//
// The library opens the device for each page and closes it behind it, one page
// at a time. While the process wants its turn, the next opening waits: that page
// begins later, and nothing of it is lost.
#ifndef PAGERFWD_HOST_PLATFORM_DEVICE_TURN_H
#define PAGERFWD_HOST_PLATFORM_DEVICE_TURN_H

#include <functional>

namespace host {

// While it lives, the library's openings of the device wait, but for those that
// the object's own thread makes. That thread calls nothing of the library that
// waits for a page.
class DeviceTurn {
 public:
    DeviceTurn();
    ~DeviceTurn();
    DeviceTurn(const DeviceTurn&) = delete;
    DeviceTurn& operator=(const DeviceTurn&) = delete;

    // Whether the library has given the device back.
    static bool HasCome();
};

// --- For the process's own open and close.

// Opens the own device, at its turn. system: the system's opening; its result
// is returned.
int OpenAtItsTurn(const std::function<int()>& system);

// A descriptor has been closed.
void NoteClosed(int file);

}  // namespace host

#endif
